#include "platform/x11/systemclock.h"

#include <sys/time.h>

quint32 SystemClock::GetTickCount() const
{
    timeval now{};
    gettimeofday(&now, nullptr);
    // The sum overflows 32 bits by design: callers compare unsigned differences.
    return static_cast<quint32>(static_cast<quint64>(now.tv_sec) * 1000u
                                + static_cast<quint64>(now.tv_usec) / 1000u);
}

QDateTime SystemClock::date() const
{
    return QDateTime::currentDateTime();
}
