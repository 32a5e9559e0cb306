#include "support/recordingrig.h"

#include <gtest/gtest.h>

namespace {

class NoticesTest : public ::testing::Test, protected RecordingRig
{
};

struct RepeatCase
{
    const char *name;
    quint32 gapMs;
    const char *secondTitle;
    int expectedSent;
};

class NoticeRepeatTest : public NoticesTest, public ::testing::WithParamInterface<RepeatCase>
{
};

TEST_P(NoticeRepeatTest, sameTitleWithinASecondIsDropped)
{
    const RepeatCase c = GetParam();
    notices.messageGrowl(QStringLiteral("Add to Table"), QStringLiteral("one"), Notices::AddPasteboardNotification);
    clock.advance(c.gapMs);
    notices.messageGrowl(QString::fromLatin1(c.secondTitle), QStringLiteral("two"), Notices::AddPasteboardNotification);
    EXPECT_EQ(noticeService.sent().size(), c.expectedSent);
}

INSTANTIATE_TEST_SUITE_P(
    Gaps, NoticeRepeatTest,
    ::testing::Values(RepeatCase{"sameTitle999ms", 999, "Add to Table", 1},
                      RepeatCase{"sameTitle1000ms", 1000, "Add to Table", 2},
                      RepeatCase{"sameTitleAtOnce", 0, "Add to Table", 1},
                      RepeatCase{"otherTitleAtOnce", 0, "Remove from Table", 2},
                      RepeatCase{"titleDiffersOnlyInCase", 1, "add to table", 2}),
    [](const auto &info) { return std::string(info.param.name); });

TEST_F(NoticesTest, sendsTitleDescriptionNameAndPriorityUnsticky)
{
    notices.messageGrowl(QStringLiteral("Change Pasteboard"), QStringLiteral("hello"),
                         Notices::ChangePasteboardNotification);
    ASSERT_EQ(noticeService.sent().size(), 1);
    const auto &n = noticeService.sent().first();
    EXPECT_EQ(n.title, QStringLiteral("Change Pasteboard"));
    EXPECT_EQ(n.description, QStringLiteral("hello"));
    EXPECT_EQ(n.notificationName, QStringLiteral("ChangePasteboardNotification"));
    EXPECT_EQ(n.priority, 2);
    EXPECT_FALSE(n.sticky);
}

TEST_F(NoticesTest, repeatWindowIsMeasuredFromTheLastNoticeSentAcrossTheClockWrap)
{
    clock.set(0xFFFFFF00u);
    notices.messageGrowl(QStringLiteral("T"), {}, Notices::AddPasteboardNotification);
    clock.advance(0x200); // wraps past zero: 512 ms later
    notices.messageGrowl(QStringLiteral("T"), {}, Notices::AddPasteboardNotification);
    clock.advance(600); // 1112 ms after the one that was sent
    notices.messageGrowl(QStringLiteral("T"), {}, Notices::AddPasteboardNotification);
    EXPECT_EQ(noticeService.sent().size(), 2);
}

TEST_F(NoticesTest, droppedRepeatStillBouncesTheDockIcon)
{
    notices.messageGrowl(QStringLiteral("T"), {}, Notices::AddPasteboardNotification);
    notices.messageGrowl(QStringLiteral("T"), {}, Notices::AddPasteboardNotification);
    EXPECT_EQ(noticeService.sent().size(), 1);
    EXPECT_EQ(dock.attentionRequests(), 2);

    registries.setIconBounce(false);
    clock.advance(5000);
    notices.messageGrowl(QStringLiteral("T"), {}, Notices::AddPasteboardNotification);
    EXPECT_EQ(dock.attentionRequests(), 2);
    EXPECT_EQ(noticeService.sent().size(), 2);
}

// The line said without a notice service is checked against the running
// program by the desktop tests.
TEST_F(NoticesTest, withoutAServiceNothingIsSentButTheIconStillBounces)
{
    FakeNoticeService absent;
    absent.setAvailable(false);
    Notices silent{absent, clock, dock, registries};
    silent.setUp();
    silent.messageGrowl(QStringLiteral("Add to Table"), QStringLiteral("x"), Notices::AddPasteboardNotification);
    EXPECT_TRUE(absent.sent().isEmpty());
    EXPECT_EQ(dock.attentionRequests(), 1);
}

} // namespace
