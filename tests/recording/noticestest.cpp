#include "support/recordingrig.h"

#include <gtest/gtest.h>

// A notice with the title of the last one sent, within 999 ms of it, is dropped, though the dock bounces for
// it unless bouncing is off; the clock wraps between the fourth and the fifth.
TEST(Notices, SameTitleWithinASecondOfTheLastSentIsDroppedButStillBounces)
{
    RecordingRig rig;
    rig.clock.set(0xFFFFFFFFu - 1500);
    const std::pair<quint32, const char *> steps[] = {
        {0, "Add to Table"}, {999, "Add to Table"}, {1, "Add to Table"},
        {1, "add to table"}, {999, "add to table"}, {1, "add to table"},
    };
    QString sent;
    for (const auto &[gapMs, title] : steps) {
        const qsizetype before = rig.noticeService.sent().size();
        rig.clock.advance(gapMs);
        rig.notices.messageGrowl(QString::fromLatin1(title), QStringLiteral("hello"), Notices::AddPasteboardNotification);
        sent += rig.noticeService.sent().size() > before ? u'+' : u'-';
    }
    EXPECT_EQ(sent, QStringLiteral("+-++-+"));
    EXPECT_EQ(rig.dock.attentionRequests(), 6);
    EXPECT_EQ(rig.noticesSent().value(0), QStringLiteral("Add to Table|hello|AddPasteboardNotification"));
    EXPECT_FALSE(rig.noticeService.sent().value(0).sticky);

    rig.registries.setIconBounce(false);
    rig.notices.messageGrowl(QStringLiteral("T"), {}, Notices::AddPasteboardNotification);
    EXPECT_EQ(rig.dock.attentionRequests(), 6);
    EXPECT_EQ(rig.noticeService.sent().size(), 5);
}

// Each switch is announced once, with its sound, at the check after it, and a switch back before it not at all;
// a restore stops at once unless automatic recording is on (that case is in the desktop tests).
TEST(RecordingSwitch, AnnouncesEachSwitchOnceAndAStopFromARestoreAtOnce)
{
    RecordingRig rig;
    rig.recording.doAutoRec();
    rig.recording.toggleAutoRec();
    rig.recording.checkAutoRecStatus();
    EXPECT_TRUE(rig.noticeService.sent().isEmpty());
    rig.recording.doAutoRec();
    rig.recording.checkAutoRecStatus();
    rig.recording.checkAutoRecStatus();

    rig.registries.setAutoRec(false);
    rig.clock.advance(5000);
    rig.recording.cancelAutoRec(); // announced at once, not at the next check
    EXPECT_EQ(rig.noticesSent(), (QStringList{QStringLiteral("Quillstash|Rec Start|RecStartPasteboardNotification"),
                                              QStringLiteral("Quillstash|Rec Stop|RecStopPasteboardNotification")}));
    EXPECT_EQ(rig.sounds(), (QStringList{QStringLiteral("Hero"), QStringLiteral("Purr")}));
}
