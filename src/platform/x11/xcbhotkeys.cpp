#include "platform/x11/xcbhotkeys.h"

#include "platform/x11/xcbpointer.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QList>

#include <xcb/xcb_keysyms.h>

#include <algorithm>
#include <array>
#include <utility>

namespace {

// Num Lock and Caps Lock change the state of every press: a grab covers the
// combination with each of them on as well.
constexpr quint16 numLockMask = XCB_MOD_MASK_2;
constexpr std::array<quint16, 4> lockVariants{0, XCB_MOD_MASK_LOCK, numLockMask, XCB_MOD_MASK_LOCK | numLockMask};

// Carbon virtual key codes name places on a US keyboard. For the keys the
// program uses, the letters and the digits of the main block, each has the
// symbol it types there and the X key code of that place (the same under the
// evdev and the older kbd key codes).
struct UsKey
{
    xcb_keysym_t keySym;
    xcb_keycode_t keyCode;
};

UsKey usKeyFor(quint32 carbonKeyCode)
{
    static const QHash<quint32, UsKey> keys{
        {0x00, {'a', 38}}, {0x01, {'s', 39}}, {0x02, {'d', 40}}, {0x03, {'f', 41}}, {0x04, {'h', 43}},
        {0x05, {'g', 42}}, {0x06, {'z', 52}}, {0x07, {'x', 53}}, {0x08, {'c', 54}}, {0x09, {'v', 55}},
        {0x0B, {'b', 56}}, {0x0C, {'q', 24}}, {0x0D, {'w', 25}}, {0x0E, {'e', 26}}, {0x0F, {'r', 27}},
        {0x10, {'y', 29}}, {0x11, {'t', 28}}, {0x12, {'1', 10}}, {0x13, {'2', 11}}, {0x14, {'3', 12}},
        {0x15, {'4', 13}}, {0x16, {'6', 15}}, {0x17, {'5', 14}}, {0x19, {'9', 18}}, {0x1A, {'7', 16}},
        {0x1C, {'8', 17}}, {0x1D, {'0', 19}}, {0x1F, {'o', 32}}, {0x20, {'u', 30}}, {0x22, {'i', 31}},
        {0x23, {'p', 33}}, {0x25, {'l', 46}}, {0x26, {'j', 44}}, {0x28, {'k', 45}}, {0x2D, {'n', 57}},
        {0x2E, {'m', 58}},
    };
    return keys.value(carbonKeyCode, UsKey{XCB_NO_SYMBOL, 0});
}

bool isLetterOrDigit(xcb_keysym_t keySym)
{
    return (keySym >= 'a' && keySym <= 'z') || (keySym >= '0' && keySym <= '9');
}

// The first event number of the XKEYBOARD extension, 0 without it. Qt's
// connection speaks XKB, and the server then tells it of a new layout with
// XKB's own events rather than the core MappingNotify.
quint8 xkbFirstEvent(xcb_connection_t *connection)
{
    static const char name[] = "XKEYBOARD";
    const XcbPtr<xcb_query_extension_reply_t> reply(
        xcb_query_extension_reply(connection, xcb_query_extension(connection, sizeof name - 1, name), nullptr));
    return reply && reply->present ? reply->first_event : 0;
}
constexpr quint8 xkbNewKeyboardNotify = 0, xkbMapNotify = 1;

// Qt's convention: Command is Ctrl, so option-command-1 is Ctrl+Alt+1.
quint16 x11Modifiers(quint32 carbonModifiers)
{
    quint16 mask = 0;
    if (carbonModifiers & 0x0100) // cmdKey
        mask |= XCB_MOD_MASK_CONTROL;
    if (carbonModifiers & 0x0200) // shiftKey
        mask |= XCB_MOD_MASK_SHIFT;
    if (carbonModifiers & 0x0800) // optionKey
        mask |= XCB_MOD_MASK_1;
    if (carbonModifiers & 0x1000) // controlKey
        mask |= XCB_MOD_MASK_4;
    return mask;
}

} // namespace

