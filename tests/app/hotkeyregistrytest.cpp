#include "app/hotkeyregistry.h"

#include "platform/fake/fakehotkeys.h"

#include <QTimer>

#include <gtest/gtest.h>

namespace {

constexpr quint32 keyF = 0x03, keyG = 0x05, key1 = 0x12;
constexpr quint64 optionCommand = 0x180000;

// Each modifier on its own; caps lock, numeric pad, function key and device bits are dropped.
TEST(HotKeyRegistry, ModifiersReachTheDesktopAsCarbonModifiers)
{
    const std::pair<quint64, quint32> rows[] = {{0, 0}, {0x20000, 0x0200}, {0x40000, 0x1000}, {0x80000, 0x0800},
                                                {0x100000, 0x0100}, {0x1A0000 | 0x10000 | 0x200000 | 0x800000 | 0xFF, 0x0B00}};
    FakeHotKeys hotKeys;
    HotKeyRegistry registry(hotKeys);
    for (const auto &[cocoa, carbon] : rows) {
        registry.registerHotKeyCode(keyF, cocoa, nullptr, nullptr);
        EXPECT_EQ(hotKeys.grabs().constLast().modifiers, carbon) << std::hex << cocoa;
    }
}

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
