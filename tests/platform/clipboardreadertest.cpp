#include "platform/x11/clipboardreader.h"

#include "support/scriptedowner.h"

#include <QElapsedTimer>
#include <QScopeGuard>
#include <QGuiApplication>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <future>

namespace {

using Answer = ScriptedOwner::Answer;
using namespace std::chrono_literals;

constexpr auto shortTimeout = 1000ms;

QList<PasteboardItem> lastSnapshot(const QSignalSpy &spy)
{
    return spy.last().at(0).value<QList<PasteboardItem>>();
}

class ClipboardReaderTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(QGuiApplication::platformName(), "xcb") << "run under xvfb-run";
        qRegisterMetaType<QList<PasteboardItem>>();
    }

    // A reader whose owners get `timeout` of silence, and a spy on what it reads.
    void startReader(std::chrono::milliseconds timeout, qsizetype maxSnapshotBytes = qsizetype(512) << 20)
    {
        SelectionReader::Limits limits;
        limits.ownerTimeout = timeout;
        limits.maxSnapshotBytes = maxSnapshotBytes;
        reader = std::make_unique<ClipboardReader>(nullptr, limits);
        spy = std::make_unique<QSignalSpy>(reader.get(), &ClipboardReader::snapshotRead);
    }
    // Waits for the snapshot of an owner that took the clipboard after the
    // reader started; its time from now.
    qint64 awaitSnapshot(int timeoutMs = 10000)
    {
        QElapsedTimer clock;
        clock.start();
        EXPECT_TRUE(QTest::qWaitFor([&] { return !spy->isEmpty(); }, timeoutMs)) << "no snapshot";
        return clock.elapsed();
    }

    std::unique_ptr<ClipboardReader> reader;
    std::unique_ptr<QSignalSpy> spy;
};

// One budget of silence for all the formats of an owner: after its first
// time-out the rest are not even asked for, what arrived is published, and
// the late answer finds no window to land in.
TEST_F(ClipboardReaderTest, HungOwnerHoldsTheSnapshotBackOneTimeOutAndNoLonger)
{
    startReader(shortTimeout);
    ScriptedOwner owner({{"text/html", Answer::Data, "<b>read</b>"},
                         {"application/x-first-silent", Answer::Silent, "late"},
                         {"text/rtf", Answer::Data, "{\\rtf never asked}"},
                         {"application/x-second-silent", Answer::Silent, "late"}});
    ASSERT_TRUE(owner.isOwner());
    const qint64 delay = awaitSnapshot();
    EXPECT_GE(delay, 900);
    EXPECT_LT(delay, 1900) << "the silent formats were waited for one by one";
    EXPECT_EQ(lastSnapshot(*spy), (QList<PasteboardItem>{{"public.html", "<b>read</b>"}}));
    EXPECT_EQ(owner.requests("text/rtf"), 0);
    EXPECT_EQ(owner.requests("application/x-second-silent"), 0);
    EXPECT_FALSE(owner.answerLate()) << "the abandoned conversion's window still takes data";
}

TEST_F(ClipboardReaderTest, RefusalCountsWhateverTimeItCarries)
{
    startReader(3000ms);
    ScriptedOwner owner({{"text/html", Answer::Refuse}, {"text/rtf", Answer::Data, "{\\rtf kept}"}});
    ASSERT_TRUE(owner.isOwner());
    EXPECT_LT(awaitSnapshot(), 1500) << "the refusal was waited out";
    EXPECT_EQ(lastSnapshot(*spy), (QList<PasteboardItem>{{"public.rtf", "{\\rtf kept}"}}));
}

TEST_F(ClipboardReaderTest, TargetListThatIsNoListOfAtomsReadsNothing)
{
    startReader(shortTimeout);
    ScriptedOwner owner({{"text/html", Answer::Data, "<b>html</b>"}}, false);
    ASSERT_TRUE(owner.isOwner());
    EXPECT_LT(awaitSnapshot(), 900);
    EXPECT_TRUE(lastSnapshot(*spy).isEmpty());
    EXPECT_EQ(owner.requests("text/html"), 0);
}

