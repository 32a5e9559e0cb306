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
#include <QGuiApplication>
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
    WindowWiring wiring{controller, [] {}};
    MainWindow &window = wiring.mainWindow();
};

// The tick's reports reach the window and the menus their commands; a phrase-menu rebuild grabs no key twice.
TEST_F(WindowWiringTest, TickReportsReachTheWindowAndTheMenuReachesTheCommands)
{
    HotKeyRegistry registry(hotKeys);
    controller.setHotKeyRegistrar([&](quint32 keyCode, quint64 modifiers, const QByteArray &selector) {
        return registry.registerHotKeyCode(keyCode, modifiers, &controller, selector.constData());
    });
    EXPECT_FALSE(action(MenuItems::SaveAs)->isEnabled());
    rig.registries.setRecAtStartup(true);
    rig.registries.setFixedPhraseTitle(QStringLiteral("Signature"), 3);
    pasteboard.setText(QStringLiteral("old"));
    controller.applicationDidFinishLaunching();
    controller.setupFixedPhraseMenu();
    EXPECT_EQ(hotKeys.held().size(), 19); // 17 commands, the date, phrase 3: each once
    EXPECT_EQ(window.statusString()->text(), QStringLiteral("Idle"));

    for (int tick = 0; tick < 3; ++tick) // captured, marked modified, titled
        controller.MainTimer();
    EXPECT_EQ(window.numFieldOfContents()->text(), QStringLiteral("1"));
    EXPECT_EQ(window.windowTitle(), QStringLiteral("Untitled.qs_backup*"));
    EXPECT_EQ(window.mpTableViewTypes()->count(), 2);
    pasteboard.setText(QStringLiteral("new"));
    controller.MainTimer();
    wiring.menuItems().recent(1)->trigger();
    EXPECT_EQ(pasteboard.stringForType(QStringLiteral("NSStringPboardType")), QStringLiteral("old"));
    controller.nsac().setSelectionIndexes({0});
    action(MenuItems::Delete)->trigger();
    EXPECT_EQ(controller.nsac().arrangedCount(), 1);
}

// The program's activation reaches the window through the controller: it dims while another program is active.
TEST_F(WindowWiringTest, InactiveProgramDimsItsWindowUntilActiveAgain)
{
    for (const auto &[state, opacity] : {std::pair{Qt::ApplicationInactive, 0.8}, {Qt::ApplicationHidden, 0.8},
                                         {Qt::ApplicationActive, 1.0}}) {
        Q_EMIT qGuiApp->applicationStateChanged(state);
        EXPECT_DOUBLE_EQ(window.windowOpacity(), opacity) << state;
    }
}

} // namespace
