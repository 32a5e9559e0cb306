#pragma once

#include "history/previewcache.h"
#include "ui/notificationcenter.h"

#include <QObject>

#include <functional>
#include <memory>

class AboutPanel;
class Controller;
class MainWindow;
class PreferencesWindow;
class MenuItems;
class QSImageCell;
class RecordingIndicators;
class StatusItem;
class WindowCtrl;

// The main window, its menus and the tray item, connected with the
// controller: the table's notifications and the menu commands reach the
// controller's commands, and what the tick, the commands and the recording
// switch report reaches the window and the tray.
class WindowWiring : public QObject
{
    Q_OBJECT

public:
    // quit ends the program the orderly way (File > Quit, the tray's Quit).
    WindowWiring(Controller &controller, std::function<void()> quit, QObject *parent = nullptr);
    ~WindowWiring() override;

    MainWindow &mainWindow() const { return *m_window; }
    WindowCtrl &windowCtrl() const { return *m_windowCtrl; }
    MenuItems &menuItems() const { return *m_items; }
    StatusItem &statusItem() const { return *m_statusItem; }
    NotificationCenter &notificationCenter() { return m_center; }
    PreferencesWindow &preferencesWindow() const { return *m_prefWindow; }

private:
    void connectTable();
    void connectCommands(std::function<void()> quit);
    void connectReports();
    void showPreferences(QObject *sender);
    void showTypes(const QStringList &types);

    Controller &m_controller;
    NotificationCenter m_center;
    PreviewCache m_previews;
    MenuItems *m_items;
    std::unique_ptr<MainWindow> m_window;
    QSImageCell *m_cell;
    WindowCtrl *m_windowCtrl;
    StatusItem *m_statusItem;
    RecordingIndicators *m_indicators;
    // Made once, kept for the whole run: the phrase editor keeps its place.
    PreferencesWindow *m_prefWindow;
    AboutPanel *m_about;
};
