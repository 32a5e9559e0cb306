#include "platform/fake/fakeloginitems.h"
#include "platform/fake/fakesoundplayer.h"
#include "platform/fake/fakeuserdefaults.h"
#include "recording/eventtimer.h"
#include "settings/applicationregistries.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

// The gate is the sound preference, as in the program, read on each sound's
// own thread while the preferences window may change it.
TEST(EventTimer, playsEachSoundOnAThreadOfItsOwnWhileSoundsAreOn)
{
    FakeSoundPlayer player;
    FakeUserDefaults defaults;
    FakeLoginItems loginItems;
    ApplicationRegistries registries(defaults, loginItems, QUrl());
    std::atomic<int> gateCalls = 0;
    const std::thread::id mainThread = std::this_thread::get_id();
    std::atomic<bool> askedOnMainThread = false;
    EventTimer timer(player, [&] {
        ++gateCalls;
        if (std::this_thread::get_id() == mainThread)
            askedOnMainThread = true;
        return registries.isSoundEnable();
    });

    timer.setSoundName(QStringLiteral("Pop"));
    timer.setSoundName(QStringLiteral("Tink"));
    timer.waitForIdle();
    registries.setSoundEnable(false);
    timer.setSoundName(QStringLiteral("Bottle"));
    timer.waitForIdle();

    QStringList played = player.played();
    played.sort();
    EXPECT_EQ(played, (QStringList{QStringLiteral("Pop"), QStringLiteral("Tink")}));
    // The sound that was switched off still ran its thread and asked.
    EXPECT_EQ(gateCalls.load(), 3);
    EXPECT_FALSE(askedOnMainThread.load());

    // Switched while sounds are starting, with the gate as the program has
    // it (scripts/tsan.sh runs this under ThreadSanitizer); each sound asks
    // when its thread runs, so the last switch holds for a sound after it.
    FakeSoundPlayer flipped;
    EventTimer plain(flipped, [&] { return registries.isSoundEnable(); });
    for (int i = 0; i < 200; ++i) {
        plain.setSoundName(QStringLiteral("Hero"));
        registries.setSoundEnable(i % 2 == 0);
    }
    plain.waitForIdle();
    plain.setSoundName(QStringLiteral("Purr"));
    plain.waitForIdle();
    EXPECT_FALSE(flipped.played().contains(QStringLiteral("Purr")));
}

} // namespace
