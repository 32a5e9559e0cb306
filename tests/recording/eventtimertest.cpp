#include "support/recordingrig.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

// Each sound asks the sound preference on its own thread, when it runs, while
// the preferences window may be switching it (scripts/tsan.sh runs this
// under ThreadSanitizer).
TEST(EventTimer, EachSoundAsksThePreferenceOnItsOwnThread)
{
    RecordingRig rig;
    const std::thread::id mainThread = std::this_thread::get_id();
    std::atomic<int> askedOnMainThread = 0;
    EventTimer timer(rig.soundPlayer, [&] {
        askedOnMainThread += std::this_thread::get_id() == mainThread;
        return rig.registries.isSoundEnable();
    });
    timer.setSoundName(QStringLiteral("Pop"));
    timer.setSoundName(QStringLiteral("Tink"));
    timer.waitForIdle();
    rig.registries.setSoundEnable(false);
    timer.setSoundName(QStringLiteral("Bottle"));
    timer.waitForIdle();
    EXPECT_EQ(rig.sounds(), (QStringList{QStringLiteral("Pop"), QStringLiteral("Tink")}));
    EXPECT_EQ(askedOnMainThread.load(), 0);

    for (int i = 0; i < 200; ++i) {
        rig.eventTimer.setSoundName(QStringLiteral("Hero"));
        rig.registries.setSoundEnable(i % 2 == 0);
    }
    rig.eventTimer.waitForIdle();
    rig.eventTimer.setSoundName(QStringLiteral("Purr"));
    EXPECT_FALSE(rig.sounds().contains(QStringLiteral("Purr"))) << "the last switch did not hold";
}

} // namespace
