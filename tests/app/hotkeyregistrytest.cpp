#include "app/hotkeyregistry.h"

#include "platform/fake/fakehotkeys.h"

#include <QTimer>

#include <gtest/gtest.h>

namespace {

constexpr quint32 keyF = 0x03, keyG = 0x05, key1 = 0x12;
constexpr quint64 optionCommand = 0x180000;

// A press starts the target's slot, unless the grab was refused, the target or slot is missing, or the key is gone.
TEST(HotKeyRegistry, PressReachesOnlyARegisteredTargetAndSlot)
{
    FakeHotKeys hotKeys;
    hotKeys.refuse(keyG, 0x0900);
    HotKeyRegistry registry(hotKeys);
    QTimer target;
    auto *gone = new QTimer;
    EXPECT_EQ(registry.registerHotKeyCode(keyG, optionCommand, &target, "start"), 0u);
    const quintptr noSelector = registry.registerHotKeyCode(keyF, optionCommand, &target, "");
    const quintptr noTarget = registry.registerHotKeyCode(keyG, 0x100000, nullptr, "start");
    const quintptr goneTarget = registry.registerHotKeyCode(key1, optionCommand, gone, "start");
    const quintptr unregistered = registry.registerHotKeyCode(key1, 0x1A0000, &target, "start");
    delete gone;
    registry.unregisterHotKey(unregistered);
    EXPECT_EQ(hotKeys.held().size(), 3);
    EXPECT_EQ(hotKeys.grabs().at(4).hotKeyId, 4u) << "refused registrations use up their ids too";
    for (const quintptr ref : {noSelector, noTarget, goneTarget, unregistered})
        hotKeys.press(quint32(ref));
    EXPECT_FALSE(target.isActive());

    const quintptr working = registry.registerHotKeyCode(keyF, 0x1A0000, &target, "start");
    hotKeys.press(quint32(working));
    EXPECT_TRUE(target.isActive());
    target.stop();
    registry.clearAllHotKey();
    EXPECT_TRUE(hotKeys.held().isEmpty());
    hotKeys.press(quint32(working));
    EXPECT_FALSE(target.isActive());
}

} // namespace
