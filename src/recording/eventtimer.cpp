#include "recording/eventtimer.h"

#include "platform/soundplayer.h"

#include <thread>

EventTimer::EventTimer(SoundPlayer &player, SoundGate useSound)
    : m_player(player)
    , m_useSound(std::move(useSound))
{
}

EventTimer::~EventTimer()
{
    // Sound threads use this object; they must be gone before it is.
    waitForIdle();
}

void EventTimer::setSoundName(const QString &name)
{
    {
        const std::lock_guard lock(m_mutex);
        ++m_running;
    }
    std::thread([this, name] {
        play(name);
        const std::lock_guard lock(m_mutex);
        if (--m_running == 0)
            m_idle.notify_all();
    }).detach();
}

void EventTimer::waitForIdle()
{
    std::unique_lock lock(m_mutex);
    m_idle.wait(lock, [this] { return m_running == 0; });
}

void EventTimer::play(const QString &name)
{
    if (!m_useSound || !m_useSound())
        return;
    m_player.play(name);
}
