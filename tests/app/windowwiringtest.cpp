#include "app/controller.h"
#include "app/hotkeyregistry.h"
#include "app/windowwiring.h"
#include "history/historylist.h"
#include "platform/fake/fakehotkeys.h"
#include "platform/fake/fakeimagefetcher.h"
#include "platform/fake/fakepanels.h"
#include "platform/fake/fakepasteboard.h"
#include "platform/fake/fakeworkspace.h"
#include "support/recordingrig.h"
#include "ui/customtableview.h"
#include "ui/mainwindow.h"
#include "ui/menuitems.h"

#include <QAction>
#include <QLabel>
#include <QListWidget>

#include <gtest/gtest.h>

namespace {

class WindowWiringTest : public ::testing::Test
{
protected:
    QAction *action(MenuItems::Id id) const { return wiring.menuItems().action(id); }

    RecordingRig rig;
    FakePasteboard pasteboard;
    FakeWorkspace workspace;
    FakePanels panels;
    FakeImageFetcher fetcher;
    FakeHotKeys hotKeys;
    Controller controller{PlatformServices{pasteboard, rig.defaults, rig.loginItems, rig.noticeService,
                                           rig.soundPlayer, rig.dock, rig.clock, workspace, panels, hotKeys, &fetcher,
                                           QUrl::fromLocalFile(QStringLiteral("/usr/bin/quillstash"))},
                          rig.registries};
    int quits = 0;
    WindowWiring wiring{controller, [this] { ++quits; }};
    MainWindow &window = wiring.mainWindow();
};

// Sounds and auto-save follow their preferences in their own tests; here the tick reaches the views and the sound.
TEST_F(WindowWiringTest, TickReportsReachTheWindowAndPlaySoundsAndTheMenuReachesTheCommands)
{
    EXPECT_FALSE(action(MenuItems::SaveAs)->isEnabled());
    rig.registries.setRecAtStartup(true);
    pasteboard.setText(QStringLiteral("copied before launch"));
    controller.applicationDidFinishLaunching();
    EXPECT_EQ(window.statusString()->text(), QStringLiteral("Idle"));
    EXPECT_TRUE(controller.IsClean());
    controller.document().setMyPath(QStringLiteral("/home/ada/auto.qs_backup"));

    for (int tick = 0; tick < 3; ++tick) // captured, marked modified, titled
        controller.MainTimer();
    EXPECT_EQ(window.numFieldOfContents()->text(), QStringLiteral("1"));
    EXPECT_EQ(window.windowTitle(), QStringLiteral("auto.qs_backup*"));
    EXPECT_EQ(window.mpTableViewTypes()->count(), 2);
    EXPECT_FALSE(controller.IsClean());
    pasteboard.setText(QStringLiteral("second"));
    controller.MainTimer();
    controller.eventTimer().waitForIdle(); // the controller's own sound thread
    EXPECT_EQ(rig.sounds(), (QStringList{QStringLiteral("Hero"), QStringLiteral("Pop"), QStringLiteral("Pop")}));

    // The menu's Delete and Quit; the table's keys, the search, Compact and the tray's recording picture are
    // driven in the window tests.
    controller.nsac().setSelectionIndexes({0});
    action(MenuItems::Delete)->trigger();
    EXPECT_EQ(controller.nsac().arrangedCount(), 1);
    action(MenuItems::Quit)->trigger();
    EXPECT_EQ(quits, 1);
}

// Presses reach the controller through the registry, as in the running program (whose keys and menus the desktop
// tests press and read).
TEST_F(WindowWiringTest, GlobalKeysAndRestoreRecentReachTheirCommandsAndARebuildGrabsNothingTwice)
{
    HotKeyRegistry registry(hotKeys);
    controller.setHotKeyRegistrar([&](quint32 keyCode, quint64 modifiers, const QByteArray &selector) {
        return registry.registerHotKeyCode(keyCode, modifiers, &controller, selector.constData());
    });
    rig.registries.setRecAtStartup(true);
    rig.registries.setFixedPhraseTitle(QStringLiteral("Signature"), 3);
    controller.applicationDidFinishLaunching();
    controller.setupFixedPhraseMenu();
    EXPECT_EQ(hotKeys.held().size(), 19); // 17 commands, the date, phrase 3: each once
    for (const char *text : {"old", "new"}) {
        pasteboard.setText(QString::fromLatin1(text));
        controller.MainTimer();
    }
    hotKeys.press(hotKeys.grabs().at(7).handle); // Ctrl+Alt+1
    EXPECT_EQ(pasteboard.stringForType(QStringLiteral("NSStringPboardType")), QStringLiteral("old"));
    wiring.menuItems().recent(0)->trigger();
    EXPECT_EQ(pasteboard.stringForType(QStringLiteral("NSStringPboardType")), QStringLiteral("new"));
}

} // namespace
