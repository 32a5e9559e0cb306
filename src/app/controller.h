#pragma once

#include "app/platformservices.h"
#include "commands/fixedphrases.h"
#include "history/contents.h"
#include "history/documentstate.h"

#include <QObject>

#include <memory>

class ApplicationRegistries;
class CaptureLoop;
class DocumentCommands;
class EventTimer;
class KeyCommands;
class HistoryActions;
class HistoryList;
class Notices;
class RecordingSwitch;
class StatusItem;
class TickTimer;
class WindowCtrl;

// The application's one controller. The commands of menus, hot keys and the
// history table are its methods; each forwards to the object of the folder
// that owns the behaviour, so that this class stays wiring.
class Controller : public QObject
{
    Q_OBJECT

public:
    // The store must outlive the controller; the application object owns it.
    Controller(const PlatformServices &services, ApplicationRegistries &registries, QObject *parent = nullptr);
    ~Controller() override;

    // The most recently created controller, or null.
    static Controller *controller();

    // What the program does once it has finished launching: status text,
    // recording from the preference, notices, and the one-second tick.
    void applicationDidFinishLaunching();

    // Runs the command a selector names ("_keyEvent_1", "OnFixed_2:", ...):
    // what a global key or a menu item of the key commands calls.
    Q_INVOKABLE void performSelector(const QByteArray &selector);
    // Registers a global key whose presses perform `selector` on this
    // controller, with the application's hot key registry.
    quintptr registerHotKey(quint32 keyCode, quint64 cocoaModifiers, const QByteArray &selector);
    // Replaces the application's registry (tests).
    void setHotKeyRegistrar(HotKeyRegistrar registrar) { m_registrar = std::move(registrar); }
    void setupFixedPhraseMenu();
    void changeFont(QObject *sender = nullptr);

    void MainTimer();
    void addPasteboard();
    void setGeneralPasteboard(const Entry &entry);
    void changePasteBoard(QObject *sender = nullptr);
    void copy(QObject *sender = nullptr);
    void cut(QObject *sender = nullptr);
    void paste(QObject *sender = nullptr);
    void stock(QObject *sender = nullptr);
    void removeObject(QObject *sender = nullptr);
    void removeAllObject(QObject *sender = nullptr);
    void onDoubleClickTable(QObject *sender = nullptr);
    void scrollTop();
    void scrollBottom();
    bool IsClean() const;
    QString statusString() const;
    void setStatusString(const QString &status);
    void messageGrowl(const QString &title, const QString &desc, const QString &notify);
    bool useSound() const;
    void doAutoRec();
    void cancelAutoRec();
    // The Recording menu's Start and Stop, and the toolbar's recording button.
    void actionDoAutoRec(QObject *sender = nullptr);
    void actionCancelAutoRec(QObject *sender = nullptr);
    void toggleAutoRec(QObject *sender = nullptr);
    // Compacts the window when the sender (a checkable action or button) is
    // checked, restores it otherwise.
    void compact(QObject *sender);

    void saveAllObject(QObject *sender = nullptr);
    void saveas(QObject *sender = nullptr);
    void open(QObject *sender = nullptr);
    // application:openFile: — a file handed over by the system.
    bool applicationOpenFile(const QString &path);
    void autoSave();
    // applicationWillTerminate: — what the controller keeps across runs.
    void applicationWillTerminate();
    // The program becoming the active one or ceasing to be: each reaches the
    // window's controller.
    void applicationWillBecomeActive();
    void applicationDidBecomeActive();
    void applicationWillResignActive();
    void applicationDidResignActive();

    const PlatformServices &services() const { return m_services; }
    HistoryList &nsac() const { return *m_nsac; }
    DocumentState &document() { return m_document; }
    CaptureLoop &capture() const { return *m_capture; }
    DocumentCommands &documents() const { return *m_documents; }
    RecordingSwitch &recording() const { return *m_recording; }
    EventTimer &eventTimer() const { return *m_eventTimer; }
    Notices &notices() const { return *m_notices; }
    ApplicationRegistries &registries() const { return m_registries; }
    HistoryActions &actions() const { return *m_actions; }
    KeyCommands &keyCommands() const { return *m_keyCommands; }
    FixedPhrases &fixedPhrases() const { return *m_phrases; }

    // The main window's controller, or null while there is no window.
    WindowCtrl *windowCtrl() const { return mWindowCtrl; }
    void setWindowCtrl(WindowCtrl *windowCtrl) { mWindowCtrl = windowCtrl; }
    // The tray item, shown at launch; null while there is none.
    void setStatusItem(StatusItem *statusItem) { mpStatusMenuItem = statusItem; }

private:
    // registerHotKey() as the commands take it.
    HotKeyRegistrar hotKeyRegistrar();

    PlatformServices m_services;
    ApplicationRegistries &m_registries;
    HistoryList *m_nsac;
    DocumentState m_document;
    std::unique_ptr<Notices> m_notices;
    std::unique_ptr<EventTimer> m_eventTimer;
    RecordingSwitch *m_recording;
    CaptureLoop *m_capture;
    HistoryActions *m_actions;
    DocumentCommands *m_documents;
    FixedPhrases *m_phrases;
    KeyCommands *m_keyCommands;
    HotKeyRegistrar m_registrar;
    TickTimer *mTimer = nullptr;
    WindowCtrl *mWindowCtrl = nullptr;
    StatusItem *mpStatusMenuItem = nullptr;
    bool m_active = true;
};
