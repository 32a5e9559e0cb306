#pragma once

#include <QString>

#include <condition_variable>
#include <functional>
#include <mutex>

class SoundPlayer;

// Plays event sounds, each on a short-lived thread of its own, so that the
// sound system never holds up the tick.
class EventTimer
{
public:
    // Asked on the sound's thread, just before it plays.
    using SoundGate = std::function<bool()>;

    EventTimer(SoundPlayer &player, SoundGate useSound);
    ~EventTimer();
    EventTimer(const EventTimer &) = delete;
    EventTimer &operator=(const EventTimer &) = delete;

    // Starts the named sound now (the name is historical).
    void setSoundName(const QString &name);
    // Blocks until every sound thread started so far has ended.
    void waitForIdle();

private:
    void play(const QString &name);

    SoundPlayer &m_player;
    SoundGate m_useSound;
    std::mutex m_mutex;
    std::condition_variable m_idle;
    int m_running = 0;
};