// The owner of an INCR transfer goes on sending after the clipboard changed
// hands: its chunks must reach neither the next state nor anything else.
TEST_F(ClipboardReaderTest, OwnerChangeInTheMiddleOfIncrLeavesNoChunkBehind)
{
    startReader(5000ms);
    const QByteArray stalled(64 * 1024, 's');
    auto first = std::make_unique<ScriptedOwner>(QList<ScriptedOwner::Format>{{"text/html", Answer::IncrStall, stalled}});
    ASSERT_TRUE(first->isOwner());
    ASSERT_TRUE(QTest::qWaitFor([&] { return first->requests("text/html") == 1; }, 2000));
    QTest::qWait(100); // the first chunk is taken, the rest never comes
    ScriptedOwner second({{"text/html", Answer::Data, "<i>second</i>"}});
    ASSERT_TRUE(second.isOwner());
    EXPECT_LT(awaitSnapshot(), 1000);
    EXPECT_EQ(spy->size(), 1) << "the interrupted state was published";
    EXPECT_EQ(lastSnapshot(*spy), (QList<PasteboardItem>{{"public.html", "<i>second</i>"}}));
    EXPECT_FALSE(first->answerLate()) << "the abandoned transfer can still write where it wrote";
}

// A snapshot holds at most its budget: a format that would pass it is left
// out, and smaller ones after it still fit.
TEST_F(ClipboardReaderTest, FormatThatWouldPassTheSnapshotBudgetIsLeftOut)
{
    startReader(shortTimeout, 100 * 1024);
    ScriptedOwner owner({{"text/html", Answer::Data, QByteArray(60 * 1024, 'h')},
                         {"text/rtf", Answer::Data, QByteArray(60 * 1024, 'r')},
                         {"application/x-small", Answer::Data, "small"},
                         {"application/x-announced-huge", Answer::IncrStall, QByteArray(200 * 1024, 'x')}});
    ASSERT_TRUE(owner.isOwner());
    EXPECT_LT(awaitSnapshot(), 900) << "an announced size beyond the budget was not refused at once";
    const QList<PasteboardItem> items = lastSnapshot(*spy);
    ASSERT_EQ(items.size(), 2);
    EXPECT_EQ(items[0], (PasteboardItem{"public.html", QByteArray(60 * 1024, 'h')}));
    EXPECT_EQ(items[1], (PasteboardItem{"application/x-small", "small"}));
}

TEST_F(ClipboardReaderTest, ReadsTheDisplayQtOpenedWhateverDisplaySaysNow)
{
    const QByteArray display = qgetenv("DISPLAY");
    const auto restore = qScopeGuard([&] { qputenv("DISPLAY", display); });
    qputenv("DISPLAY", ":4711");
    startReader(shortTimeout);
    ScriptedOwner owner({{"text/html", Answer::Data, "<p>here</p>"}}, true, display);
    ASSERT_TRUE(owner.isOwner());
    awaitSnapshot(3000);
    ASSERT_FALSE(spy->isEmpty());
    EXPECT_EQ(lastSnapshot(*spy), (QList<PasteboardItem>{{"public.html", "<p>here</p>"}}));
}

// With no file descriptor left for its wake-up, or one left for the wake-up
// but none for its connection, the reader reads nothing and still goes at
// once when the program quits.
TEST_F(ClipboardReaderTest, ReaderWithoutWakeUpOrConnectionStopsWithoutHanging)
{
    // The lowest free descriptor: a new one gets that number.
    const int lowestFree = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ASSERT_GE(lowestFree, 0);
    ::close(lowestFree);
    rlimit saved{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &saved), 0);
    for (const int spare : {0, 1}) {
        SCOPED_TRACE(spare ? "no connection" : "no wake-up");
        rlimit lowered = saved;
        lowered.rlim_cur = rlim_t(lowestFree + spare);
        ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &lowered), 0);
        auto made = std::make_unique<ClipboardReader>();
        // Its thread has failed by now, or never started.
        QTest::qWait(200);
        ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &saved), 0);
        // Destroyed on a thread of its own, so that a hang fails the test
        // instead of stopping the suite.
        auto gone = std::make_shared<std::promise<void>>();
        std::thread([reader = made.release(), gone] {
            delete reader;
            gone->set_value();
        }).detach();
        EXPECT_EQ(gone->get_future().wait_for(5s), std::future_status::ready) << "the reader hung the quit";
    }
}

} // namespace
