#pragma once

#include <QDateTime>

class Clock
{
public:
    virtual ~Clock() = default;

    // Milliseconds of the wall-clock time of day (seconds * 1000 plus
    // microseconds / 1000), cut to 32 bits: it wraps, so only differences
    // taken as unsigned 32-bit numbers are meaningful.
    virtual quint32 GetTickCount() const = 0;
    // The current date and time, in local time.
    virtual QDateTime date() const = 0;
};
