#pragma once

#include "platform/clock.h"

class FakeClock : public Clock
{
public:
    quint32 GetTickCount() const override { return m_now; }

    void set(quint32 now) { m_now = now; }
    void advance(quint32 ms) { m_now += ms; }

private:
    quint32 m_now = 1'000'000;
};
