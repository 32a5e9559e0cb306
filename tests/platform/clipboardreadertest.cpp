#include "platform/x11/clipboardreader.h"

#include "support/scriptedowner.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace {

using Answer = ScriptedOwner::Answer;
using Items = QList<PasteboardItem>;
using namespace std::chrono_literals;

// A reader whose owners get `timeout` of silence, with a spy on what it reads.
struct Reading
{
    explicit Reading(std::chrono::milliseconds timeout, qsizetype maxSnapshotBytes = qsizetype(512) << 20)
        : reader(nullptr, SelectionReader::Limits{timeout, qsizetype(256) << 20, maxSnapshotBytes})
        , spy((qRegisterMetaType<Items>(), &reader), &ClipboardReader::snapshotRead)
    {
        EXPECT_EQ(QGuiApplication::platformName(), "xcb") << "run under xvfb-run";
        clock.start();
    }
    // Milliseconds from the reader's start to its first state; -1 for none.
    qint64 awaitSnapshot()
    {
        return QTest::qWaitFor([&] { return !spy.isEmpty(); }, 10000) ? clock.elapsed() : -1;
    }
    Items last() const { return spy.last().at(0).value<Items>(); }

    ClipboardReader reader;
    QSignalSpy spy;
    QElapsedTimer clock;
};

// Owners that answer badly: what the state holds and when it comes. The
// reader reads the display Qt opened, whatever DISPLAY says by then.
TEST(ClipboardReader, StateOfAnOwnerThatAnswersBadly)
{
    const QByteArray big(60 * 1024, 'h');
    const struct
    {
        const char *what;
        QList<ScriptedOwner::Format> formats;
        bool targetsAsAtoms;
        qsizetype budget;
        Items items;
        qint64 minMs, maxMs;
        QByteArray notAsked;
    } rows[] = {
        {"hung", {{"text/html", Answer::Data, "<b>read</b>"}, {"application/x-silent", Answer::Silent, "late"},
          {"text/rtf", Answer::Data, "{\\rtf}"}, {"application/x-silent-too", Answer::Silent}},
         true, 1 << 20, {{"public.html", "<b>read</b>"}}, 900, 1900, "text/rtf"},
        {"refused", {{"text/html", Answer::Refuse}, {"text/rtf", Answer::Data, "{\\rtf kept}"}},
         true, 1 << 20, {{"public.rtf", "{\\rtf kept}"}}, 0, 500, {}},
        {"targets not atoms", {{"text/html", Answer::Data, "<b>html</b>"}}, false, 1 << 20, {}, 0, 500, "text/html"},
        {"over budget", {{"text/html", Answer::Data, big}, {"text/rtf", Answer::Data, QByteArray(60 * 1024, 'r')},
          {"application/x-small", Answer::Data, "small"}, {"application/x-huge", Answer::IncrStall, QByteArray(200 * 1024, 'x')}},
         true, 100 * 1024, {{"public.html", big}, {"application/x-small", "small"}}, 0, 500, {}},
    };
    const QByteArray display = qgetenv("DISPLAY");
    const auto restore = qScopeGuard([&] { qputenv("DISPLAY", display); });
    qputenv("DISPLAY", ":4711");
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        Reading reading(1000ms, row.budget);
        ScriptedOwner owner(row.formats, row.targetsAsAtoms, display);
        ASSERT_TRUE(owner.isOwner());
        const qint64 delay = reading.awaitSnapshot();
        EXPECT_GE(delay, row.minMs);
        EXPECT_LE(delay, row.maxMs);
        EXPECT_EQ(reading.last(), row.items);
        EXPECT_TRUE(row.notAsked.isEmpty() || owner.requests(row.notAsked) == 0) << "asked after the first silence";
        EXPECT_FALSE(owner.lateAnswerLanded()) << "an abandoned conversion's window still takes data";
    }
}

// The owner of an INCR transfer goes on sending after the clipboard changed
// hands: its chunks must reach neither the next state nor anything else.
TEST(ClipboardReader, OwnerChangeInTheMiddleOfIncrLeavesNoChunkBehind)
{
    Reading reading(5000ms);
    ScriptedOwner first({{"text/html", Answer::IncrStall, QByteArray(64 * 1024, 's')}});
    ASSERT_TRUE(first.isOwner());
    ASSERT_TRUE(QTest::qWaitFor([&] { return first.requests("text/html") == 1; }, 2000));
    QTest::qWait(100); // the first chunk is taken, the rest never comes
    ScriptedOwner second({{"text/html", Answer::Data, "<i>second</i>"}});
    ASSERT_TRUE(second.isOwner());
    EXPECT_LT(reading.awaitSnapshot(), 1000);
    EXPECT_EQ(reading.spy.size(), 1) << "the interrupted state was published";
    EXPECT_EQ(reading.last(), (Items{{"public.html", "<i>second</i>"}}));
    EXPECT_FALSE(first.lateAnswerLanded()) << "the abandoned transfer can still write where it wrote";
}

} // namespace
