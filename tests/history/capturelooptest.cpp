#include "historyfixture.h"

#include <QSignalSpy>

#include <new>
#include <utility>

namespace {

const QString plainType = QStringLiteral("public.utf8-plain-text");
const QString htmlType = QStringLiteral("public.html");

class CaptureLoopTest : public HistoryFixture
{
protected:
    void SetUp() override { recording.setAutomaticRec(true); }
};

TEST_F(CaptureLoopTest, EveryChangeIsCapturedWholeEvenWhenItRepeatsTheLastOne)
{
    const QString text = QString(140, u'a') + QStringLiteral("b and more");
    const QString shown = QString(140, u'a') + QStringLiteral(" ...");
    QSignalSpy scrolled(&capture, &CaptureLoop::scrollBottomRequested);
    for (int i = 0; i < 2; ++i) {
        pasteboard.setText(text);
        tick(2);
    }
    // A non-text state is named after its first type; unreadable data leaves no key.
    pasteboard.setState({{QStringLiteral("public.tiff"), "II*"}, {QStringLiteral("com.example.lazy"), QByteArray()}});
    tick();
    EXPECT_EQ(arranged(&contents::indexCount), QStringLiteral("0 1 2").split(u' '));
    EXPECT_EQ(arranged(), (QStringList{shown, shown, QStringLiteral("[ public.tiff ]")}));
    const Entry image = nsac.arrangedObjects().last();
    EXPECT_EQ(nsac.arrangedObjects().first()->mainType(), plainType);
    EXPECT_EQ(image->types().size(), 2);
    EXPECT_EQ(image->datas().keys(), QStringList{QStringLiteral("public.tiff")});
    // Each capture is announced with the entry's cut display string, and scrolls the table.
    EXPECT_EQ(scrolled.count(), 3);
    const QString added = QStringLiteral("Add to Table|%1|AddPasteboardNotification");
    EXPECT_EQ(noticesSent().mid(1), (QStringList{added.arg(shown), added.arg(shown), added.arg(QStringLiteral("[ public.tiff ]"))}));
}

// Each kind of own or secret write is skipped by the tick in the desktop tests.
TEST_F(CaptureLoopTest, OwnWriteIsSkippedByTheTickButTakenByAManualCapture)
{
    tick(); // an empty pasteboard gives nothing, even by hand
    actions.paste();
    EXPECT_EQ(nsac.arrangedCount(), 0);
    pasteboard.setState({{stringType, "pw"}, {QStringLiteral("quillstash.ignore"), {}}});
    tick();
    EXPECT_EQ(nsac.arrangedCount(), 0);
    actions.paste();
    EXPECT_FALSE(capture.manualAdd());
    ASSERT_EQ(nsac.arrangedCount(), 1);
    EXPECT_EQ(nsac.arrangedObjects().last()->types(), (QStringList{stringType, QStringLiteral("quillstash.ignore")}));
    EXPECT_EQ(sounds(), (QStringList{QStringLiteral("Hero"), QStringLiteral("Pop")}));
}

// The trim comes before the capture of its tick. The oldest go first by the
// number their sequence text starts with, not by row or by text; entries
// hidden by the filter neither count nor go.
TEST_F(CaptureLoopTest, AutoRemoveKeepsTheArrangedEntriesWithTheLargestNumbers)
{
    registries.setAutoRemove(false);
    registries.setLimitNumber(3);
    for (const QString &number : QStringLiteral("10 2x 9 zero").split(u' '))
        addEntry(QStringLiteral("shown ") + number, number);
    addEntry(QStringLiteral("hidden"), QStringLiteral("1"));
    nsac.setFilterString(QStringLiteral("shown"));
    tick();
    EXPECT_EQ(nsac.arrangedCount(), 4);
    registries.setAutoRemove(true);
    pasteboard.setText(QStringLiteral("shown new"));
    tick();
    EXPECT_EQ(arranged(&contents::indexCount), QStringLiteral("10 2x 9 0").split(u' '));
    registries.setLimitNumber(1);
    tick();
    EXPECT_EQ(arranged(&contents::indexCount), QStringList{QStringLiteral("10")});
    EXPECT_EQ(nsac.allObjects().size(), 2);
}

TEST_F(CaptureLoopTest, TitleAndStarShowTheCountOfTheTickBeforeAndTheDockBadgeTheCountTheTickBeganWith)
{
    addEntry(QStringLiteral("older"));
    pasteboard.setText(QStringLiteral("x"));
    tick(); // captures the second entry, and sees the count change
    EXPECT_EQ((QStringList{dock.badgeLabel(), capture.title()}), (QStringList{"1", "Untitled.qs_backup"}));
    tick();
    EXPECT_EQ((QStringList{dock.badgeLabel(), capture.title()}), (QStringList{"2", "Untitled.qs_backup*"}));
    dock.setActive(true); // in the foreground the badge goes
    tick();
    EXPECT_EQ(dock.badgeLabel(), QString());

    // Saving clears the mark; opening a file with another count sets it again.
    capture.setEStatus(0);
    capture.setMyPath(QStringLiteral("/home/me/notes/history.qs_backup"));
    tick();
    EXPECT_EQ(capture.title(), QStringLiteral("history.qs_backup"));
    addEntry(QStringLiteral("loaded"));
    tick(2);
    EXPECT_EQ(capture.title(), QStringLiteral("history.qs_backup*"));
}

// The types table shows the current state while the history is empty, else the first selected entry.
TEST_F(CaptureLoopTest, CurrentStateIsShownOnceThenOnEveryTickAfterAChange)
{
    QSignalSpy current(&capture, &CaptureLoop::currentContentChanged);
    QSignalSpy types(&capture, &CaptureLoop::typesSourceChanged);
    recording.setAutomaticRec(false);
    pasteboard.setState({{htmlType, "<b>"}});
    tick(3);
    EXPECT_EQ(current.count(), 1);
    ASSERT_EQ(types.count(), 1);
    EXPECT_EQ(types.takeFirst().first().toStringList(), QStringList{htmlType});

    const QString address = QStringLiteral("https://example.org/picture.png");
    pasteboard.setText(address);
    tick(6);
    EXPECT_EQ(current.count(), 7);
    EXPECT_EQ(capture.currentContent()->content(), address);
    // An unchanged state keeps its entry: its picture is fetched once, in at most four attempts.
    EXPECT_EQ(fetcher.requestCount(), 1);
    EXPECT_EQ(capture.currentContent()->imageAttempts(), 4);

    types.clear();
    addEntry(QStringLiteral("first"), QStringLiteral("0"), {{stringType, "a"}});
    addEntry(QStringLiteral("second"), QStringLiteral("1"), {{htmlType, "b"}, {stringType, "b"}});
    nsac.setSelectionIndexes({1, 0});
    tick();
    ASSERT_EQ(types.count(), 1);
    EXPECT_EQ(types.first().first().toStringList(), QStringList{stringType});

    // Switching recording on captures the state that changed while it was off.
    recording.setAutomaticRec(true);
    tick();
    EXPECT_EQ(arranged(), (QStringList{QStringLiteral("first"), QStringLiteral("second"), address}));
}

class ThrowingPasteboard : public FakePasteboard
{
public:
    QStringList types() const override
    {
        if (std::exchange(throwOnce, false))
            throw std::bad_alloc();
        return FakePasteboard::types();
    }
    mutable bool throwOnce = false;
};

TEST_F(CaptureLoopTest, ExceptionIsLoggedTheRestOfTheTickRunsAndTheCaptureIsRetried)
{
    ThrowingPasteboard throwing;
    CaptureLoop loop{nsac, throwing, registries, dock, notices, eventTimer, recording, &fetcher};
    addEntry(QStringLiteral("older"));
    throwing.setText(QStringLiteral("new"));
    throwing.throwOnce = true;
    loop.MainTimer();
    EXPECT_EQ(logged, QStringList{QStringLiteral("default: exception catched")});
    logged.clear();
    // The previews after the failed capture are skipped, the steps after the guard run.
    EXPECT_EQ(nsac.arrangedObjects().first()->imageAttempts(), 0);
    EXPECT_EQ(dock.badgeLabel(), QStringLiteral("1"));

    loop.MainTimer();
    EXPECT_EQ(arranged(), (QStringList{QStringLiteral("older"), QStringLiteral("new")}));
    EXPECT_EQ(nsac.arrangedObjects().first()->imageAttempts(), 1); // one attempt per entry per tick
}

} // namespace
