#include "support/recordingrig.h"

#include <gtest/gtest.h>

namespace {

// A notice with the title of the last one sent, within 999 ms of it, is dropped.
TEST(NoticesRepeat, SameTitleWithinASecondOfTheLastSentIsDroppedAcrossTheClockWrap)
{
    const struct { const char *name; quint32 start; quint32 gapMs; const char *title; int sent; } rows[] = {
        {"sameTitle999ms", 0, 999, "Add to Table", 1},       {"sameTitle1000ms", 0, 1000, "Add to Table", 2},
        {"sameTitleAtOnce", 0, 0, "Add to Table", 1},        {"otherTitleAtOnce", 0, 0, "Remove from Table", 2},
        {"titleDiffersInCase", 0, 1, "add to table", 2},     {"wrapsAfter512ms", 0xFFFFFF00u, 0x200, "Add to Table", 1},
        {"wrapsAfter1112ms", 0xFFFFFF00u, 0x458, "Add to Table", 2},
    };
    for (const auto &row : rows) {
        RecordingRig rig;
        rig.clock.set(row.start);
        rig.notices.messageGrowl(QStringLiteral("Add to Table"), QStringLiteral("one"), Notices::AddPasteboardNotification);
        rig.clock.advance(row.gapMs);
        rig.notices.messageGrowl(QString::fromLatin1(row.title), QStringLiteral("two"), Notices::AddPasteboardNotification);
        EXPECT_EQ(rig.noticeService.sent().size(), row.sent) << row.name;
    }
    // Measured from the last notice sent, not the last one asked for.
    RecordingRig rig;
    for (const quint32 gap : {0, 600, 600}) {
        rig.clock.advance(gap);
        rig.notices.messageGrowl(QStringLiteral("T"), {}, Notices::AddPasteboardNotification);
    }
    EXPECT_EQ(rig.noticeService.sent().size(), 2);
}

TEST(Notices, SendsTitleDescriptionNameAndPriorityUnstickyAndBouncesEvenForADroppedRepeat)
{
    RecordingRig rig;
    for (const char *text : {"hello", "again"})
        rig.notices.messageGrowl(QStringLiteral("Change Pasteboard"), QString::fromLatin1(text),
                                 Notices::ChangePasteboardNotification);
    EXPECT_EQ(rig.noticesSent(), QStringList{QStringLiteral("Change Pasteboard|hello|ChangePasteboardNotification")});
    EXPECT_EQ(rig.noticeService.sent().value(0).priority, 2);
    EXPECT_FALSE(rig.noticeService.sent().value(0).sticky);
    EXPECT_EQ(rig.dock.attentionRequests(), 2);

    rig.registries.setIconBounce(false);
    rig.clock.advance(5000);
    rig.notices.messageGrowl(QStringLiteral("T"), {}, Notices::AddPasteboardNotification);
    EXPECT_EQ(rig.dock.attentionRequests(), 2);
    EXPECT_EQ(rig.noticeService.sent().size(), 2);

    // Without a notice service nothing is sent, but the icon still bounces. The line said
    // then is checked against the running program by the desktop tests.
    FakeNoticeService absent;
    absent.setAvailable(false);
    Notices silent{absent, rig.clock, rig.dock, rig.registries};
    silent.setUp();
    rig.registries.setIconBounce(true);
    silent.messageGrowl(QStringLiteral("Add to Table"), QStringLiteral("x"), Notices::AddPasteboardNotification);
    EXPECT_TRUE(absent.sent().isEmpty());
    EXPECT_EQ(rig.dock.attentionRequests(), 3);
}

// Each switch is announced once, with the product name as title, at the check after it;
// a switch back before the check is not announced at all.
TEST(RecordingSwitch, AnnouncesEachSwitchAndCancelStopsAtOnceOnlyWhenAutomaticRecordingIsOff)
{
    RecordingRig rig;
    rig.recording.doAutoRec();
    rig.recording.toggleAutoRec();
    rig.recording.checkAutoRecStatus();
    EXPECT_TRUE(rig.noticeService.sent().isEmpty());
    rig.recording.doAutoRec();
    rig.recording.checkAutoRecStatus();
    rig.recording.checkAutoRecStatus();

    rig.registries.setAutoRec(true);
    rig.recording.cancelAutoRec();
    EXPECT_TRUE(rig.recording.automaticRec());
    rig.registries.setAutoRec(false);
    rig.clock.advance(5000);
    rig.recording.cancelAutoRec(); // announced at once, not at the next check
    EXPECT_FALSE(rig.recording.automaticRec());
    EXPECT_EQ(rig.noticesSent(), (QStringList{QStringLiteral("Quillstash|Rec Start|RecStartPasteboardNotification"),
                                              QStringLiteral("Quillstash|Rec Stop|RecStopPasteboardNotification")}));
    EXPECT_EQ(rig.sounds(), (QStringList{QStringLiteral("Hero"), QStringLiteral("Purr")}));
}

} // namespace
