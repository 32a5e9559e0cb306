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
    rig.notices.messageGrowl(QStringLiteral("Change Pasteboard"), QStringLiteral("hello"),
                             Notices::ChangePasteboardNotification);
    rig.notices.messageGrowl(QStringLiteral("Change Pasteboard"), QStringLiteral("again"),
                             Notices::ChangePasteboardNotification);
    ASSERT_EQ(rig.noticeService.sent().size(), 1);
    const auto &n = rig.noticeService.sent().first();
    EXPECT_EQ((QStringList{n.title, n.description, n.notificationName}),
              (QStringList{QStringLiteral("Change Pasteboard"), QStringLiteral("hello"),
                           QStringLiteral("ChangePasteboardNotification")}));
    EXPECT_EQ(n.priority, 2);
    EXPECT_FALSE(n.sticky);
    EXPECT_EQ(rig.dock.attentionRequests(), 2);

    rig.registries.setIconBounce(false);
    rig.clock.advance(5000);
    rig.notices.messageGrowl(QStringLiteral("T"), {}, Notices::AddPasteboardNotification);
    EXPECT_EQ(rig.dock.attentionRequests(), 2);
    EXPECT_EQ(rig.noticeService.sent().size(), 2);
}

// The line said without a notice service is checked against the running
// program by the desktop tests.
TEST(Notices, WithoutAServiceNothingIsSentButTheIconStillBounces)
{
    RecordingRig rig;
    FakeNoticeService absent;
    absent.setAvailable(false);
    Notices silent{absent, rig.clock, rig.dock, rig.registries};
    silent.setUp();
    silent.messageGrowl(QStringLiteral("Add to Table"), QStringLiteral("x"), Notices::AddPasteboardNotification);
    EXPECT_TRUE(absent.sent().isEmpty());
    EXPECT_EQ(rig.dock.attentionRequests(), 1);
}

} // namespace
