#pragma once

#include "platform/clock.h"

class SystemClock : public Clock
{
public:
    quint32 GetTickCount() const override;
    QDateTime date() const override;
};