XcbHotKeys::XcbHotKeys()
{
    // Without an X connection (Qt's offscreen platform) no grab succeeds.
    if (QGuiApplication::platformName() != QLatin1String("xcb"))
        return;
    auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11 || !x11->connection())
        return;
    m_connection = x11->connection();
    m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    m_keySymbols = xcb_key_symbols_alloc(m_connection);
    m_xkbFirstEvent = xkbFirstEvent(m_connection);
    QCoreApplication::instance()->installNativeEventFilter(this);
}

XcbHotKeys::~XcbHotKeys()
{
    if (!m_connection)
        return;
    if (auto *app = QCoreApplication::instance())
        app->removeNativeEventFilter(this);
    for (const Grab &grab : std::as_const(m_grabs))
        ungrabKey(grab.keyCode, grab.modifiers);
    xcb_flush(m_connection);
    xcb_key_symbols_free(m_keySymbols);
}

std::optional<quint32> XcbHotKeys::grab(quint32 carbonKeyCode, quint32 carbonModifiers, quint32)
{
    // The handle alone names the grab in presses; X has no place for an id.
    if (!m_connection)
        return std::nullopt;
    const xcb_keycode_t keyCode = keyCodeFor(carbonKeyCode);
    const quint16 modifiers = x11Modifiers(carbonModifiers);
    // X lets a client grab what it already holds, so a combination taken a
    // second time is refused here, as the server refuses another client's:
    // the first registration stays the only one a press calls.
    if (keyCode == 0 || holds(keyCode, modifiers) || !grabKey(keyCode, modifiers))
        return std::nullopt;
    const quint32 handle = m_nextHandle++;
    m_grabs.insert(handle, Grab{carbonKeyCode, modifiers, keyCode});
    return handle;
}

void XcbHotKeys::ungrab(quint32 handle)
{
    const auto found = m_grabs.constFind(handle);
    if (found == m_grabs.constEnd())
        return;
    ungrabKey(found->keyCode, found->modifiers);
    xcb_flush(m_connection);
    m_grabs.erase(found);
}

// The key that types the combination's letter or digit in the current layout,
// on its own or with Shift: on a French keyboard the digits are the shifted
// symbols of the top row, and Ctrl+Alt+1 is that row's first key. Only the
// first such key is taken; the layouts tried carry each letter and digit on
// one key. A layout without Latin letters (Russian) keeps the US places, as
// long as the key there types no other letter or digit.
xcb_keycode_t XcbHotKeys::keyCodeFor(quint32 carbonKeyCode) const
{
    const UsKey usKey = usKeyFor(carbonKeyCode);
    if (usKey.keySym == XCB_NO_SYMBOL)
        return 0;
    const xcb_setup_t *setup = xcb_get_setup(m_connection);
    for (int level = 0; level < 2; ++level) {
        for (int keyCode = setup->min_keycode; keyCode <= setup->max_keycode; ++keyCode) {
            if (xcb_key_symbols_get_keysym(m_keySymbols, keyCode, level) == usKey.keySym)
                return keyCode;
        }
    }
    for (int level = 0; level < 2; ++level) {
        if (isLetterOrDigit(xcb_key_symbols_get_keysym(m_keySymbols, usKey.keyCode, level)))
            return 0;
    }
    return usKey.keyCode;
}

bool XcbHotKeys::holds(xcb_keycode_t keyCode, quint16 modifiers) const
{
    return std::any_of(m_grabs.cbegin(), m_grabs.cend(), [&](const Grab &grab) {
        return grab.keyCode == keyCode && grab.modifiers == modifiers;
    });
}

