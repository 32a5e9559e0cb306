#pragma once

#include "platform/clock.h"

class FakeClock : public Clock
{
public:
    quint32 GetTickCount() const override { return m_now; }
    QDateTime date() const override { return m_date; }

    void set(quint32 now) { m_now = now; }
    void advance(quint32 ms) { m_now += ms; }
    void setDate(const QDateTime &date) { m_date = date; }

private:
    quint32 m_now = 1'000'000;
    QDateTime m_date = QDateTime(QDate(2026, 11, 24), QTime(21, 5, 9));
};
