#include "support/recordingrig.h"

#include <gtest/gtest.h>

namespace {

class RecordingSwitchTest : public ::testing::Test, protected RecordingRig
{
protected:
    QStringList sent() const
    {
        QStringList fields;
        for (const auto &n : noticeService.sent())
            fields << n.title + u'|' + n.description + u'|' + n.notificationName;
        return fields;
    }
};

TEST_F(RecordingSwitchTest, AnnouncesEachSwitchOnceWithProductNameAsTitleButNotASwitchBackBeforeTheCheck)
{
    recording.doAutoRec();
    recording.toggleAutoRec();
    recording.checkAutoRecStatus();
    EXPECT_TRUE(noticeService.sent().isEmpty());
    recording.doAutoRec();
    recording.checkAutoRecStatus();
    recording.checkAutoRecStatus();
    clock.advance(5000);
    recording.toggleAutoRec();
    recording.checkAutoRecStatus();
    EXPECT_EQ(sent(), (QStringList{QStringLiteral("Quillstash|Rec Start|RecStartPasteboardNotification"),
                                   QStringLiteral("Quillstash|Rec Stop|RecStopPasteboardNotification")}));
    EXPECT_EQ(sounds(), (QStringList{QStringLiteral("Hero"), QStringLiteral("Purr")}));
}

TEST_F(RecordingSwitchTest, CancelStopsRecordingAtOnceOnlyWhenAutomaticRecordingIsOff)
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
    ASSERT_EQ(noticeService.sent().size(), 2); // announced at once, not at the next tick
    EXPECT_EQ(noticeService.sent().last().description, QStringLiteral("Rec Stop"));
}

} // namespace
