#include "support/recordingrig.h"

#include <gtest/gtest.h>

namespace {

class RecordingSwitchTest : public ::testing::Test, protected RecordingRig
{
};

TEST_F(RecordingSwitchTest, announcesEachSwitchOnceWithProductNameAsTitle)
{
    recording.doAutoRec();
    recording.checkAutoRecStatus();
    recording.checkAutoRecStatus();
    clock.advance(5000);
    recording.toggleAutoRec();
    recording.checkAutoRecStatus();

    ASSERT_EQ(noticeService.sent().size(), 2);
    EXPECT_EQ(noticeService.sent()[0].title, QStringLiteral("Quillstash"));
    EXPECT_EQ(noticeService.sent()[0].description, QStringLiteral("Rec Start"));
    EXPECT_EQ(noticeService.sent()[0].notificationName, QStringLiteral("RecStartPasteboardNotification"));
    EXPECT_EQ(noticeService.sent()[1].description, QStringLiteral("Rec Stop"));
    EXPECT_EQ(noticeService.sent()[1].notificationName, QStringLiteral("RecStopPasteboardNotification"));
    EXPECT_EQ(sounds(), (QStringList{QStringLiteral("Hero"), QStringLiteral("Purr")}));
}

TEST_F(RecordingSwitchTest, switchBackBeforeTheCheckIsNotAnnounced)
{
    recording.doAutoRec();
    recording.toggleAutoRec();
    recording.checkAutoRecStatus();
    EXPECT_TRUE(noticeService.sent().isEmpty());
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
    ASSERT_EQ(noticeService.sent().size(), 2);
    EXPECT_EQ(noticeService.sent().last().description, QStringLiteral("Rec Stop"));
}

} // namespace
