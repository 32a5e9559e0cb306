#include "history/captureloop.h"

#include "historyfixture.h"

#include <QRegularExpression>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <new>

namespace {

const QString stringType = QStringLiteral("NSStringPboardType");
const QString plainType = QStringLiteral("public.utf8-plain-text");

class CaptureLoopTest : public HistoryFixture
{
protected:
    void SetUp() override
    {
        HistoryFixture::SetUp();
        recording->setAutomaticRec(true);
    }
};

TEST_F(CaptureLoopTest, FirstTickCapturesTheStateAlreadyThere)
{
    copyText(QStringLiteral("already here"));
    QSignalSpy scrolled(capture.get(), &CaptureLoop::scrollBottomRequested);
    tick();

    ASSERT_EQ(nsac.arrangedCount(), 1);
    const Entry entry = nsac.arrangedObjects().first();
    EXPECT_EQ(entry->indexCount(), QStringLiteral("0"));
    EXPECT_EQ(entry->content(), QStringLiteral("already here"));
    EXPECT_EQ(entry->mainType(), plainType);
    EXPECT_EQ(entry->types(), (QStringList{plainType, stringType}));
    EXPECT_EQ(entry->datas().value(stringType), QByteArrayLiteral("already here"));
    EXPECT_EQ(capture->getCounter(), 1);
    EXPECT_EQ(scrolled.count(), 1);
    EXPECT_TRUE(sounds().contains(QStringLiteral("Pop")));
    ASSERT_FALSE(noticeService.sent().isEmpty());
    const FakeNoticeService::Notice &notice = noticeService.sent().last();
    EXPECT_EQ(notice.title, QStringLiteral("Add to Table"));
    EXPECT_EQ(notice.description, QStringLiteral("already here"));
    EXPECT_EQ(notice.notificationName, QStringLiteral("AddPasteboardNotification"));

    tick();
    EXPECT_EQ(nsac.arrangedCount(), 1);
}

TEST_F(CaptureLoopTest, NothingIsCapturedWhileRecordingIsOffAndTheMissedStateOnSwitchingOn)
{
    recording->setAutomaticRec(false);
    copyText(QStringLiteral("first"));
    ticks(2);
    copyText(QStringLiteral("second"));
    tick();
    EXPECT_EQ(nsac.arrangedCount(), 0);

    recording->setAutomaticRec(true);
    tick();
    EXPECT_EQ(allContents(), QStringList{QStringLiteral("second")});
}

TEST_F(CaptureLoopTest, SameTextTwiceGivesTwoEntriesWithConsecutiveNumbers)
{
    copyText(QStringLiteral("twice"));
    tick();
    copyText(QStringLiteral("twice"));
    tick();
    EXPECT_EQ(arrangedIndexCounts(), (QStringList{QStringLiteral("0"), QStringLiteral("1")}));
    EXPECT_TRUE(nsac.arrangedObjects().at(0)->hasSameDataTo(*nsac.arrangedObjects().at(1)));
}

TEST_F(CaptureLoopTest, NonTextStateIsNamedAfterItsFirstTypeAndUnreadableDataLeavesNoKey)
{
    pasteboard.setState({{QStringLiteral("public.tiff"), QByteArrayLiteral("II*\0")},
                         {QStringLiteral("com.example.lazy"), QByteArray()}});
    tick();
    ASSERT_EQ(nsac.arrangedCount(), 1);
    const Entry entry = nsac.arrangedObjects().first();
    EXPECT_EQ(entry->content(), QStringLiteral("[ public.tiff ]"));
    EXPECT_EQ(entry->mainType(), QStringLiteral("public.tiff"));
    EXPECT_EQ(entry->types().size(), 2);
    EXPECT_EQ(entry->datas().keys(), QStringList{QStringLiteral("public.tiff")});
}

struct SkipCase
{
    const char *name;
    QList<FakePasteboard::Item> state;
    bool skipped;
};

class SkippedStates : public CaptureLoopTest, public ::testing::WithParamInterface<SkipCase>
{
};

TEST_P(SkippedStates, TickSkipsButManualCaptureTakes)
{
    const SkipCase c = GetParam();
    pasteboard.setState(c.state);
    tick();
    EXPECT_EQ(nsac.arrangedCount(), c.skipped ? 0 : 1);
    EXPECT_EQ(sounds().contains(QStringLiteral("Pop")), !c.skipped);
    EXPECT_EQ(noticeService.titles().contains(QStringLiteral("Add to Table")), !c.skipped);
    EXPECT_EQ(capture->getCounter(), c.skipped ? 0 : 1);

    actions->paste();
    EXPECT_FALSE(capture->manualAdd());
    ASSERT_EQ(nsac.arrangedCount(), c.skipped ? 1 : 2);
    EXPECT_EQ(nsac.arrangedObjects().last()->types().size(), c.state.size());
}

INSTANTIATE_TEST_SUITE_P(
    Table, SkippedStates,
    ::testing::Values(
        SkipCase{"ownWrite", {{stringType, "mine"}, {QStringLiteral("quillstash.ignore"), {}}}, true},
        SkipCase{"concealed", {{stringType, "pw"}, {QStringLiteral("org.nspasteboard.ConcealedType"), {}}}, true},
        SkipCase{"kdeSecret", {{stringType, "pw"}, {QStringLiteral("x-kde-passwordManagerHint"), "secret"}}, true},
        SkipCase{"kdeOtherHint", {{stringType, "pw"}, {QStringLiteral("x-kde-passwordManagerHint"), "public"}}, false},
        SkipCase{"plain", {{stringType, "hello"}}, false}),
    [](const ::testing::TestParamInfo<SkipCase> &info) { return std::string(info.param.name); });

TEST_F(CaptureLoopTest, EmptyPasteboardCapturesNothing)
{
    tick();
    actions->paste();
    EXPECT_EQ(nsac.arrangedCount(), 0);
    EXPECT_FALSE(noticeService.titles().contains(QStringLiteral("Add to Table")));
    EXPECT_FALSE(sounds().contains(QStringLiteral("Pop")));
}

TEST_F(CaptureLoopTest, AutoRemoveKeepsTheSixthCaptureOneTickThenDropsTheOldest)
{
    registries->setAutoRemove(true);
    registries->setLimitNumber(5);
    for (int i = 0; i < 6; ++i) {
        copyText(QStringLiteral("text %1").arg(i));
        tick();
    }
    EXPECT_EQ(nsac.arrangedCount(), 6);
    tick();
    EXPECT_EQ(arrangedIndexCounts(),
              (QStringList{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3"), QStringLiteral("4"),
                           QStringLiteral("5")}));
}

TEST_F(CaptureLoopTest, AutoRemoveTakesTheSmallestNumbersWhateverTheOrder)
{
    registries->setAutoRemove(true);
    registries->setLimitNumber(3);
    for (const char *number : {"7", "12", "zero", "9", "3", "10"})
        addEntry(QStringLiteral("n%1").arg(QLatin1String(number)), QString::fromLatin1(number));
    tick();
    EXPECT_EQ(arrangedIndexCounts(), (QStringList{QStringLiteral("12"), QStringLiteral("9"), QStringLiteral("10")}));
}

TEST_F(CaptureLoopTest, LoweredLimitTrimsALongShuffledHistoryInOneTick)
{
    registries->setAutoRemove(true);
    registries->setLimitNumber(10);
    QList<Entry> entries;
    for (int i = 0; i < 1000; ++i) {
        auto entry = std::make_shared<contents>();
        entry->setIndexCount(QString::number((i * 379) % 1000)); // every number once, scattered
        entries.append(entry);
    }
    nsac.setContent(entries);
    tick();
    QStringList left = arrangedIndexCounts();
    std::sort(left.begin(), left.end());
    EXPECT_EQ(left, (QStringList{"990", "991", "992", "993", "994", "995", "996", "997", "998", "999"}));
}

TEST_F(CaptureLoopTest, AutoRemoveCountsOnlyArrangedEntries)
{
    registries->setAutoRemove(true);
    registries->setLimitNumber(1);
    for (int i = 0; i < 4; ++i)
        addEntry(QStringLiteral("other %1").arg(i), QString::number(i));
    addEntry(QStringLiteral("match a"), QStringLiteral("10"));
    addEntry(QStringLiteral("match b"), QStringLiteral("11"));
    nsac.setFilterString(QStringLiteral("match"));
    tick();
    EXPECT_EQ(arrangedIndexCounts(), QStringList{QStringLiteral("11")});
    EXPECT_EQ(nsac.allObjects().size(), 5);
}

TEST_F(CaptureLoopTest, AutoRemoveOffKeepsEverything)
{
    registries->setAutoRemove(false);
    registries->setLimitNumber(1);
    for (int i = 0; i < 3; ++i)
        addEntry(QStringLiteral("t"), QString::number(i));
    tick();
    EXPECT_EQ(nsac.arrangedCount(), 3);
}

struct SortCase
{
    const char *a;
    const char *b;
    int expected;
};

class IntSort : public ::testing::TestWithParam<SortCase>
{
};

TEST_P(IntSort, ComparesTheNumbersTheTextsStartWith)
{
    const SortCase c = GetParam();
    contents a;
    contents b;
    a.setIndexCount(QString::fromLatin1(c.a));
    b.setIndexCount(QString::fromLatin1(c.b));
    EXPECT_EQ(CaptureLoop::intSort(a, b), c.expected);
}

INSTANTIATE_TEST_SUITE_P(Table, IntSort,
                         ::testing::Values(SortCase{"2", "10", -1}, SortCase{"10", "2", 1}, SortCase{"5", "5", 0},
                                           SortCase{"zero", "0", 0}, SortCase{"zero", "1", -1},
                                           SortCase{"-3", "zero", -1}, SortCase{" 42", "41", 1},
                                           SortCase{"7x", "7", 0}, SortCase{"99999999999", "2147483647", 0}));

TEST_F(CaptureLoopTest, TitleGainsStarTheTickAfterTheCountChanged)
{
    QSignalSpy titles(capture.get(), &CaptureLoop::titleChanged);
    copyText(QStringLiteral("x"));
    tick();
    EXPECT_EQ(capture->title(), QStringLiteral("Untitled.qs_backup"));
    EXPECT_TRUE(actions->IsClean());
    tick();
    EXPECT_EQ(capture->title(), QStringLiteral("Untitled.qs_backup"));
    EXPECT_FALSE(actions->IsClean());
    tick();
    EXPECT_EQ(capture->title(), QStringLiteral("Untitled.qs_backup*"));
    ASSERT_EQ(titles.count(), 3);
    EXPECT_TRUE(titles.last().at(1).toBool());

    // Saving clears the mark; opening a file with another count sets it again.
    capture->setEStatus(0);
    capture->setMyPath(QStringLiteral("/home/me/notes/history.qs_backup"));
    tick();
    EXPECT_EQ(capture->title(), QStringLiteral("history.qs_backup"));
    nsac.setContent({std::make_shared<contents>(), std::make_shared<contents>()});
    tick();
    tick();
    EXPECT_EQ(capture->title(), QStringLiteral("history.qs_backup*"));
}

TEST_F(CaptureLoopTest, DockBadgeShowsCountOnlyWhileInTheBackground)
{
    for (const char *text : {"a", "b", "c"}) {
        copyText(QString::fromLatin1(text));
        tick();
    }
    tick();
    EXPECT_EQ(dock.badgeLabel(), QStringLiteral("3"));
    dock.setActive(true);
    tick();
    EXPECT_EQ(dock.badgeLabel(), QString());
    dock.setActive(false);
    actions->removeAllObject();
    tick();
    EXPECT_EQ(dock.badgeLabel(), QString());
}

TEST_F(CaptureLoopTest, CurrentStateIsShownOnceThenOnEveryTickAfterAChange)
{
    copyText(QStringLiteral("start"));
    recording->setAutomaticRec(false);
    QSignalSpy current(capture.get(), &CaptureLoop::currentContentChanged);
    QSignalSpy typesSource(capture.get(), &CaptureLoop::typesSourceChanged);
    ticks(3);
    EXPECT_EQ(current.count(), 1);
    EXPECT_EQ(typesSource.count(), 1);
    EXPECT_EQ(capture->currentContent()->content(), QStringLiteral("start"));

    copyText(QStringLiteral("changed"));
    ticks(3);
    EXPECT_EQ(current.count(), 4);
    EXPECT_EQ(capture->currentContent()->content(), QStringLiteral("changed"));
}

TEST_F(CaptureLoopTest, UnchangedCurrentAddressIsFetchedOnlyOnce)
{
    recording->setAutomaticRec(false);
    tick();
    copyText(QStringLiteral("https://example.org/picture.png"));
    ticks(6);
    EXPECT_EQ(fetcher.requestCount(), 1);
    ASSERT_TRUE(capture->currentContent());
    EXPECT_EQ(capture->currentContent()->imageAttempts(), contents::maxImageAttempts);
}

TEST_F(CaptureLoopTest, SelectionFeedsTheTypesTable)
{
    pasteboard.setState({{QStringLiteral("public.html"), "<i>x</i>"}, {stringType, "x"}});
    tick();
    QSignalSpy typesSource(capture.get(), &CaptureLoop::typesSourceChanged);
    tick();
    EXPECT_EQ(typesSource.count(), 0);
    select(0);
    tick();
    ASSERT_EQ(typesSource.count(), 1);
    EXPECT_EQ(typesSource.first().first().toStringList(), (QStringList{QStringLiteral("public.html"), stringType}));
}

TEST_F(CaptureLoopTest, EveryEntryGetsOnePreviewAttemptPerTick)
{
    addEntry(QStringLiteral("plain words"), QStringLiteral("0"));
    ticks(2);
    EXPECT_EQ(nsac.arrangedObjects().first()->imageAttempts(), 2);
}

TEST_F(CaptureLoopTest, PausedTickDoesNothing)
{
    copyText(QStringLiteral("x"));
    capture->setPaused(true);
    tick();
    EXPECT_EQ(nsac.arrangedCount(), 0);
    EXPECT_TRUE(capture->title().isEmpty());
    capture->setPaused(false);
    tick();
    EXPECT_EQ(nsac.arrangedCount(), 1);
}

TEST_F(CaptureLoopTest, CaptureAndTickLinesHaveTheirFormat)
{
    const LoggingRules rules(QStringLiteral("quillstash.capture.debug=true\nquillstash.tick.debug=true"));
    pasteboard.setState({{plainType, "x"}, {stringType, "x"}, {QStringLiteral("public.html"), "x"}});
    tick();
    EXPECT_EQ(log.texts(QStringLiteral("quillstash.capture")),
              QStringList{QStringLiteral("captured 0 types: public.utf8-plain-text, NSStringPboardType, public.html")});
    const QStringList tickLines = log.texts(QStringLiteral("quillstash.tick"));
    ASSERT_EQ(tickLines.size(), 1);
    EXPECT_TRUE(QRegularExpression(QStringLiteral("^tick \\d{13,}$")).match(tickLines.first()).hasMatch())
        << qPrintable(tickLines.first());
}

TEST_F(CaptureLoopTest, LinesAreQuietByDefault)
{
    copyText(QStringLiteral("x"));
    tick();
    EXPECT_TRUE(log.messages().isEmpty());
}

// Throws from types() as often as it is told to.
class ThrowingPasteboard : public FakePasteboard
{
public:
    QStringList types() const override
    {
        if (throwsLeft > 0) {
            --throwsLeft;
            throw std::bad_alloc();
        }
        return FakePasteboard::types();
    }