// Grabs the combination with every lock variant. Only a refusal of the plain
// combination refuses the whole: then the variants taken are given back.
bool XcbHotKeys::grabKey(xcb_keycode_t keyCode, quint16 modifiers) const
{
    std::array<xcb_void_cookie_t, lockVariants.size()> cookies;
    for (std::size_t i = 0; i < lockVariants.size(); ++i)
        cookies[i] = xcb_grab_key_checked(m_connection, 1, m_root, modifiers | lockVariants[i], keyCode,
                                          XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    std::array<bool, lockVariants.size()> taken;
    for (std::size_t i = 0; i < lockVariants.size(); ++i)
        taken[i] = !XcbPtr<xcb_generic_error_t>(xcb_request_check(m_connection, cookies[i]));
    if (taken[0])
        return true;
    // Given back before the refusal is reported: waiting for the server's
    // answer makes sure no other client finds the variants still taken.
    for (std::size_t i = 1; i < lockVariants.size(); ++i) {
        if (taken[i])
            XcbPtr<xcb_generic_error_t>(xcb_request_check(
                m_connection, xcb_ungrab_key_checked(m_connection, keyCode, m_root, modifiers | lockVariants[i])));
    }
    return false;
}

void XcbHotKeys::ungrabKey(xcb_keycode_t keyCode, quint16 modifiers) const
{
    if (keyCode == 0)
        return;
    for (const quint16 variant : lockVariants)
        xcb_ungrab_key(m_connection, keyCode, m_root, modifiers | variant);
}

bool XcbHotKeys::nativeEventFilter(const QByteArray &eventType, void *message, qintptr *)
{
    if (eventType != "xcb_generic_event_t")
        return false;
    auto *event = static_cast<xcb_generic_event_t *>(message);
    switch (event->response_type & ~0x80) {
    case XCB_KEY_PRESS: {
        const auto *press = static_cast<xcb_key_press_event_t *>(message);
        if (press->event != m_root)
            break;
        // Pointer buttons and the lock keys do not take part in the match.
        const quint16 state = press->state & 0xFF & ~(XCB_MOD_MASK_LOCK | numLockMask);
        for (auto it = m_grabs.cbegin(); it != m_grabs.cend(); ++it) {
            if (it->keyCode == press->detail && it->modifiers == state) {
                pressed(it.key());
                break;
            }
        }
        break;
    }
    case XCB_MAPPING_NOTIFY:
        if (static_cast<xcb_mapping_notify_event_t *>(message)->request == XCB_MAPPING_KEYBOARD)
            keyboardMappingChanged();
        break;
    default:
        // A layout switch (setxkbmap, the desktop's layout menu) arrives as
        // NewKeyboardNotify, a remapped key as MapNotify; the XKB event kind
        // is the second byte of every XKB event.
        if (m_xkbFirstEvent != 0 && event->response_type == m_xkbFirstEvent) {
            const quint8 xkbType = static_cast<const quint8 *>(message)[1];
            if (xkbType == xkbNewKeyboardNotify || xkbType == xkbMapNotify)
                keyboardMappingChanged();
        }
    }
    // Qt goes on handling every event, hot key or not.
    return false;
}

// A new layout or a remapped key moves the symbols to other key codes: grab
// each combination again where its key now is. Layouts swap keys (Y and Z in
// German), so every key that moves is let go before any is taken anew.
void XcbHotKeys::keyboardMappingChanged()
{
    xcb_key_symbols_free(m_keySymbols);
    m_keySymbols = xcb_key_symbols_alloc(m_connection);
    QList<std::pair<Grab *, xcb_keycode_t>> moved;
    for (Grab &grab : m_grabs) {
        const xcb_keycode_t keyCode = keyCodeFor(grab.carbonKeyCode);
        if (keyCode == grab.keyCode)
            continue;
        ungrabKey(grab.keyCode, grab.modifiers);
        grab.keyCode = 0;
        moved.append({&grab, keyCode});
    }
    for (const auto &[grab, keyCode] : moved) {
        if (keyCode != 0 && !holds(keyCode, grab->modifiers) && grabKey(keyCode, grab->modifiers))
            grab->keyCode = keyCode;
    }
    xcb_flush(m_connection);
}
