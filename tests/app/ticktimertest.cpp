#include "app/ticktimer.h"

#include "platform/fake/fakeclock.h"
#include "platform/fake/fakenoticeservice.h"
#include "recording/notices.h"
#include "support/recordingrig.h"

#include <gtest/gtest.h>

namespace {

// Runs that each post "Add to Table" after some work of their own; between
// runs the clock moves as far as the timer waits, as when it fires on time.
// Each run starts at the later of one second after the last start and 1001
// ms after the last notice, so that no notice is taken for a repeat.
TEST(TickTimer, CapturesOnConsecutiveTicksEachGetTheirNotice)
{
    RecordingRig rig;
    // Work before and after the notice, in ms: a slow tick followed by a quick
    // one is the worst case for a timer timed from tick starts.
    const struct { quint32 before, after; } runs[] = {{6, 2}, {0, 0}, {3, 40}, {0, 1}, {999, 0}, {0, 0}};
    int run = 0;
    TickTimer timer(rig.clock, [&] {
        rig.clock.advance(runs[run].before);
        rig.notices.messageGrowl(QStringLiteral("Add to Table"), QString(), Notices::AddPasteboardNotification);
        rig.clock.advance(runs[run].after);
    }, [&] { return rig.notices.lastSentAt(); });
    QList<int> waits;
    for (run = 0; run < int(std::size(runs)); ++run) {
        timer.fire();
        waits.append(timer.nextRunInMs());
        rig.clock.advance(quint32(waits.last()));
    }
    EXPECT_EQ(rig.noticeService.sent().size(), int(std::size(runs))) << "a capture's notice was dropped as a repeat";
    EXPECT_EQ(waits, (QList<int>{999, 1001, 961, 1000, 1001, 1001}));
}

TEST(TickTimer, TickWithoutNoticeKeepsTheOneSecondRhythm)
{
    FakeClock clock;
    // A notice of before the run (a restore between ticks) holds nothing back.
    const std::optional<quint32> earlierNotice = clock.GetTickCount() - 10;
    quint32 runMs = 30;
    TickTimer timer(clock, [&] { clock.advance(runMs); }, [&] { return earlierNotice; });
    EXPECT_EQ(timer.nextRunInMs(), -1);
    timer.start();
    EXPECT_EQ(timer.nextRunInMs(), 1000);
    timer.fire();
    EXPECT_EQ(timer.nextRunInMs(), 970);
    runMs = 1500; // a run longer than the interval is followed at once
    timer.fire();
    EXPECT_EQ(timer.nextRunInMs(), 0);
    timer.stop();
    EXPECT_EQ(timer.nextRunInMs(), -1);
}

} // namespace
