#pragma once

#include "history/previewcache.h"
#include "ui/notificationcenter.h"

#include <QObject>

#include <functional>
#include <memory>

class Controller;
class MainWindow;
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
    // Opens the window and shows the tray item with the recording-off sign.
    WindowWiring(Controller &controller, std::function<void()> quit, QObject *parent = nullptr);
    ~WindowWiring() override;

    MainWindow &mainWindow() const { return *m_window; }
    WindowCtrl &windowCtrl() const { return *m_windowCtrl; }
    MenuItems &menuItems() const { return *m_items; }
    StatusItem &statusItem() const { return *m_statusItem; }
    NotificationCenter &notificationCenter() { return m_center; }

private:
    void connectTable();
    void connectCommands(std::function<void()> quit);
    void connectReports();
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
};
