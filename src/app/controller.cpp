#include "app/controller.h"

#include "app/hotkeyapplication.h"
#include "app/ticktimer.h"

#include "commands/keycommands.h"

#include "documents/documentcommands.h"
#include "history/captureloop.h"
#include "history/historyactions.h"
#include "history/historylist.h"
#include "recording/eventtimer.h"
#include "recording/notices.h"
#include "recording/recordingswitch.h"
#include "settings/applicationregistries.h"
#include "ui/statusitem.h"
#include "ui/windowctrl.h"

#include <QAbstractButton>
#include <QAction>
#include <QGuiApplication>


namespace {
Controller *gController = nullptr;
}

Controller::Controller(const PlatformServices &services, ApplicationRegistries &registries, QObject *parent)
    : QObject(parent)
    , m_services(services)
    , m_registries(registries)
    , m_nsac(new HistoryList(this))
    , m_notices(std::make_unique<Notices>(services.noticeService, services.clock, services.dock, registries))
    , m_eventTimer(std::make_unique<EventTimer>(services.soundPlayer, [this] { return useSound(); }))
    , m_recording(new RecordingSwitch(registries, *m_notices, *m_eventTimer, this))
    , m_capture(new CaptureLoop(*m_nsac, m_document, services.pasteboard, registries, services.dock, *m_notices,
                                *m_eventTimer, *m_recording, services.imageFetcher, this))
    , m_actions(new HistoryActions(*m_nsac, m_document, services.pasteboard, *m_capture, *m_notices, *m_eventTimer,
                                   *m_recording, services.workspace, this))
    , m_documents(new DocumentCommands(*m_nsac, m_document, *m_capture, *m_actions, *m_notices, registries,
                                       services.defaults, services.panels, this))
    , m_phrases(new FixedPhrases({registries, services.defaults, services.pasteboard, *m_capture, *m_nsac, *m_notices,
                                  *m_eventTimer, services.clock, services.panels, services.imageFetcher},
                                 this))
    , m_keyCommands(new KeyCommands({*m_nsac, *m_capture, *m_actions, *m_recording, *m_notices, *m_eventTimer,
                                     services.pasteboard, *m_phrases},
                                    this))
{
    m_phrases->setTarget(hotKeyRegistrar(), [this](const QByteArray &selector) { performSelector(selector); });
    gController = this;
    // Hidden and suspended count as inactive: only entering or leaving the
    // active state is told.
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
        const bool active = state == Qt::ApplicationActive;
        if (active == std::exchange(m_active, active))
            return;
        if (active) {
            applicationWillBecomeActive();
            applicationDidBecomeActive();
        } else {
            applicationWillResignActive();
            applicationDidResignActive();
        }
    });
    connect(m_capture, &CaptureLoop::scrollBottomRequested, m_actions, &HistoryActions::scrollBottom);
    connect(m_capture, &CaptureLoop::autoSaveDue, this, &Controller::autoSave);
}

Controller::~Controller()
{
    if (mTimer)
        mTimer->stop();
    // Sound threads ask this controller whether to play; let them finish first.
    m_eventTimer->waitForIdle();
    if (gController == this)
        gController = nullptr;
}

Controller *Controller::controller()
{
    return gController;
}

void Controller::applicationDidFinishLaunching()
{
    if (!gController)
        gController = this;
    setStatusString(QStringLiteral("Idle"));
    // The tray shows "not recording" until the first tick says otherwise.
    if (mpStatusMenuItem) {
        mpStatusMenuItem->setImageNamed(QStringLiteral("qs_menu_item_rec_off"));
        mpStatusMenuItem->show();
    }
    if (mWindowCtrl)
        mWindowCtrl->open();
    m_recording->setAutomaticRec(m_registries.isRecAtStartup());
    m_document.setEStatus(0);
    // A file opened before launch keeps its entries, but numbering and the
    // modified mark start afresh.
    m_document.setCounter(0);
    m_capture->setManualAdd(false);
    mTimer = new TickTimer(
        m_services.clock, [this] { MainTimer(); }, [this] { return m_notices->lastSentAt(); }, this);
    mTimer->start();
    m_keyCommands->registerCommands(hotKeyRegistrar());
    m_notices->setUp();
    m_documents->readLastSavedDirectory();
    setupFixedPhraseMenu();
}

