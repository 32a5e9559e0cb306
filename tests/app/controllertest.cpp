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
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

namespace {

// The controller wired to fakes, as the program wires it to the desktop. The
// rig's own notices and recording switch stay unused.
class ControllerTest : public ::testing::Test, protected RecordingRig
{
protected:
    void launch()
    {
        store = std::make_unique<ApplicationRegistries>(defaults, loginItems, app);
        controller = std::make_unique<Controller>(PlatformServices{pasteboard, defaults, loginItems, noticeService,
                                                                   soundPlayer, dock, clock, workspace, panels,
                                                                   &fetcher, app},
                                                  *store);
        controller->applicationDidFinishLaunching();
    }
    QStringList played()
    {
        controller->eventTimer().waitForIdle();
        return sounds();
    }

    const QUrl app = QUrl::fromLocalFile(QStringLiteral("/usr/bin/quillstash"));
    FakePasteboard pasteboard;
    FakeWorkspace workspace;
    FakePanels panels;
    FakeImageFetcher fetcher;
    std::unique_ptr<ApplicationRegistries> store;
    std::unique_ptr<Controller> controller;
};

TEST_F(ControllerTest, LaunchRecordsAnnouncesAndCapturesWhatIsAlreadyThereButNotItsOwnRestore)
{
    pasteboard.setText(QStringLiteral("copied before launch"));
    launch();
    EXPECT_EQ(controller->statusString(), QStringLiteral("Idle"));
    EXPECT_TRUE(controller->IsClean());
    EXPECT_EQ(Controller::controller(), controller.get());
    QSignalSpy scrolled(&controller->capture(), &CaptureLoop::scrollBottomRequested);

    controller->MainTimer();
    ASSERT_EQ(controller->nsac().arrangedCount(), 1);
    EXPECT_EQ(controller->nsac().arrangedObjects().first()->content(), QStringLiteral("copied before launch"));
    EXPECT_EQ(noticeService.titles(), (QStringList{QStringLiteral("Quillstash"), QStringLiteral("Add to Table")}));
    EXPECT_EQ(played(), (QStringList{QStringLiteral("Hero"), QStringLiteral("Pop")}));
    pasteboard.setText(QStringLiteral("second"));
    controller->MainTimer();
    EXPECT_FALSE(controller->IsClean());
    EXPECT_EQ(dock.badgeLabel(), QStringLiteral("1"));
    EXPECT_EQ(scrolled.count(), 2);

    controller->nsac().setSelectionIndexes({0});
    controller->changePasteBoard();
    EXPECT_EQ(pasteboard.stringForType(QStringLiteral("NSStringPboardType")), QStringLiteral("copied before launch"));
    controller->MainTimer();
    EXPECT_EQ(controller->nsac().arrangedCount(), 2);
    controller->paste();
    ASSERT_EQ(controller->nsac().arrangedCount(), 3);
    EXPECT_TRUE(controller->nsac().arrangedObjects().last()->types().contains(QStringLiteral("quillstash.ignore")));
}

// Sounds ask the preference at the moment they play; the tick drives auto-save.
TEST_F(ControllerTest, SoundsFollowThePreferenceAndTheTickSavesAutomatically)
{
    QTemporaryDir dir;
    defaults.setObject(false, QStringLiteral("soundenable"));
    defaults.setObject(true, QStringLiteral("autosave"));
    launch();
    controller->capture().setMyPath(dir.filePath(QStringLiteral("auto.qs_backup")));
    pasteboard.setText(QStringLiteral("quiet"));
    controller->MainTimer();
    EXPECT_TRUE(played().isEmpty());

    store->setSoundEnable(true);
    pasteboard.setText(QStringLiteral("loud"));
    controller->MainTimer();
    EXPECT_EQ(played(), QStringList{QStringLiteral("Pop")});
    for (int i = 2; i < 100; ++i)
        controller->MainTimer();
    EXPECT_FALSE(QFile::exists(controller->capture().myPath()));
    controller->MainTimer();
    EXPECT_TRUE(QFile::exists(controller->capture().myPath()));
}

} // namespace
