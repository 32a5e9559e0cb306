#pragma once

#include "app/objandselectorset.h"

#include <QHash>
#include <QString>

class HotKeys;
class QObject;

// The program's global hot keys: each registration names a key combination
// and the method a press of it calls. Combinations come as a Carbon key code
// and Cocoa modifier flags and are handed to the desktop as Carbon ones.
class HotKeyRegistry
{
public:
    explicit HotKeyRegistry(HotKeys &hotKeys);
    ~HotKeyRegistry();
    HotKeyRegistry(const HotKeyRegistry &) = delete;
    HotKeyRegistry &operator=(const HotKeyRegistry &) = delete;

    // Cocoa modifier flags (shift 0x20000, control 0x40000, option 0x80000,
    // command 0x100000) to Carbon ones; every other bit is dropped.
    static quint32 carbonModifiers(quint64 cocoaModifiers);

    // The registration's reference, or 0 when the desktop refused the
    // combination; a refusal is not reported any other way.
    quintptr registerHotKeyCode(quint32 keyCode, quint64 cocoaModifiers, QObject *target, const char *selector);
    void unregisterHotKey(quintptr hotKeyRef);
    void clearAllHotKey();

private:
    void hotKeyPressed(quint32 handle) const;

    HotKeys &m_hotKeys;
    // Keyed by "0x%x" of the reference.
    QHash<QString, ObjAndSelectorSet> mRegisteredKeyDict;
    // The id of the next registration; it advances on refused ones too. The
    // program has one registry, so the ids run through the whole process.
    quint32 m_nextHotKeyId = 0;
};
