#pragma once

#include "platform/soundplayer.h"

#include <QStringList>

#include <mutex>

// Records the sounds played; safe to call from the sound threads.
class FakeSoundPlayer : public SoundPlayer
{
public:
    void play(const QString &name) override
    {
        const std::lock_guard lock(m_mutex);
        m_played.append(name);
    }

    QStringList played() const
    {
        const std::lock_guard lock(m_mutex);
        return m_played;
    }

private:
    mutable std::mutex m_mutex;
    QStringList m_played;
};
