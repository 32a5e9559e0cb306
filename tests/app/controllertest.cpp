#include "app/controller.h"
#include "history/captureloop.h"
#include "history/historylist.h"
#include "platform/fake/fakeimagefetcher.h"
#include "platform/fake/fakepanels.h"
#include "platform/fake/fakepasteboard.h"
#include "platform/fake/fakeworkspace.h"
#include "recording/eventtimer.h"
#include "support/recordingrig.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// The controller wired to fakes, as the program wires it to the desktop. The
// rig's own notices and recording switch stay unused.
class ControllerTest : public ::testing::Test, protected RecordingRig
{
protected:
    FakePasteboard pasteboard;
    FakeWorkspace workspace;
    FakePanels panels;
    FakeImageFetcher fetcher;
};

// Sounds ask the preference at the moment they play; the tick drives auto-save. What the
// tick captures is checked against the running program by the desktop tests.
TEST_F(ControllerTest, LaunchRecordsAndTheTickCapturesWhatIsThereButNotItsOwnRestoreSoundsAsPreferredAndSaves)
{
    QTemporaryDir dir;
    const QUrl app = QUrl::fromLocalFile(QStringLiteral("/usr/bin/quillstash"));
    defaults.setObject(false, QStringLiteral("soundenable"));
    defaults.setObject(true, QStringLiteral("autosave"));
    pasteboard.setText(QStringLiteral("copied before launch"));
    ApplicationRegistries store(defaults, loginItems, app);
    Controller controller(PlatformServices{pasteboard, defaults, loginItems, noticeService, soundPlayer, dock, clock,
                                           workspace, panels, &fetcher, app},
                          store);
    controller.applicationDidFinishLaunching();
    EXPECT_EQ(controller.statusString(), QStringLiteral("Idle"));
    EXPECT_TRUE(controller.IsClean());
    EXPECT_EQ(Controller::controller(), &controller);
    controller.capture().setMyPath(dir.filePath(QStringLiteral("auto.qs_backup")));

    controller.MainTimer();
    controller.eventTimer().waitForIdle();
    EXPECT_TRUE(soundPlayer.played().isEmpty());
    store.setSoundEnable(true);
    pasteboard.setText(QStringLiteral("second"));
    controller.MainTimer();
    controller.eventTimer().waitForIdle();
    EXPECT_EQ(soundPlayer.played(), QStringList{QStringLiteral("Pop")});
    EXPECT_FALSE(controller.IsClean());

    controller.nsac().setSelectionIndexes({0});
    controller.changePasteBoard();
    EXPECT_EQ(pasteboard.stringForType(QStringLiteral("NSStringPboardType")), QStringLiteral("copied before launch"));
    controller.MainTimer();
    EXPECT_EQ(controller.nsac().arrangedCount(), 2);
    controller.paste();
    ASSERT_EQ(controller.nsac().arrangedCount(), 3);
    EXPECT_TRUE(controller.nsac().arrangedObjects().last()->types().contains(QStringLiteral("quillstash.ignore")));

    for (int tick = 3; tick < 100; ++tick)
        controller.MainTimer();
    EXPECT_FALSE(QFile::exists(controller.capture().myPath()));
    controller.MainTimer();
    EXPECT_TRUE(QFile::exists(controller.capture().myPath()));
}

} // namespace
