#include "historyfixture.h"

#include <QSignalSpy>

namespace {

const QString htmlType = QStringLiteral("public.html");

using CaptureLoopTest = HistoryFixture;

// Own and secret writes are skipped by the tick in the desktop tests, and captured by hand there.
TEST_F(CaptureLoopTest, EveryChangeIsCapturedWholeEvenARepeatAndTheBadgeAndTitleFollow)
{
    QSignalSpy scrolled(&capture, &CaptureLoop::scrollBottomRequested);
    recording.setAutomaticRec(true);
    tick(); // an empty pasteboard gives nothing, even by hand
    actions.paste();
    for (int i = 0; i < 2; ++i) {
        pasteboard.setText(QStringLiteral("again"));
        tick(2);
    }
    // A non-text state is named after its first type; unreadable data leaves no key.
    pasteboard.setState({{QStringLiteral("public.tiff"), "II*"}, {QStringLiteral("com.example.lazy"), QByteArray()}});
    tick();
    // The dock badge shows the count the tick began with.
    EXPECT_EQ((QStringList{dock.badgeLabel(), document.title()}), (QStringList{"2", "Untitled.qs_backup*"}));
    EXPECT_EQ(arranged(&contents::indexCount), QStringLiteral("0 1 2").split(u' '));
    EXPECT_EQ(nsac.arrangedObjects().at(2)->types().size(), 2);
    EXPECT_EQ(nsac.arrangedObjects().at(2)->datas().keys(), QStringList{QStringLiteral("public.tiff")});
    // Each capture is announced, with a sound, and scrolls the table.
    EXPECT_EQ(scrolled.count(), 3);
    EXPECT_EQ(noticesSent().size(), 4);
    EXPECT_EQ(sounds(), QStringList{"Hero"} + QStringList(3, "Pop"));

    // Saved, it is named after its file, marked only a tick after a count change; in the foreground the badge goes.
    document.setEStatus(0);
    document.setMyPath(QStringLiteral("/home/me/notes/history.qs_backup"));
    dock.setActive(true);
    tick();
    EXPECT_EQ((QStringList{dock.badgeLabel(), document.title()}), (QStringList{QString(), "history.qs_backup"}));
}

// The trim comes before the capture of its tick. The oldest go first by the number their
// sequence text starts with, not by row or by text; hidden entries neither count nor go.
TEST_F(CaptureLoopTest, AutoRemoveKeepsTheArrangedEntriesWithTheLargestNumbers)
{
    recording.setAutomaticRec(true);
    registries.setAutoRemove(false);
    registries.setLimitNumber(2);
    for (const QString &number : QStringLiteral("10 2x 9 zero").split(u' '))
        addEntry(QStringLiteral("shown ") + number, number);
    addEntry(QStringLiteral("hidden"), QStringLiteral("1"));
    nsac.setFilterString(QStringLiteral("shown"));
    tick();
    EXPECT_EQ(nsac.arrangedCount(), 4);
    registries.setAutoRemove(true);
    pasteboard.setText(QStringLiteral("shown new"));
    tick();
    EXPECT_EQ(arranged(&contents::indexCount), QStringLiteral("10 9 0").split(u' '));
}

// The types table shows the current state while the history is empty, else the first selected entry; idle ticks
// tell the views nothing, as they would repaint every second.
TEST_F(CaptureLoopTest, TypesFollowTheStateOrTheSelectionAndIdleTicksSendNothing)
{
    QSignalSpy types(&capture, &CaptureLoop::typesSourceChanged);
    pasteboard.setState({{htmlType, "<b>"}});
    tick(3);
    EXPECT_EQ(types, QList<QVariantList>{{QStringList{htmlType}}});
    const QString address = QStringLiteral("https://example.org/picture.png");
    pasteboard.setText(address);
    tick(6);
    // An unchanged state keeps its entry: its picture is asked for once.
    EXPECT_EQ(fetcher.requestCount(), 1);

    types.clear();
    addEntry(QStringLiteral("first"));
    addEntry(QStringLiteral("second"), QStringLiteral("1"), {htmlType, stringType});
    nsac.setSelectionIndexes({1, 0});
    tick();
    EXPECT_EQ(types, QList<QVariantList>{{QStringList{stringType}}});

    // Switching recording on captures the state that changed while it was off.
    recording.setAutomaticRec(true);
    tick();
    EXPECT_EQ(arranged(), (QStringList{QStringLiteral("first"), QStringLiteral("second"), address}));
}

TEST_F(CaptureLoopTest, ATickThatThrowsIsLoggedAndTheNextTickCapturesWhatItMissed)
{
    struct Throwing : FakePasteboard
    {
        QStringList types() const override { return std::exchange(once, false) ? throw std::bad_alloc() : FakePasteboard::types(); }
        mutable bool once = true;
    } throwing;
    recording.setAutomaticRec(true);
    CaptureLoop loop{nsac, document, throwing, registries, dock, notices, eventTimer, recording, &fetcher};
    throwing.setText(QStringLiteral("new"));
    loop.MainTimer();
    EXPECT_EQ(std::exchange(logged, {}), QStringList{QStringLiteral("default: exception catched")});
    loop.MainTimer();
    EXPECT_EQ(arranged(), QStringList{QStringLiteral("new")});
}

} // namespace
