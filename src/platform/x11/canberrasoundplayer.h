#pragma once

#include "platform/soundplayer.h"

#include <atomic>

struct ca_context;

// Event sounds through libcanberra: the freedesktop sound theme first, then
// Quillstash's own file of the same name.
class CanberraSoundPlayer : public SoundPlayer
{
public:
    enum class Outcome { None, Theme, File, Failed };
    enum class Sources { ThemeThenOwnFiles, OwnFilesOnly };

    explicit CanberraSoundPlayer(Sources sources = Sources::ThemeThenOwnFiles);

    void play(const QString &name) override;

    // How the last play() went: which source started, or that none did.
    Outcome lastOutcome() const { return m_lastOutcome; }

    // The freedesktop event id a sound name maps to; empty for an unknown name.
    static QByteArray eventId(const QString &name);
    // Quillstash's own file for a sound name, or empty when it is not installed.
    static QString soundFile(const QString &name);

private:
    static ca_context *context();

    Sources m_sources;
    std::atomic<Outcome> m_lastOutcome = Outcome::None;
};
