#pragma once

#include <QKeySequence>
#include <QObject>

#include <array>
#include <memory>

class QAction;
class QMenu;
class QMenuBar;

// Every command of the main window as one QAction, made once from one table
// and shared by the menu bar, the history table's context menu, the tray
// menu and the toolbar, so that a shortcut, an enabled state or a check mark
// is the same wherever the command shows.
class MenuItems : public QObject
{
    Q_OBJECT

public:
    enum Id {
        Open,
        Save,
        SaveAs,
        Quit,
        Copy,
        Cut,
        PasteCapture,
        Delete,
        ClearHistory,
        Compact,
        StartRecording,
        StopRecording,
        ToggleRecording,
        ShowWindow,
        Restore,
        OpenLink,
        ConvertPlainText,
        Font,
        Preferences,
        About,
        Count
    };

    explicit MenuItems(QObject *parent = nullptr);
    ~MenuItems() override;

    QAction *action(Id id) const { return m_actions[id]; }
    // "Restore Recent": the entry marked n in the table, 0 the newest; the
    // same as Ctrl+Alt+n.
    static constexpr int recentCount = 10;
    QAction *recent(int n) const { return m_recent[n]; }
    // The fixed-phrase submenu, shown in the Edit menu and the tray menu. It
    // is not owned; set it before the menu bar is filled.
    void setFixedPhraseMenu(QMenu *menu);

    // File, Edit, View and Recording.
    void fillMenuBar(QMenuBar *bar) const;
    // The menu of a right click on a history row.
    QMenu *contextMenu() const { return m_contextMenu.get(); }
    QMenu *trayMenu() const { return m_trayMenu.get(); }

private:
    std::array<QAction *, Count> m_actions{};
    std::array<QAction *, recentCount> m_recent{};
    std::unique_ptr<QMenu> m_contextMenu;
    std::unique_ptr<QMenu> m_trayMenu;
    std::unique_ptr<QMenu> m_recentMenu;
    QMenu *m_fixedPhraseMenu = nullptr;
};
