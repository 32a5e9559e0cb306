#include "app/hotkeyapplication.h"

#include "app/controller.h"
#include "app/desktopplatform.h"
#include "app/hotkeyregistry.h"
#include "history/tickpause.h"
#include "platform/panels.h"
#include "platform/userdefaults.h"
#include "settings/applicationregistries.h"

#include <QSessionManager>
#include <QSocketNotifier>

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace {

int quitSignalFds[2] = {-1, -1};

void onQuitSignal(int)
{
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(quitSignalFds[0], &byte, 1);
}

} // namespace

HotKeyApplication::HotKeyApplication(int &argc, char **argv)
    : QApplication(argc, argv)
{
    setOrganizationName(QStringLiteral("Quillstash"));
    setApplicationName(QStringLiteral("Quillstash"));
    setApplicationVersion(QStringLiteral(QUILLSTASH_VERSION));
    setDesktopFileName(QStringLiteral("quillstash"));
    // The program lives in the tray; closing its windows does not end it.
    setQuitOnLastWindowClosed(false);
}

HotKeyApplication::~HotKeyApplication() = default;

void HotKeyApplication::startServices()
{
    m_platform = std::make_unique<DesktopPlatform>();
    const PlatformServices services = m_platform->services();
    m_registries = std::make_unique<ApplicationRegistries>(services.defaults, services.loginItems, services.appURL);
    m_hotKeyRegistry = std::make_unique<HotKeyRegistry>(services.hotKeys);

    connect(this, &QCoreApplication::aboutToQuit, this, &HotKeyApplication::terminateWithoutAsking);
    // The session ending asks as a quit from the menu does, when it lets the
    // program talk to the user; "Cancel" then cancels the logout. Without
    // that, the session's end quits as SIGTERM does.
    connect(this, &QGuiApplication::commitDataRequest, this, [this](QSessionManager &manager) {
        if (!manager.allowsInteraction())
            return;
        if (!mayQuit())
            manager.cancel();
        manager.release();
    });
    watchQuitSignals();
}

void HotKeyApplication::terminate(QObject *)
{
    if (m_terminated || !mayQuit())
        return;
    terminateWithoutAsking();
}

bool HotKeyApplication::mayQuit()
{
    if (!m_delegate || m_delegate->IsClean())
        return true;
    // A second request while the question is up waits for its answer.
    if (m_asking)
        return false;
    m_asking = true;
    const Panels::AlertReturn answer = [this] {
        const TickPause pause(m_delegate->capture());
        return m_platform->services().panels.runAlert(
            QStringLiteral("Warning"), QStringLiteral("Not saved Contents exist"),
            QStringLiteral("Table is not empty, and not saved. Do you want to save?"), QStringLiteral("Save"),
            QStringLiteral("Cancel"), QStringLiteral("Quit"));
    }();
    m_asking = false;
    // Quit another way (SIGTERM) while the alert was up: that quit is done.
    if (m_terminated || answer == Panels::AlertReturn::Alternate)
        return false;
    // A failed save does not stop the quit.
    if (answer == Panels::AlertReturn::Default)
        m_delegate->saveAllObject();
    return true;
}

void HotKeyApplication::terminateWithoutAsking()
{
    if (m_terminated)
        return;
    m_terminated = true;
    if (m_willTerminate)
        m_willTerminate();
    removeObjects();
    quit();
}

quintptr HotKeyApplication::registerHotKeyCode(quint32 keyCode, quint64 cocoaModifiers, QObject *target,
                                               const char *selector)
{
    return m_hotKeyRegistry ? m_hotKeyRegistry->registerHotKeyCode(keyCode, cocoaModifiers, target, selector) : 0;
}

void HotKeyApplication::unregisterHotKey(quintptr hotKeyRef)
{
    if (m_hotKeyRegistry)
        m_hotKeyRegistry->unregisterHotKey(hotKeyRef);
}

void HotKeyApplication::clearAllHotKey()
{
    if (m_hotKeyRegistry)
        m_hotKeyRegistry->clearAllHotKey();
}

void HotKeyApplication::removeObjects()
{
    if (m_hotKeyRegistry) {
        m_hotKeyRegistry->clearAllHotKey();
        m_hotKeyRegistry.reset();
    }
    if (m_registries && !m_registriesWritten) {
        m_registriesWritten = true;
        m_registries->writeRegistry();
        m_platform->services().defaults.synchronize();
    }
}

// SIGINT and SIGTERM (Ctrl+C in a terminal, the session ending) quit through
// the event loop, so that the preferences are written as on any other quit.
void HotKeyApplication::watchQuitSignals()
{
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, quitSignalFds) != 0)
        return;
    auto *notifier = new QSocketNotifier(quitSignalFds[1], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this, notifier] {
        char byte;
        [[maybe_unused]] const auto got = ::read(quitSignalFds[1], &byte, 1);
        notifier->setEnabled(false);
        terminateWithoutAsking();
    });
    struct sigaction action = {};
    action.sa_handler = onQuitSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}
