#include "support/recordingrig.h"

#include <gtest/gtest.h>

#include <thread>

// Each sound asks the sound preference on its own thread, when it runs, while the preferences window may be switching
// it (scripts/tsan.sh runs this under ThreadSanitizer).
TEST(EventTimer, EachSoundAsksThePreferenceOnItsOwnThread)
{
    RecordingRig rig;
    const std::thread::id mainThread = std::this_thread::get_id();
    std::atomic<int> askedOnMainThread = 0;
    EventTimer timer(rig.soundPlayer, [&] {
        askedOnMainThread += std::this_thread::get_id() == mainThread;
        return rig.registries.isSoundEnable();
    });
    for (int i = 0; i < 200; ++i) {
        timer.setSoundName(QStringLiteral("Hero"));
        rig.registries.setSoundEnable(i % 2 == 0);
    }
    timer.waitForIdle();
    timer.setSoundName(QStringLiteral("Purr"));
    timer.waitForIdle();
    rig.registries.setSoundEnable(true);
    timer.setSoundName(QStringLiteral("Pop"));
    timer.waitForIdle();
    EXPECT_TRUE(rig.soundPlayer.played().contains(QStringLiteral("Pop")));
    EXPECT_FALSE(rig.soundPlayer.played().contains(QStringLiteral("Purr"))) << "played with sounds off";
    EXPECT_EQ(askedOnMainThread.load(), 0);
}
