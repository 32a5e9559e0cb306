#pragma once

#include <QByteArray>
#include <QObject>

#include <functional>
#include <memory>

class ApplicationRegistries;
class CaptureLoop;
class Clock;
class EventTimer;
class HistoryList;
class ImageFetcher;
class Notices;
class Panels;
class Pasteboard;
class QMenu;
class UserDefaults;

// Registers a global key for the command a selector names: Carbon key code,
// Cocoa modifier flags, selector. Returns the registration's reference, or 0
// when the desktop refuses the combination.
using HotKeyRegistrar = std::function<quintptr(quint32 keyCode, quint64 modifiers, const QByteArray &selector)>;
// Runs the command a selector names, as a menu item's action.
using SelectorPerformer = std::function<void(const QByteArray &selector)>;

// The fixed phrases and the date: a submenu and Ctrl+Alt+Shift keys that put
// one of them on the clipboard, so that the next paste anywhere inserts it.
// Also the font of text previews.
class FixedPhrases : public QObject
{
    Q_OBJECT

public:
    // Shift, option and command: Ctrl+Alt+Shift on this desktop.
    static constexpr quint64 phraseModifiers = 0x1A0000;

    struct Services
    {
        ApplicationRegistries &registries;
        UserDefaults &defaults;
        Pasteboard &pasteboard;
        CaptureLoop &capture;
        HistoryList &nsac;
        Notices &notices;
        EventTimer &eventTimer;
        Clock &clock;
        Panels &panels;
        ImageFetcher *fetcher;
    };

    FixedPhrases(const Services &services, QObject *parent = nullptr);
    ~FixedPhrases() override;

    // The Carbon virtual key code of a digit key (US layout).
    static quint32 digitKeyCode(int digit);

    // Who registers the keys and runs the items' commands.
    void setTarget(HotKeyRegistrar registrar, SelectorPerformer performer);

    // The submenu: the date, then each phrase of 1 to 9 that has a title.
    QMenu *mpInsertFixedPhrase() const { return m_menu.get(); }
    // Rebuilds the submenu and registers its keys again. Keys registered by an
    // earlier build stay in force.
    void setupFixedPhraseMenu();
    void prepareMenuAndHotkey(const QByteArray &selector, quint64 mask, const QString &title, const QString &key,
                              quint32 keyReg);

    // Puts phrase `index` on the clipboard; nothing when it has no content.
    void OnFixed(int index);
    // Puts the full local date and time, in the user's first language.
    void OnAddDate();
    // Lets the user choose the font of text previews.
    void changeFont();

    // The date as OnAddDate() writes it.
    QString dateText() const;

Q_SIGNALS:
    // Text previews are to be drawn again with the new font.
    void contentsFontChanged();

private:
    void putOwnText(const QString &text);

    Services m_services;
    std::unique_ptr<QMenu> m_menu;
    HotKeyRegistrar m_registrar;
    SelectorPerformer m_performer;
};
