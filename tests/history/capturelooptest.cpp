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
    for (int i = 0; i < 2; ++i) {
        pasteboard.setText(text);
        tick(2);
    }
    // A non-text state is named after its first type; unreadable data leaves no key.
    pasteboard.setState({{QStringLiteral("public.tiff"), "II*"}, {QStringLiteral("com.example.lazy"), QByteArray()}});
    tick();
    EXPECT_EQ(arranged(&contents::indexCount), QStringLiteral("0 1 2").split(u' '));
    EXPECT_EQ(arranged(), (QStringList{shown, shown, QStringLiteral("[ public.tiff ]")}));
    const Entry first = nsac.arrangedObjects().first(), image = nsac.arrangedObjects().last();
    EXPECT_EQ(first->types(), (QStringList{first->mainType(), stringType}));
    EXPECT_EQ(first->mainType(), plainType);
    EXPECT_EQ(first->datas().value(stringType), text.toUtf8());
    EXPECT_TRUE(first->hasSameDataTo(*nsac.arrangedObjects().at(1)));
    EXPECT_EQ(image->types().size(), 2);
    EXPECT_EQ(image->datas().keys(), QStringList{QStringLiteral("public.tiff")});
    // Each capture is announced with the entry's cut display string.
    const QString added = QStringLiteral("Add to Table");
    ASSERT_EQ(noticeService.titles(), (QStringList{QStringLiteral("Quillstash"), added, added, added}));
    EXPECT_EQ((QStringList{noticeService.sent().at(1).description, noticeService.sent().at(1).notificationName}),
              (QStringList{shown, QStringLiteral("AddPasteboardNotification")}));
}

TEST_F(CaptureLoopTest, OwnAndSecretWritesAreSkippedByTheTickButTakenByAManualCapture)
{
    const struct { const char *name; FakePasteboard::Item marker; bool skipped; } cases[] = {
        {"own", {QStringLiteral("quillstash.ignore"), {}}, true},
        {"concealed", {QStringLiteral("org.nspasteboard.ConcealedType"), {}}, true},
        {"kdeSecret", {QStringLiteral("x-kde-passwordManagerHint"), "secret"}, true},
        {"kdeOtherHint", {QStringLiteral("x-kde-passwordManagerHint"), "public"}, false},
    };
    tick(); // an empty pasteboard gives nothing, even by hand
    actions.paste();
    EXPECT_EQ(nsac.arrangedCount(), 0);
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        actions.removeAllObject();
        pasteboard.setState({{stringType, "pw"}, c.marker});
        tick();
        EXPECT_EQ(nsac.arrangedCount(), c.skipped ? 0 : 1);
        actions.paste();
        EXPECT_FALSE(capture.manualAdd());
        ASSERT_EQ(nsac.arrangedCount(), c.skipped ? 1 : 2);
        EXPECT_EQ(nsac.arrangedObjects().last()->types(), (QStringList{stringType, c.marker.type}));
    }
    EXPECT_EQ(sounds().count(QStringLiteral("Pop")), 5);
}

// The trim comes before the capture of its tick. The oldest go first by the
// number their sequence text starts with, not by row or by text; entries
// hidden by the filter neither count nor go.
TEST_F(CaptureLoopTest, AutoRemoveKeepsTheArrangedEntriesWithTheLargestNumbers)
{
    registries.setLimitNumber(5);
    for (int i = 0; i < 6; ++i) {
        pasteboard.setText(QStringLiteral("text %1").arg(i));
        tick();
    }
    EXPECT_EQ(nsac.arrangedCount(), 6);
    tick();
    EXPECT_EQ(arranged(&contents::indexCount), QStringLiteral("1 2 3 4 5").split(u' '));

    actions.removeAllObject();
    registries.setAutoRemove(false);
    registries.setLimitNumber(3);
    for (const QString &number : QStringLiteral("10 2x 9 zero").split(u' '))
        addEntry(QStringLiteral("shown ") + number, number);
    addEntry(QStringLiteral("hidden"), QStringLiteral("1"));
    nsac.setFilterString(QStringLiteral("shown"));
    tick();
    EXPECT_EQ(nsac.arrangedCount(), 4);
    registries.setAutoRemove(true);
    tick();
    EXPECT_EQ(arranged(&contents::indexCount), QStringLiteral("10 2x 9").split(u' '));
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
    EXPECT_EQ(nsac.arrangedCount(), 2);
    EXPECT_EQ((QStringList{dock.badgeLabel(), capture.title()}), (QStringList{"1", "Untitled.qs_backup"}));
    EXPECT_FALSE(actions.IsClean());
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

TEST_F(CaptureLoopTest, TypesTableShowsTheCurrentStateOfAnEmptyHistoryElseTheFirstSelectedEntry)
{
    QSignalSpy types(&capture, &CaptureLoop::typesSourceChanged);
    recording.setAutomaticRec(false);
    pasteboard.setState({{htmlType, "<b>"}});
    tick();
    ASSERT_EQ(types.count(), 1);
    EXPECT_EQ(types.takeFirst().first().toStringList(), QStringList{htmlType});
    addEntry(QStringLiteral("first"), QStringLiteral("0"), {{stringType, "a"}});
    addEntry(QStringLiteral("second"), QStringLiteral("1"), {{htmlType, "b"}, {stringType, "b"}});
    nsac.setSelectionIndexes({1, 0});
    tick();
    ASSERT_EQ(types.count(), 1);
    EXPECT_EQ(types.first().first().toStringList(), QStringList{stringType});
}

TEST_F(CaptureLoopTest, CurrentStateIsShownOnceThenOnEveryTickAfterAChange)
{
    const QString address = QStringLiteral("https://example.org/picture.png");
    pasteboard.setText(QStringLiteral("start"));
    QSignalSpy current(&capture, &CaptureLoop::currentContentChanged);
    tick(3);
    EXPECT_EQ(current.count(), 1);
    recording.setAutomaticRec(false);
    pasteboard.setText(address);
    tick(6);
    EXPECT_EQ(current.count(), 7);
    EXPECT_EQ(capture.currentContent()->content(), address);
    // An unchanged state keeps its entry: its picture is fetched once, in at most four attempts.
    EXPECT_EQ(fetcher.requestCount(), 1);
    EXPECT_EQ(capture.currentContent()->imageAttempts(), 4);

    // Switching recording on captures the state that changed while it was off.
    recording.setAutomaticRec(true);
    tick();
    EXPECT_EQ(arranged(), (QStringList{QStringLiteral("start"), address}));
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
