#include "platform/x11/xcbhotkeys.h"

#include "platform/x11/xcbpointer.h"

#include <QCoreApplication>
#include <QGuiApplication>

#include <xcb/xcb_keysyms.h>

#include <array>

namespace {

// Num Lock and Caps Lock change the state of every press: a grab covers the
// combination with each of them on as well.
constexpr quint16 numLockMask = XCB_MOD_MASK_2;
constexpr std::array<quint16, 4> lockVariants{0, XCB_MOD_MASK_LOCK, numLockMask, XCB_MOD_MASK_LOCK | numLockMask};

// Carbon virtual key codes of the US layout, for the keys the program uses:
// the letters and the digits of the main block.
xcb_keysym_t keySymFor(quint32 carbonKeyCode)
{
    static const QHash<quint32, xcb_keysym_t> keySyms{
        {0x00, 'a'}, {0x01, 's'}, {0x02, 'd'}, {0x03, 'f'}, {0x04, 'h'}, {0x05, 'g'}, {0x06, 'z'},
        {0x07, 'x'}, {0x08, 'c'}, {0x09, 'v'}, {0x0B, 'b'}, {0x0C, 'q'}, {0x0D, 'w'}, {0x0E, 'e'},
        {0x0F, 'r'}, {0x10, 'y'}, {0x11, 't'}, {0x12, '1'}, {0x13, '2'}, {0x14, '3'}, {0x15, '4'},
        {0x16, '6'}, {0x17, '5'}, {0x19, '9'}, {0x1A, '7'}, {0x1C, '8'}, {0x1D, '0'}, {0x1F, 'o'},
        {0x20, 'u'}, {0x22, 'i'}, {0x23, 'p'}, {0x25, 'l'}, {0x26, 'j'}, {0x28, 'k'}, {0x2D, 'n'},
        {0x2E, 'm'},
    };
    return keySyms.value(carbonKeyCode, XCB_NO_SYMBOL);
}

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
    if (keyCode == 0 || !grabKey(keyCode, modifiers))
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

xcb_keycode_t XcbHotKeys::keyCodeFor(quint32 carbonKeyCode) const
{
    const xcb_keysym_t keySym = keySymFor(carbonKeyCode);
    if (keySym == XCB_NO_SYMBOL)
        return 0;
    const XcbPtr<xcb_keycode_t> keyCodes(xcb_key_symbols_get_keycode(m_keySymbols, keySym));
    return keyCodes ? keyCodes.get()[0] : 0; // the list ends with XCB_NO_SYMBOL (0)
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
    for (std::size_t i = 1; i < lockVariants.size(); ++i) {
        if (taken[i])
            xcb_ungrab_key(m_connection, keyCode, m_root, modifiers | lockVariants[i]);
    }
    xcb_flush(m_connection);
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
        keyboardMappingChanged(message);
        break;
    }
    // Qt goes on handling every event, hot key or not.
    return false;
}

// A new layout or a remapped key moves the symbols to other key codes: grab
// each combination again where its key now is.
void XcbHotKeys::keyboardMappingChanged(void *event)
{
    auto *notify = static_cast<xcb_mapping_notify_event_t *>(event);
    if (notify->request == XCB_MAPPING_POINTER)
        return;
    xcb_refresh_keyboard_mapping(m_keySymbols, notify);
    for (Grab &grab : m_grabs) {
        const xcb_keycode_t keyCode = keyCodeFor(grab.carbonKeyCode);
        if (keyCode == grab.keyCode)
            continue;
        ungrabKey(grab.keyCode, grab.modifiers);
        grab.keyCode = keyCode != 0 && grabKey(keyCode, grab.modifiers) ? keyCode : 0;
    }
    xcb_flush(m_connection);
}
