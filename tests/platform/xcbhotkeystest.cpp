#include "platform/x11/xcbhotkeys.h"

#include "platform/x11/xcbpointer.h"

#include <QAbstractNativeEventFilter>
#include <QGuiApplication>
#include <QProcess>
#include <QScopeGuard>
#include <QTest>

#include <xcb/xcb.h>

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <utility>

namespace {

constexpr quint32 carbon1 = 0x12, carbon2 = 0x13, carbonZ = 0x06, carbonY = 0x10;
constexpr quint32 optionCommand = 0x0900; // Ctrl+Alt here

void xdotool(const QStringList &arguments)
{
    ASSERT_EQ(QProcess::execute(QStringLiteral("xdotool"), arguments), 0);
}

// Switches the keyboard layout and waits until the hot keys have seen the
// switch: made before them, this filter sees each event after theirs.
struct LayoutSwitch : QAbstractNativeEventFilter
{
    LayoutSwitch() { QCoreApplication::instance()->installNativeEventFilter(this); }
    ~LayoutSwitch() override { QCoreApplication::instance()->removeNativeEventFilter(this); }
    bool nativeEventFilter(const QByteArray &, void *message, qintptr *) override
    {
        const auto *event = static_cast<const quint8 *>(message);
        seen = seen || ((event[0] & 0x7F) == xkb->first_event && event[1] == 0); // NewKeyboardNotify
        return false;
    }
    void to(const QString &layout)
    {
        seen = false;
        ASSERT_EQ(QProcess::execute(QStringLiteral("setxkbmap"), {layout}), 0);
        ASSERT_TRUE(QTest::qWaitFor([this] { return seen; }, 5000)) << qPrintable(layout);
    }

    xcb_connection_t *connection = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
    const XcbPtr<xcb_query_extension_reply_t> xkb{
        xcb_query_extension_reply(connection, xcb_query_extension(connection, 9, "XKEYBOARD"), nullptr)};
    bool seen = false;
};

// Another X client, on a connection of its own.
struct OtherClient
{
    // Ctrl+Alt and more on the key of that digit (US layout); false when the server refuses (BadAccess).
    bool grab(char digit, quint16 extraModifiers = 0)
    {
        const xcb_keycode_t keyCode = 10 + (digit - '1');
        const auto cookie = xcb_grab_key_checked(connection.get(), 1, xcb_setup_roots_iterator(xcb_get_setup(connection.get())).data->root,
                                                 XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | extraModifiers, keyCode,
                                                 XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        return !XcbPtr<xcb_generic_error_t>(xcb_request_check(connection.get(), cookie));
    }

    std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t *)> connection{xcb_connect(nullptr, nullptr), xcb_disconnect};
};

// Ctrl+Alt+Z, +Y and +1 stay on the keys that type Z, Y and 1 in German and French; Russian keeps the US places.
// A combination held elsewhere or twice is refused; Num Lock on still fires; an ungrab gives back the lock variants.
TEST(XcbHotKeys, GrabsFollowTheLayoutFireWithNumLockAndAreRefusedWhileHeldElsewhere)
{
    ASSERT_EQ(QGuiApplication::platformName(), "xcb") << "run under xvfb-run";
    OtherClient other;
    ASSERT_TRUE(other.grab('2'));
    LayoutSwitch layout;
    XcbHotKeys hotKeys;
    QList<quint32> presses;
    hotKeys.setPressHandler([&](quint32 handle) { presses.append(handle); });
    const auto pressOf = [&](quint32 handle) { return QTest::qWaitFor([&] { return presses.contains(handle); }, 5000); };
    EXPECT_FALSE(hotKeys.grab(carbon2, optionCommand, 0));
    EXPECT_TRUE(other.grab('2', XCB_MOD_MASK_2)) << "the Num Lock variant taken on the way is given back";
    const auto usAgain = qScopeGuard([] { QProcess::execute(QStringLiteral("setxkbmap"), {QStringLiteral("us")}); });
    const quint32 carbonKeys[] = {carbonZ, carbonY, carbon1};
    QList<quint32> handles;
    for (const quint32 carbonKey : carbonKeys)
        handles.append(hotKeys.grab(carbonKey, optionCommand, 0).value_or(0));
    ASSERT_FALSE(handles.contains(0));
    const std::pair<const char *, std::array<int, 3>> cases[] = { // the key codes of Z, Y and 1
        {"de", {29, 52, 10}}, {"fr", {25, 29, 10}}, {"ru", {52, 29, 10}}, {"us", {52, 29, 10}}};
    for (const auto &[name, keyCodes] : cases) {
        layout.to(QLatin1String(name));
        presses.clear();
        for (int i = 0; i < 3; ++i) {
            xdotool({QStringLiteral("key"), QStringLiteral("ctrl+alt+%1").arg(keyCodes[i])}); // a key code
            EXPECT_TRUE(pressOf(handles[i])) << name << " key " << keyCodes[i];
            EXPECT_FALSE(hotKeys.grab(carbonKeys[i], optionCommand, 1)) << name;
        }
        EXPECT_EQ(presses, handles) << name;
    }

    presses.clear();
    xdotool({QStringLiteral("key"), QStringLiteral("ctrl+alt+2"), QStringLiteral("alt+1")});
    xdotool({QStringLiteral("key"), QStringLiteral("Num_Lock")});
    const auto numLockOff = qScopeGuard([] { xdotool({QStringLiteral("key"), QStringLiteral("Num_Lock")}); });
    xdotool({QStringLiteral("key"), QStringLiteral("ctrl+alt+1")});
    EXPECT_TRUE(pressOf(handles[2]));
    EXPECT_EQ(presses, QList<quint32>{handles[2]}) << "other combinations, and releases, fire nothing";
    EXPECT_FALSE(other.grab('1', XCB_MOD_MASK_2));
    hotKeys.ungrab(handles[2]);
    EXPECT_TRUE(other.grab('1'));
    EXPECT_TRUE(other.grab('1', XCB_MOD_MASK_2 | XCB_MOD_MASK_LOCK));
    hotKeys.ungrab(handles[0]);
    EXPECT_TRUE(hotKeys.grab(carbonZ, optionCommand, 2));
}

} // namespace
