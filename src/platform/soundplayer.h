#pragma once

#include <QString>

// Plays short named event sounds ("Pop", "Tink", ...). play() may be called
// from any thread and returns without waiting for the sound to end.
class SoundPlayer
{
public:
    virtual ~SoundPlayer() = default;

    virtual void play(const QString &name) = 0;
};
