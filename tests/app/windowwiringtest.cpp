#include "app/controller.h"
#include "app/windowwiring.h"
#include "history/historylist.h"
#include "platform/fake/fakeimagefetcher.h"
#include "platform/fake/fakepanels.h"
#include "platform/fake/fakepasteboard.h"
#include "platform/fake/fakeworkspace.h"
#include "support/recordingrig.h"
#include "ui/customtableview.h"
#include "ui/mainwindow.h"
#include "ui/menuitems.h"
#include "ui/statusitem.h"

#include <QAction>
#include <QFile>
#include <QLabel>
#include <QListWidget>
#include <QTemporaryDir>

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
    Controller controller{PlatformServices{pasteboard, rig.defaults, rig.loginItems, rig.noticeService,
                                           rig.soundPlayer, rig.dock, rig.clock, workspace, panels, &fetcher,
                                           QUrl::fromLocalFile(QStringLiteral("/usr/bin/quillstash"))},
                          rig.registries};
    int quits = 0;
    WindowWiring wiring{controller, [this] { ++quits; }};
    MainWindow &window = wiring.mainWindow();
};

// Sounds ask the preference at the moment they play; the tick drives auto-save.
TEST_F(WindowWiringTest, TickReportsReachTheWindowAndTrayAndDriveSoundsAndAutoSaveAndTheMenuReachesTheCommands)
{
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(wiring.statusItem().imageName(), QStringLiteral("qs_menu_item_rec_off"));
    EXPECT_FALSE(action(MenuItems::SaveAs)->isEnabled());
    rig.registries.setRecAtStartup(true);
    rig.registries.setSoundEnable(false);
    rig.registries.setAutoSave(true);
    pasteboard.setText(QStringLiteral("copied before launch"));
    controller.applicationDidFinishLaunching();
    EXPECT_EQ(window.statusString()->text(), QStringLiteral("Idle"));
    EXPECT_TRUE(controller.IsClean());
    QTemporaryDir dir;
    controller.document().setMyPath(dir.filePath(QStringLiteral("auto.qs_backup")));

    for (int tick = 0; tick < 3; ++tick) // captured, marked modified, titled
        controller.MainTimer();
    EXPECT_EQ(wiring.statusItem().imageName(), QStringLiteral("qs_menu_item_rec_on"));
    EXPECT_EQ(window.numFieldOfContents()->text(), QStringLiteral("1"));
    EXPECT_EQ(window.windowTitle(), QStringLiteral("auto.qs_backup*"));
    EXPECT_EQ(window.mpTableViewTypes()->count(), 2);
    EXPECT_FALSE(controller.IsClean());
    controller.eventTimer().waitForIdle();
    EXPECT_TRUE(rig.soundPlayer.played().isEmpty());
    rig.registries.setSoundEnable(true);
    pasteboard.setText(QStringLiteral("second"));
    controller.MainTimer();
    controller.eventTimer().waitForIdle();
    EXPECT_EQ(rig.soundPlayer.played(), QStringList{QStringLiteral("Pop")});
    for (int tick = 4; tick < 101; ++tick)
        controller.MainTimer();
    EXPECT_TRUE(QFile::exists(controller.document().myPath()));

    action(MenuItems::StopRecording)->trigger();
    EXPECT_EQ(wiring.statusItem().imageName(), QStringLiteral("qs_menu_item_rec_on")); // until the next tick
    controller.MainTimer();
    EXPECT_EQ(wiring.statusItem().imageName(), QStringLiteral("qs_menu_item_rec_off"));

    // The menu's Delete and Quit; the table's keys, the search and Compact are driven in the window tests.
    controller.nsac().setSelectionIndexes({0});
    action(MenuItems::Delete)->trigger();
    EXPECT_EQ(controller.nsac().arrangedCount(), 1);
    action(MenuItems::Quit)->trigger();
    EXPECT_EQ(quits, 1);
}

} // namespace
