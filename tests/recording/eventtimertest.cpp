#include "platform/fake/fakesoundplayer.h"
#include "recording/eventtimer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

TEST(EventTimer, playsEachSoundOnAThreadOfItsOwnWhileSoundsAreOn)
{
    FakeSoundPlayer player;
    std::atomic<bool> soundOn = true;
    std::atomic<int> gateCalls = 0;
    const std::thread::id mainThread = std::this_thread::get_id();
    std::atomic<bool> askedOnMainThread = false;
    EventTimer timer(player, [&] {
        ++gateCalls;
        if (std::this_thread::get_id() == mainThread)
            askedOnMainThread = true;
        return soundOn.load();
    });

    timer.setSoundName(QStringLiteral("Pop"));
    timer.setSoundName(QStringLiteral("Tink"));
    timer.waitForIdle();
    soundOn = false;
    timer.setSoundName(QStringLiteral("Bottle"));
    timer.waitForIdle();

    QStringList played = player.played();
    played.sort();
    EXPECT_EQ(played, (QStringList{QStringLiteral("Pop"), QStringLiteral("Tink")}));
    // The sound that was switched off still ran its thread and asked.
    EXPECT_EQ(gateCalls.load(), 3);
    EXPECT_FALSE(askedOnMainThread.load());
}

} // namespace