void Controller::performSelector(const QByteArray &selector)
{
    m_keyCommands->perform(selector);
}

quintptr Controller::registerHotKey(quint32 keyCode, quint64 cocoaModifiers, const QByteArray &selector)
{
    if (m_registrar)
        return m_registrar(keyCode, cocoaModifiers, selector);
    auto *app = qobject_cast<HotKeyApplication *>(QCoreApplication::instance());
    return app ? app->registerHotKeyCode(keyCode, cocoaModifiers, this, selector.constData()) : 0;
}

HotKeyRegistrar Controller::hotKeyRegistrar()
{
    return [this](quint32 keyCode, quint64 modifiers, const QByteArray &selector) {
        return registerHotKey(keyCode, modifiers, selector);
    };
}

void Controller::setupFixedPhraseMenu()
{
    m_phrases->setupFixedPhraseMenu();
}

void Controller::changeFont(QObject *)
{
    m_phrases->changeFont();
}

void Controller::MainTimer()
{
    m_capture->MainTimer();
}

void Controller::addPasteboard()
{
    m_capture->addPasteboard();
}

void Controller::setGeneralPasteboard(const Entry &entry)
{
    m_actions->setGeneralPasteboard(entry);
}

void Controller::changePasteBoard(QObject *)
{
    m_actions->changePasteBoard();
}

void Controller::copy(QObject *)
{
    m_actions->copy();
}

void Controller::cut(QObject *)
{
    m_actions->cut();
}

void Controller::paste(QObject *)
{
    m_actions->paste();
}

void Controller::stock(QObject *)
{
    m_actions->stock();
}

void Controller::removeObject(QObject *)
{
    m_actions->removeObject();
}

void Controller::removeAllObject(QObject *)
{
    m_actions->removeAllObject();
}

void Controller::onDoubleClickTable(QObject *)
{
    m_actions->onDoubleClickTable();
}

void Controller::scrollTop()
{
    m_actions->scrollTop();
}

void Controller::scrollBottom()
{
    m_actions->scrollBottom();
}

bool Controller::IsClean() const
{
    return m_actions->IsClean();
}

QString Controller::statusString() const
{
    return m_actions->statusString();
}

void Controller::setStatusString(const QString &status)
{
    m_actions->setStatusString(status);
}

void Controller::messageGrowl(const QString &title, const QString &desc, const QString &notify)
{
    m_notices->messageGrowl(title, desc, notify);
}

bool Controller::useSound() const
{
    return m_registries.isSoundEnable();
}

void Controller::doAutoRec()
{
    m_recording->doAutoRec();
}

void Controller::cancelAutoRec()
{
    m_recording->cancelAutoRec();
}

void Controller::actionDoAutoRec(QObject *)
{
    m_recording->doAutoRec();
}

void Controller::actionCancelAutoRec(QObject *)
{
    m_recording->stopAutoRec();
}

void Controller::toggleAutoRec(QObject *)
{
    m_recording->toggleAutoRec();
}

void Controller::compact(QObject *sender)
{
    if (!mWindowCtrl)
        return;
    bool on = false;
    if (const auto *action = qobject_cast<const QAction *>(sender))
        on = action->isChecked();
    else if (const auto *button = qobject_cast<const QAbstractButton *>(sender))
        on = button->isChecked();
    if (on)
        mWindowCtrl->compact();
    else
        mWindowCtrl->uncompact();
}

void Controller::saveAllObject(QObject *)
{
    m_documents->saveAllObject();
}

void Controller::saveas(QObject *)
{
    m_documents->saveas();
}

void Controller::open(QObject *)
{
    m_documents->open();
}

bool Controller::applicationOpenFile(const QString &path)
{
    return m_documents->applicationOpenFile(path);
}

void Controller::autoSave()
{
    m_documents->autoSave();
}

void Controller::applicationWillTerminate()
{
    m_documents->writeLastSavedDirectory();
}

void Controller::applicationWillBecomeActive()
{
    if (mWindowCtrl)
        mWindowCtrl->willActive();
}

void Controller::applicationDidBecomeActive()
{
    if (mWindowCtrl)
        mWindowCtrl->didActive();
}

void Controller::applicationWillResignActive()
{
    if (mWindowCtrl)
        mWindowCtrl->willDeactive();
}

void Controller::applicationDidResignActive()
{
    if (mWindowCtrl)
        mWindowCtrl->didDeactive();
}
