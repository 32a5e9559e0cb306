#include "platform/fake/fakehotkeys.h"

namespace {

quint64 combination(quint32 keyCode, quint32 modifiers)
{
    return (quint64(keyCode) << 32) | modifiers;
}

} // namespace

std::optional<quint32> FakeHotKeys::grab(quint32 carbonKeyCode, quint32 carbonModifiers, quint32 hotKeyId)
{
    const quint64 combo = combination(carbonKeyCode, carbonModifiers);
    // Held by another program, or already by this one.
    if (m_refused.contains(combo) || m_combinations.values().contains(combo)) {
        m_grabs.append({carbonKeyCode, carbonModifiers, hotKeyId, 0});
        return std::nullopt;
    }
    const quint32 handle = m_nextHandle++;
    m_grabs.append({carbonKeyCode, carbonModifiers, hotKeyId, handle});
    m_held.insert(handle);
    m_combinations.insert(handle, combo);
    return handle;
}

void FakeHotKeys::ungrab(quint32 handle)
{
    m_held.remove(handle);
    m_combinations.remove(handle);
}

void FakeHotKeys::refuse(quint32 carbonKeyCode, quint32 carbonModifiers)
{
    m_refused.insert(combination(carbonKeyCode, carbonModifiers));
}
