#pragma once

#include "commands/fixedphrases.h"

#include <QByteArrayView>
#include <QObject>

class CaptureLoop;
class EventTimer;
class HistoryActions;
class HistoryList;
class Notices;
class Pasteboard;
class RecordingSwitch;

// The commands of the Ctrl+Alt keys, which work while another program has
// the focus, and of the menu items that do the same. Every command is named
// by a selector; perform() runs the one a key press or an item names.
class KeyCommands : public QObject
{
    Q_OBJECT

public:
    // Option and command: Ctrl+Alt on this desktop.
    static constexpr quint64 commandModifiers = 0x180000;

    struct Services
    {
        HistoryList &nsac;
        CaptureLoop &capture;
        HistoryActions &actions;
        RecordingSwitch &recording;
        Notices &notices;
        EventTimer &eventTimer;
        Pasteboard &pasteboard;
        FixedPhrases &phrases;
    };

    explicit KeyCommands(const Services &services, QObject *parent = nullptr);

    // The seventeen Ctrl+Alt keys, in their fixed order: F, G, E, A, S, C, P,
    // then the digits 1 to 9 and 0.
    void registerCommands(const HotKeyRegistrar &registrar);

    // Runs the command of "_keyEvent_X", "optcmd_N:", "convertUtf8:",
    // "OnFixed_N:" or "OnAddDate:". False for any other name.
    bool perform(QByteArrayView selector);

    // Puts back the n-th entry counted from the newest shown one (0 is the
    // newest), as the table's stamps number them.
    void numKeyEvent(int n);
    void _keyEvent_F();
    void _keyEvent_G();
    void _keyEvent_E();
    void _keyEvent_A();
    void _keyEvent_S();
    void _keyEvent_C();
    void _keyEvent_P();

Q_SIGNALS:
    void openWindowRequested();
    void closeWindowRequested();

private:
    Services m_services;
};
