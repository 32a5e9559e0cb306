#include "app/hotkeyregistry.h"

#include "platform/fake/fakehotkeys.h"

#include <QTimer>

#include <gtest/gtest.h>

namespace {

constexpr quint32 keyF = 0x03, keyG = 0x05, key1 = 0x12;
constexpr quint64 optionCommand = 0x180000;

struct ModifierRow
{
    quint64 cocoa;
    quint32 carbon;
};

class HotKeyModifiers : public ::testing::TestWithParam<ModifierRow>
{
};

TEST_P(HotKeyModifiers, ReachTheDesktopAsCarbonModifiers)
{
    FakeHotKeys hotKeys;
    HotKeyRegistry registry(hotKeys);
    registry.registerHotKeyCode(keyF, GetParam().cocoa, nullptr, nullptr);
    EXPECT_EQ(hotKeys.grabs().constLast().modifiers, GetParam().carbon);
}

INSTANTIATE_TEST_SUITE_P(Table, HotKeyModifiers,
                         ::testing::Values(ModifierRow{0, 0}, ModifierRow{0x20000, 0x0200},
                                           ModifierRow{0x40000, 0x1000}, ModifierRow{0x80000, 0x0800},
                                           ModifierRow{0x100000, 0x0100}, ModifierRow{0x180000, 0x0900},
                                           ModifierRow{0x1A0000, 0x0B00},
                                           // caps lock, numeric pad, function key and device bits
                                           ModifierRow{0x1A0000 | 0x10000 | 0x200000 | 0x800000 | 0xFF, 0x0B00},
                                           ModifierRow{0x10000 | 0x800000, 0}));

TEST(HotKeyRegistry, RefusedRegistrationStoresNothingButUsesUpItsId)
{
    FakeHotKeys hotKeys;
    hotKeys.refuse(keyG, 0x0900);
    HotKeyRegistry registry(hotKeys);
    QTimer target;
    EXPECT_NE(registry.registerHotKeyCode(keyF, optionCommand, &target, "start"), 0u);
    EXPECT_EQ(registry.registerHotKeyCode(keyG, optionCommand, &target, "start"), 0u);
    EXPECT_EQ(registry.registerHotKeyCode(keyG, optionCommand, &target, "start"), 0u);
    EXPECT_EQ(registry.registeredKeys().size(), 1);
    registry.registerHotKeyCode(keyG, 0x100000, &target, "start");
    const quintptr ref = registry.registerHotKeyCode(key1, optionCommand, &target, "start");

    EXPECT_EQ(hotKeys.grabs().constLast(), (FakeHotKeys::Grab{key1, 0x0900, 4, quint32(ref)}));
    EXPECT_EQ(hotKeys.grabs().constFirst().hotKeyId, 0u);
    EXPECT_EQ(registry.registeredKeys().value(QString::asprintf("0x%x", unsigned(ref))).getHotKeyRef(), ref);
    hotKeys.press(quint32(ref));
    EXPECT_TRUE(target.isActive());
}

TEST(HotKeyRegistry, PressWithoutTargetOrSelectorOrAfterClearingDoesNothing)
{
    FakeHotKeys hotKeys;
    HotKeyRegistry registry(hotKeys);
    QTimer target;
    auto *gone = new QTimer;
    const quintptr noSelector = registry.registerHotKeyCode(keyF, optionCommand, &target, "");
    const quintptr noTarget = registry.registerHotKeyCode(keyG, optionCommand, nullptr, "start");
    const quintptr goneTarget = registry.registerHotKeyCode(key1, optionCommand, gone, "start");
    const quintptr unregistered = registry.registerHotKeyCode(key1, 0x1A0000, &target, "start");
    delete gone;
    registry.unregisterHotKey(unregistered);
    EXPECT_EQ(hotKeys.held().size(), 3);
    for (const quintptr ref : {noSelector, noTarget, goneTarget, unregistered})
        hotKeys.press(quint32(ref));
    EXPECT_FALSE(target.isActive());

    const quintptr cleared = registry.registerHotKeyCode(keyF, 0x1A0000, &target, "start");
    registry.clearAllHotKey();
    EXPECT_TRUE(hotKeys.held().isEmpty());
    EXPECT_TRUE(registry.registeredKeys().isEmpty());
    hotKeys.press(quint32(cleared));
    EXPECT_FALSE(target.isActive());
}

} // namespace
