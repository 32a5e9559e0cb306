#include "app/controller.h"
#include "history/captureloop.h"
#include "history/historylist.h"
#include "platform/fake/fakeclock.h"
#include "platform/fake/fakedock.h"
#include "platform/fake/fakeimagefetcher.h"
#include "platform/fake/fakeloginitems.h"
#include "platform/fake/fakenoticeservice.h"
#include "platform/fake/fakepanels.h"
#include "platform/fake/fakepasteboard.h"
#include "platform/fake/fakesoundplayer.h"
#include "platform/fake/fakeuserdefaults.h"
#include "platform/fake/fakeworkspace.h"
#include "recording/eventtimer.h"
#include "recording/recordingswitch.h"
#include "settings/applicationregistries.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

#include <memory>

namespace {

// The controller wired to fakes, as the program wires it to the desktop.
class ControllerTest : public ::testing::Test
{
protected:
    void launch()
    {
        registries = std::make_unique<ApplicationRegistries>(defaults, loginItems, app);
        controller = std::make_unique<Controller>(
            PlatformServices{pasteboard, defaults, loginItems, noticeService, soundPlayer, dock, clock, workspace,
                             panels, &fetcher, app},
            *registries);
        controller->applicationDidFinishLaunching();
    }

    QStringList sounds()
    {
        controller->eventTimer().waitForIdle();
        // Each sound plays on a thread of its own: their order is not fixed.
        QStringList played = soundPlayer.played();
        played.sort();
        return played;
    }

    const QUrl app = QUrl::fromLocalFile(QStringLiteral("/usr/bin/quillstash"));
    FakePasteboard pasteboard;
    FakeUserDefaults defaults;
    FakeLoginItems loginItems;
    FakeNoticeService noticeService;
    FakeSoundPlayer soundPlayer;
    FakeDock dock;
    FakeClock clock;
    FakeWorkspace workspace;
    FakePanels panels;
    FakeImageFetcher fetcher;
    std::unique_ptr<ApplicationRegistries> registries;
    std::unique_ptr<Controller> controller;
};

TEST_F(ControllerTest, launchRecordsAndAnnouncesAndCapturesWhatIsAlreadyThere)
{
    pasteboard.setText(QStringLiteral("copied before launch"));
    launch();
    EXPECT_EQ(controller->statusString(), QStringLiteral("Idle"));
    EXPECT_TRUE(controller->IsClean());
    EXPECT_EQ(Controller::controller(), controller.get());

    controller->MainTimer();
    ASSERT_EQ(controller->nsac().arrangedCount(), 1);
    EXPECT_EQ(controller->nsac().arrangedObjects().first()->content(), QStringLiteral("copied before launch"));
    EXPECT_EQ(noticeService.titles(), (QStringList{QStringLiteral("Quillstash"), QStringLiteral("Add to Table")}));
    EXPECT_EQ(sounds(), (QStringList{QStringLiteral("Hero"), QStringLiteral("Pop")}));

    controller->MainTimer();
    EXPECT_FALSE(controller->IsClean());
    EXPECT_EQ(dock.badgeLabel(), QStringLiteral("1"));
}

TEST_F(ControllerTest, recordingOffAtStartupCapturesNothing)
{
    defaults.setObject(false, QStringLiteral("recatstartup"));
    launch();
    pasteboard.setText(QStringLiteral("ignored"));
    controller->MainTimer();
    EXPECT_EQ(controller->nsac().arrangedCount(), 0);
    EXPECT_TRUE(noticeService.sent().isEmpty());
}

TEST_F(ControllerTest, soundsFollowThePreferenceAtTheMomentTheyPlay)
{
    defaults.setObject(false, QStringLiteral("soundenable"));
    launch();
    pasteboard.setText(QStringLiteral("quiet"));
    controller->MainTimer();
    EXPECT_TRUE(sounds().isEmpty());

    registries->setSoundEnable(true);
    pasteboard.setText(QStringLiteral("loud"));
    controller->MainTimer();
    EXPECT_EQ(sounds(), QStringList{QStringLiteral("Pop")});
}

TEST_F(ControllerTest, restoredEntryIsNotCapturedAgainButTheScrollFollowsEachCapture)
{
    launch();
    QSignalSpy scrolled(&controller->capture(), &CaptureLoop::scrollBottomRequested);
    pasteboard.setText(QStringLiteral("first"));
    controller->MainTimer();
    pasteboard.setText(QStringLiteral("second"));
    controller->MainTimer();
    EXPECT_EQ(scrolled.count(), 2);

    controller->nsac().setSelectionIndexes({0});
    controller->changePasteBoard();
    EXPECT_EQ(pasteboard.stringForType(QStringLiteral("NSStringPboardType")), QStringLiteral("first"));
    controller->MainTimer();
    EXPECT_EQ(controller->nsac().arrangedCount(), 2);

    controller->paste();
    EXPECT_EQ(controller->nsac().arrangedCount(), 3);
    EXPECT_TRUE(controller->nsac().arrangedObjects().last()->types().contains(QStringLiteral("quillstash.ignore")));
}

} // namespace
