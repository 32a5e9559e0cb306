#pragma once

#include <QtGlobal>

#include <functional>
#include <optional>

// System-wide key combinations that reach the program while another program
// has the keyboard focus. Combinations are given as Carbon virtual key codes
// (US layout) and Carbon modifier bits (cmdKey 0x0100, shiftKey 0x0200,
// optionKey 0x0800, controlKey 0x1000); the implementation maps them to the
// desktop's keys.
class HotKeys
{
public:
    using PressHandler = std::function<void(quint32 handle)>;

    virtual ~HotKeys() = default;

    // Takes the combination for this program. The handle names the grab in
    // ungrab() and in presses; nullopt when the desktop refuses it (another
    // program holds it, or the key is not on the keyboard) and when this
    // program holds it already, until that grab is given up. hotKeyId is the
    // caller's own number for the registration.
    virtual std::optional<quint32> grab(quint32 carbonKeyCode, quint32 carbonModifiers, quint32 hotKeyId) = 0;
    virtual void ungrab(quint32 handle) = 0;

    // Called once per press of a grabbed combination (not on release), on
    // the main thread.
    void setPressHandler(PressHandler handler) { m_pressHandler = std::move(handler); }

protected:
    void pressed(quint32 handle) const
    {
        if (m_pressHandler)
            m_pressHandler(handle);
    }

private:
    PressHandler m_pressHandler;
};
