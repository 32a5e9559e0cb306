#include "commands/keycommands.h"

#include "history/captureloop.h"
#include "history/historyactions.h"
#include "history/historylist.h"
#include "platform/pasteboard.h"
#include "platform/pasteboardtype.h"
#include "recording/eventtimer.h"
#include "recording/notices.h"
#include "recording/recordingswitch.h"

namespace {

struct LetterCommand
{
    const char *selector;
    quint32 keyCode; // Carbon virtual key code; none for menu-only commands
    void (KeyCommands::*handler)();
};

// In registration order: the hot key ids follow it.
constexpr LetterCommand letterCommands[] = {
    {"_keyEvent_F", 3, &KeyCommands::_keyEvent_F},
    {"_keyEvent_G", 5, &KeyCommands::_keyEvent_G},
    {"_keyEvent_E", 14, &KeyCommands::_keyEvent_E},
    {"_keyEvent_A", 0, &KeyCommands::_keyEvent_A},
    {"_keyEvent_S", 1, &KeyCommands::_keyEvent_S},
    {"_keyEvent_C", 8, &KeyCommands::_keyEvent_C},
    {"_keyEvent_P", 35, &KeyCommands::_keyEvent_P},
};

// Commands that differ only by their digit: the selector is the prefix, the
// digit, and the suffix.
struct DigitCommand
{
    QByteArrayView prefix;
    QByteArrayView suffix;
    int firstDigit;
    void (*handler)(KeyCommands &, FixedPhrases &, int digit);
};

const DigitCommand digitCommands[] = {
    {"_keyEvent_", "", 0, [](KeyCommands &k, FixedPhrases &, int n) { k.numKeyEvent(n); }},
    {"optcmd_", ":", 0, [](KeyCommands &k, FixedPhrases &, int n) { k.numKeyEvent(n); }},
    {"OnFixed_", ":", 1, [](KeyCommands &, FixedPhrases &p, int n) { p.OnFixed(n); }},
};

} // namespace

KeyCommands::KeyCommands(const Services &services, QObject *parent)
    : QObject(parent)
    , m_services(services)
{
}

void KeyCommands::registerCommands(const HotKeyRegistrar &registrar)
{
    for (const LetterCommand &command : letterCommands)
        registrar(command.keyCode, commandModifiers, command.selector);
    for (int digit : {1, 2, 3, 4, 5, 6, 7, 8, 9, 0})
        registrar(FixedPhrases::digitKeyCode(digit), commandModifiers, "_keyEvent_" + QByteArray::number(digit));
}

bool KeyCommands::perform(QByteArrayView selector)
{
    for (const LetterCommand &command : letterCommands) {
        if (selector == command.selector) {
            (this->*command.handler)();
            return true;
        }
    }
    if (selector == "convertUtf8:") {
        _keyEvent_P();
        return true;
    }
    if (selector == "OnAddDate:") {
        m_services.phrases.OnAddDate();
        return true;
    }
    for (const DigitCommand &command : digitCommands) {
        if (selector.size() != command.prefix.size() + 1 + command.suffix.size() || !selector.startsWith(command.prefix)
            || !selector.endsWith(command.suffix))
            continue;
        const int digit = selector.at(command.prefix.size()) - '0';
        if (digit < command.firstDigit || digit > 9)
            continue;
        command.handler(*this, m_services.phrases, digit);
        return true;
    }
    return false;
}

void KeyCommands::numKeyEvent(int n)
{
    m_services.eventTimer.setSoundName(QStringLiteral("Tink"));
    m_services.recording.cancelAutoRec();
    const QList<Entry> &arranged = m_services.nsac.arrangedObjects();
    const qsizetype count = arranged.size();
    const qsizetype index = count - 1 - n;
    // A single entry is the clipboard itself: there is nothing to go back to.
    if (index < 0 || count < 2)
        return;
    m_services.actions.setGeneralPasteboard(arranged.at(index));
}

void KeyCommands::_keyEvent_F()
{
    Q_EMIT openWindowRequested();
}

void KeyCommands::_keyEvent_G()
{
    Q_EMIT closeWindowRequested();
}

void KeyCommands::_keyEvent_E()
{
    m_services.actions.manualCapture();
}

void KeyCommands::_keyEvent_A()
{
    m_services.recording.doAutoRec();
}

void KeyCommands::_keyEvent_S()
{
    m_services.recording.stopAutoRec();
}

void KeyCommands::_keyEvent_C()
{
    const Entry &current = m_services.capture.currentContent();
    m_services.notices.messageGrowl(QStringLiteral("Current Pasteboard"), current ? current->content() : QString(),
                                    Notices::RemovePasteboardNotification);
}

void KeyCommands::_keyEvent_P()
{
    const Entry &current = m_services.capture.currentContent();
    if (!current || !current->types().contains(PasteboardType::Utf8PlainText))
        return;
    // Unlike a phrase, the plain text is declared without the marker: the
    // next tick records it as a new entry.
    m_services.pasteboard.declareTypes({PasteboardType::Utf8PlainText});
    m_services.pasteboard.setData(current->datas().value(PasteboardType::Utf8PlainText),
                                  PasteboardType::Utf8PlainText);
    m_services.notices.messageGrowl(QStringLiteral("Converted to PlainText"),
                                    QStringLiteral("Current Pasteboard has been converted to UTF8 PlainText."),
                                    Notices::RemovePasteboardNotification);
}
