#include "platform/x11/systemclock.h"

#include <QDateTime>

#include <gtest/gtest.h>

namespace {

// The tick is the wall clock in milliseconds, wrapped to 32 bits; compare the
// unsigned difference so the test holds across a wrap.
TEST(SystemClock, TicksAreWallClockMillisecondsCutTo32Bits)
{
    const SystemClock clock;
    const quint32 before = static_cast<quint32>(QDateTime::currentMSecsSinceEpoch());
    const quint32 tick = clock.GetTickCount();
    const quint32 after = static_cast<quint32>(QDateTime::currentMSecsSinceEpoch());

    EXPECT_LE(quint32(tick - before), quint32(after - before));
}

} // namespace
