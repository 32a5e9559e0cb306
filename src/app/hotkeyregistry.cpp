#include "app/hotkeyregistry.h"

#include "platform/hotkeys.h"

namespace {

QString keyOf(quintptr hotKeyRef)
{
    // Only the low 32 bits take part, at registration and lookup alike.
    return QString::asprintf("0x%x", unsigned(hotKeyRef));
}

} // namespace

HotKeyRegistry::HotKeyRegistry(HotKeys &hotKeys)
    : m_hotKeys(hotKeys)
{
    m_hotKeys.setPressHandler([this](quint32 handle) { hotKeyPressed(handle); });
}

HotKeyRegistry::~HotKeyRegistry()
{
    m_hotKeys.setPressHandler({});
}

quint32 HotKeyRegistry::carbonModifiers(quint64 cocoaModifiers)
{
    constexpr struct
    {
        quint64 cocoa;
        quint32 carbon;
    } conversion[] = {
        {0x20000, 0x0200}, // shift -> shiftKey
        {0x40000, 0x1000}, // control -> controlKey
        {0x80000, 0x0800}, // option -> optionKey
        {0x100000, 0x0100}, // command -> cmdKey
    };
    quint32 carbon = 0;
    for (const auto &flag : conversion) {
        if (cocoaModifiers & flag.cocoa)
            carbon |= flag.carbon;
    }
    return carbon;
}

quintptr HotKeyRegistry::registerHotKeyCode(quint32 keyCode, quint64 cocoaModifiers, QObject *target,
                                            const char *selector)
{
    const quint32 carbon = carbonModifiers(cocoaModifiers);
    const quint32 hotKeyId = m_nextHotKeyId++;
    const std::optional<quint32> ref = m_hotKeys.grab(keyCode, carbon, hotKeyId);
    if (!ref)
        return 0;
    mRegisteredKeyDict.insert(keyOf(*ref), ObjAndSelectorSet(target, QByteArray(selector), *ref));
    return *ref;
}

void HotKeyRegistry::unregisterHotKey(quintptr hotKeyRef)
{
    m_hotKeys.ungrab(quint32(hotKeyRef));
    mRegisteredKeyDict.remove(keyOf(hotKeyRef));
}

void HotKeyRegistry::clearAllHotKey()
{
    for (const ObjAndSelectorSet &registration : std::as_const(mRegisteredKeyDict))
        m_hotKeys.ungrab(quint32(registration.getHotKeyRef()));
    mRegisteredKeyDict.clear();
}

void HotKeyRegistry::hotKeyPressed(quint32 handle) const
{
    // A press of a key no longer registered finds nothing and does nothing.
    // Copied out: the handler may unregister keys while it runs.
    const ObjAndSelectorSet registration = mRegisteredKeyDict.value(keyOf(handle));
    registration.fire();
}