    mutable int throwsLeft = 0;
};

class ThrowingCaptureTest : public CaptureLoopTest
{
protected:
    ThrowingPasteboard throwing;
    CaptureLoop loop{nsac, throwing, *registries, dock, *notices, *eventTimer, *recording, &fetcher};
};

TEST_F(ThrowingCaptureTest, ExceptionIsLoggedTheRestOfTheTickRunsAndTheCaptureIsRetried)
{
    addEntry(QStringLiteral("older"), QStringLiteral("0"));
    select(0);
    throwing.setText(QStringLiteral("new"));
    QSignalSpy current(&loop, &CaptureLoop::currentContentChanged);
    QSignalSpy typesSource(&loop, &CaptureLoop::typesSourceChanged);
    throwing.throwsLeft = 1;
    loop.MainTimer();

    EXPECT_EQ(log.warnings(), QStringList{QStringLiteral("default: exception catched")});
    log.clear();
    EXPECT_EQ(nsac.arrangedCount(), 1);
    // Steps after the failed capture inside the guard are skipped...
    EXPECT_EQ(nsac.arrangedObjects().first()->imageAttempts(), 0);
    EXPECT_EQ(typesSource.count(), 0);
    // ...the ones after it run.
    EXPECT_EQ(dock.badgeLabel(), QStringLiteral("1"));
    EXPECT_EQ(current.count(), 1);

    clock.advance(CaptureLoop::tickIntervalMs);
    loop.MainTimer();
    ASSERT_EQ(nsac.arrangedCount(), 2);
    EXPECT_EQ(nsac.arrangedObjects().last()->content(), QStringLiteral("new"));
}

} // namespace
