#pragma once

#include "platform/hotkeys.h"

#include <QAbstractNativeEventFilter>
#include <QHash>

#include <xcb/xcb.h>

typedef struct _XCBKeySymbols xcb_key_symbols_t;

// Hot keys as passive key grabs on the X root window. Presses arrive through
// Qt's own XCB connection, watched by a native event filter.
class XcbHotKeys : public HotKeys, public QAbstractNativeEventFilter
{
public:
    XcbHotKeys();
    ~XcbHotKeys() override;
    XcbHotKeys(const XcbHotKeys &) = delete;
    XcbHotKeys &operator=(const XcbHotKeys &) = delete;

    std::optional<quint32> grab(quint32 carbonKeyCode, quint32 carbonModifiers, quint32 hotKeyId) override;
    void ungrab(quint32 handle) override;

    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;

private:
    struct Grab
    {
        quint32 carbonKeyCode;
        quint16 modifiers; // X11 modifier mask
        xcb_keycode_t keyCode; // 0 while the key is not on the keyboard
    };

    xcb_keycode_t keyCodeFor(quint32 carbonKeyCode) const;
    bool holds(xcb_keycode_t keyCode, quint16 modifiers) const;
    bool grabKey(xcb_keycode_t keyCode, quint16 modifiers) const;
    void ungrabKey(xcb_keycode_t keyCode, quint16 modifiers) const;
    void keyboardMappingChanged();

    xcb_connection_t *m_connection = nullptr;
    xcb_window_t m_root = XCB_NONE;
    xcb_key_symbols_t *m_keySymbols = nullptr;
    quint8 m_xkbFirstEvent = 0;
    QHash<quint32, Grab> m_grabs;
    quint32 m_nextHandle = 1;
};
