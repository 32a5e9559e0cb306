#include "app/ticktimer.h"

#include "platform/clock.h"
#include "recording/notices.h"

#include <algorithm>

namespace {

// A millisecond more than the repeat window, plus one for the timer's clock
// running a little apart from the notices' wall clock.
constexpr qint64 noticeSpacingMs = qint64(Notices::repeatWindowMs) + 2;

} // namespace

TickTimer::TickTimer(Clock &clock, std::function<void()> tick, LastNotice lastNotice, QObject *parent)
    : QObject(parent)
    , m_clock(clock)
    , m_tick(std::move(tick))
    , m_lastNotice(std::move(lastNotice))
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &TickTimer::fire);
}

void TickTimer::start()
{
    m_timer.start(intervalMs);
}

void TickTimer::stop()
{
    m_timer.stop();
}

void TickTimer::fire()
{
    const quint32 started = m_clock.GetTickCount();
    const std::optional<quint32> noticeBefore = m_lastNotice();
    m_tick();
    const quint32 now = m_clock.GetTickCount();
    // Differences of the wrapping clock, as unsigned 32-bit numbers.
    const qint64 ran = quint32(now - started);
    qint64 delay = std::clamp<qint64>(intervalMs - ran, 0, intervalMs);
    const std::optional<quint32> notice = m_lastNotice();
    if (notice && notice != noticeBefore) {
        const qint64 sinceNotice = quint32(now - *notice);
        delay = std::max(delay, noticeSpacingMs - sinceNotice);
    }
    m_timer.start(int(delay));
}
