#pragma once

#include <QObject>
#include <QTimer>

#include <functional>
#include <optional>

class Clock;

// Runs the one-second tick. Each run is timed from the start of the one
// before, and never comes so soon after a notice of the previous run that
// the same notice of this run would be taken for a repeat and dropped: two
// captures on consecutive ticks each get their "Add to Table". Timer jitter
// of a millisecond, or a tick that posts its notice later than the next one,
// is enough to break that with a plain repeating timer.
class TickTimer : public QObject
{
    Q_OBJECT

public:
    static constexpr int intervalMs = 1000;
    // When the last notice was sent, on the notices' clock; none yet: nullopt.
    using LastNotice = std::function<std::optional<quint32>()>;

    TickTimer(Clock &clock, std::function<void()> tick, LastNotice lastNotice, QObject *parent = nullptr);

    // The first run comes one interval from now.
    void start();
    void stop();
    // One run now, then the next one scheduled; the timer calls it.
    void fire();
    // How long the next run waits; -1 while stopped.
    int nextRunInMs() const { return m_timer.isActive() ? m_timer.interval() : -1; }

private:
    Clock &m_clock;
    std::function<void()> m_tick;
    LastNotice m_lastNotice;
    QTimer m_timer;
};
