#include "app/ticktimer.h"

#include "recording/notices.h"
#include "support/recordingrig.h"

#include <gtest/gtest.h>

namespace {

// Each run starts a second after the last start, but never within 1001 ms of a notice the
// last run posted, so that none is taken for a repeat; a notice from before the last run
// (a restore between ticks) holds nothing back. The clock moves as far as the timer waits.
TEST(TickTimer, CapturesOnConsecutiveTicksEachGetTheirNotice)
{
    RecordingRig rig;
    // Work before and after the notice, in ms: a slow tick then a quick one is the worst case.
    const struct { quint32 before, after; bool notice; } runs[] = {
        {6, 2, true}, {0, 0, true}, {3, 40, true}, {0, 1, true}, {999, 0, true}, {0, 0, true}, {0, 30, false},
        {1500, 0, false}};
    int run = 0;
    TickTimer timer(rig.clock, [&] {
        rig.clock.advance(runs[run].before);
        if (runs[run].notice)
            rig.notices.messageGrowl(QStringLiteral("Add to Table"), QString(), Notices::AddPasteboardNotification);
        rig.clock.advance(runs[run].after);
    }, [&] { return rig.notices.lastSentAt(); });
    timer.start();
    EXPECT_EQ(timer.nextRunInMs(), 1000);
    QList<int> waits;
    for (run = 0; run < int(std::size(runs)); ++run) {
        timer.fire();
        waits.append(timer.nextRunInMs());
        rig.clock.advance(quint32(waits.last()));
    }
    EXPECT_EQ(rig.noticeService.sent().size(), 6) << "a capture's notice was dropped as a repeat";
    EXPECT_EQ(waits, (QList<int>{999, 1001, 961, 1000, 1001, 1001, 970, 0}));
}

} // namespace
