#include "app/ticktimer.h"

#include "platform/fake/fakeclock.h"
#include "platform/fake/fakedock.h"
#include "platform/fake/fakeloginitems.h"
#include "platform/fake/fakenoticeservice.h"
#include "platform/fake/fakeuserdefaults.h"
#include "recording/notices.h"
#include "settings/applicationregistries.h"

#include <gtest/gtest.h>

namespace {

// Ticks that capture on consecutive runs, each posting "Add to Table" after
// some work of its own; between runs the clock moves as far as the timer
// waits, as it does when the timer fires on time.
TEST(TickTimer, CapturesOnConsecutiveTicksEachGetTheirNotice)
{
    FakeClock clock;
    FakeNoticeService service;
    FakeDock dock;
    FakeUserDefaults defaults;
    FakeLoginItems loginItems;
    ApplicationRegistries registries(defaults, loginItems, QUrl());
    Notices notices(service, clock, dock, registries);
    notices.setUp();

    // Work before the notice, then after it, in ms: a slow first tick and
    // quick later ones is the worst case for a timer timed from tick starts.
    const struct { quint32 before, after; } runs[] = {{6, 2}, {0, 0}, {3, 40}, {0, 1}, {999, 0}, {0, 0}};
    int run = 0;
    TickTimer timer(clock, [&] {
        clock.advance(runs[run].before);
        notices.messageGrowl(QStringLiteral("Add to Table"), QString::number(run), Notices::AddPasteboardNotification);
        clock.advance(runs[run].after);
    }, [&] { return notices.lastSentAt(); });

    QList<int> waits;
    for (run = 0; run < int(std::size(runs)); ++run) {
        timer.fire();
        waits.append(timer.nextRunInMs());
        clock.advance(quint32(waits.last()));
    }
    EXPECT_EQ(service.sent().size(), int(std::size(runs))) << "a capture's notice was dropped as a repeat";
    // Each run starts at the later of one second after the last start and
    // 1001 ms after the last notice.
    EXPECT_EQ(waits, (QList<int>{999, 1001, 961, 1000, 1001, 1001}));
}

TEST(TickTimer, TickWithoutNoticeKeepsTheOneSecondRhythm)
{
    FakeClock clock;
    std::optional<quint32> lastNotice = clock.GetTickCount() - 10;
    TickTimer timer(clock, [&] { clock.advance(30); }, [&] { return lastNotice; });
    EXPECT_EQ(timer.nextRunInMs(), -1);
    timer.start();
    EXPECT_EQ(timer.nextRunInMs(), 1000);
    timer.fire();
    // A notice of before the run (a restore between ticks) holds nothing back.
    EXPECT_EQ(timer.nextRunInMs(), 970);
    timer.stop();
    EXPECT_EQ(timer.nextRunInMs(), -1);
    // A run longer than the interval is followed at once.
    TickTimer slow(clock, [&] { clock.advance(1500); }, [] { return std::nullopt; });
    slow.fire();
    EXPECT_EQ(slow.nextRunInMs(), 0);
}

} // namespace
