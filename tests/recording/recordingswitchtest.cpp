#include "platform/fake/fakeclock.h"
#include "platform/fake/fakedock.h"
#include "platform/fake/fakeloginitems.h"
#include "platform/fake/fakenoticeservice.h"
#include "platform/fake/fakesoundplayer.h"
#include "platform/fake/fakeuserdefaults.h"
#include "recording/eventtimer.h"
#include "recording/notices.h"
#include "recording/recordingswitch.h"
#include "settings/applicationregistries.h"

#include <gtest/gtest.h>

namespace {

class RecordingSwitchTest : public ::testing::Test
{
protected:
    QStringList sounds()
    {
        eventTimer.waitForIdle();
        return player.played();
    }

    FakeUserDefaults defaults;
    FakeLoginItems loginItems;
    ApplicationRegistries registries{defaults, loginItems, QUrl::fromLocalFile(QStringLiteral("/usr/bin/quillstash"))};
    FakeNoticeService service;
    FakeClock clock;
    FakeDock dock;
    Notices notices{service, clock, dock, registries};
    FakeSoundPlayer player;
    EventTimer eventTimer{player, [] { return true; }};
    RecordingSwitch recording{registries, notices, eventTimer};

    void SetUp() override { notices.setUp(); }
};

TEST_F(RecordingSwitchTest, announcesEachSwitchOnceWithProductNameAsTitle)
{
    recording.doAutoRec();
    recording.checkAutoRecStatus();
    recording.checkAutoRecStatus();
    clock.advance(5000);
    recording.toggleAutoRec();
    recording.checkAutoRecStatus();

    ASSERT_EQ(service.sent().size(), 2);
    EXPECT_EQ(service.sent()[0].title, QStringLiteral("Quillstash"));
    EXPECT_EQ(service.sent()[0].description, QStringLiteral("Rec Start"));
    EXPECT_EQ(service.sent()[0].notificationName, QStringLiteral("RecStartPasteboardNotification"));
    EXPECT_EQ(service.sent()[1].description, QStringLiteral("Rec Stop"));
    EXPECT_EQ(service.sent()[1].notificationName, QStringLiteral("RecStopPasteboardNotification"));
    EXPECT_EQ(sounds(), (QStringList{QStringLiteral("Hero"), QStringLiteral("Purr")}));
}

TEST_F(RecordingSwitchTest, switchBackBeforeTheCheckIsNotAnnounced)
{
    recording.doAutoRec();
    recording.toggleAutoRec();
    recording.checkAutoRecStatus();
    EXPECT_TRUE(service.sent().isEmpty());
    EXPECT_TRUE(sounds().isEmpty());
}

TEST_F(RecordingSwitchTest, cancelStopsRecordingOnlyWhenAutomaticRecordingIsOff)
{
    recording.doAutoRec();
    recording.checkAutoRecStatus();

    registries.setAutoRec(true);
    recording.cancelAutoRec();
    EXPECT_TRUE(recording.automaticRec());

    registries.setAutoRec(false);
    clock.advance(5000);
    recording.cancelAutoRec();
    EXPECT_FALSE(recording.automaticRec());
    // Announced at once, not at the next tick.
    ASSERT_EQ(service.sent().size(), 2);
    EXPECT_EQ(service.sent().last().description, QStringLiteral("Rec Stop"));
}

} // namespace
