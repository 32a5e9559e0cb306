#pragma once

#include "platform/hotkeys.h"

#include <QHash>
#include <QList>
#include <QSet>

class FakeHotKeys : public HotKeys
{
public:
    struct Grab
    {
        quint32 keyCode;
        quint32 modifiers;
        quint32 hotKeyId;
        quint32 handle; // 0 when refused
        bool operator==(const Grab &) const = default;
    };

    std::optional<quint32> grab(quint32 carbonKeyCode, quint32 carbonModifiers, quint32 hotKeyId) override;
    void ungrab(quint32 handle) override;

    // Every grab() call in order, refused ones included.
    const QList<Grab> &grabs() const { return m_grabs; }
    // Handles currently held.
    const QSet<quint32> &held() const { return m_held; }
    // A combination this program holds already is refused too.
    // Later grabs of this combination are refused, as if another program held it.
    void refuse(quint32 carbonKeyCode, quint32 carbonModifiers);
    // Reports a press of the grab, as the desktop would.
    void press(quint32 handle) const { pressed(handle); }

private:
    QList<Grab> m_grabs;
    QSet<quint32> m_held;
    QSet<quint64> m_refused;
    QHash<quint32, quint64> m_combinations; // of the held handles
    quint32 m_nextHandle = 0x1000;
};
