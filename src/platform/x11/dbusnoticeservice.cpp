#include "platform/x11/dbusnoticeservice.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QLoggingCategory>

#include <atomic>

Q_LOGGING_CATEGORY(lcNotices, "quillstash.notices", QtWarningMsg)

namespace {

const QString serviceName = QStringLiteral("org.freedesktop.Notifications");
const QString objectPath = QStringLiteral("/org/freedesktop/Notifications");
const QString interfaceName = QStringLiteral("org.freedesktop.Notifications");

constexpr uchar urgencyNormal = 1;
constexpr int expireServerDefault = -1;
constexpr int expireNever = 0;

} // namespace

struct DBusNoticeService::Capabilities
{
    // Until the server says otherwise, assume it reads markup in the body, as
    // nearly all do: an unescaped "<" there can garble or drop the notice.
    std::atomic<bool> bodyMarkup = true;
};

DBusNoticeService::DBusNoticeService(const QDBusConnection &bus)
    : m_bus(bus), m_capabilities(std::make_shared<Capabilities>())
{
}

DBusNoticeService::~DBusNoticeService() = default;

bool DBusNoticeService::load()
{
    m_loaded = false;
    if (!m_bus.isConnected() || !m_bus.interface())
        return false;

    QDBusConnectionInterface *daemon = m_bus.interface();
    bool present = daemon->isServiceRegistered(serviceName).value();
    if (!present) {
        const QDBusReply<QStringList> activatable = daemon->activatableServiceNames();
        present = activatable.isValid() && activatable.value().contains(serviceName);
    }
    if (!present)
        return false;
    m_loaded = true;

    const QDBusMessage query =
        QDBusMessage::createMethodCall(serviceName, objectPath, interfaceName,
                                       QStringLiteral("GetCapabilities"));
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(query));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished,
                     [capabilities = m_capabilities](QDBusPendingCallWatcher *call) {
                         const QDBusPendingReply<QStringList> reply = *call;
                         if (reply.isValid())
                             capabilities->bodyMarkup =
                                 reply.value().contains(QLatin1String("body-markup"));
                         call->deleteLater();
                     });
    return true;
}

void DBusNoticeService::notify(const QString &title, const QString &description,
                               const QString &notificationName, int priority, bool sticky)
{
    // Every priority is sent as normal urgency: servers never expire a
    // critical notice, and these notices are meant to go away on their own.
    Q_UNUSED(priority);
    if (!m_loaded)
        return;

    const QVariantMap hints{
        {QStringLiteral("category"), notificationName},
        {QStringLiteral("urgency"), QVariant::fromValue(urgencyNormal)},
        {QStringLiteral("desktop-entry"), QStringLiteral("quillstash")},
    };
    const QString body =
        m_capabilities->bodyMarkup ? description.toHtmlEscaped() : description;

    QDBusMessage call = QDBusMessage::createMethodCall(serviceName, objectPath, interfaceName,
                                                       QStringLiteral("Notify"));
    call << QStringLiteral("Quillstash") << uint(0) << QStringLiteral("quillstash") << title
         << body << QStringList() << hints << (sticky ? expireNever : expireServerDefault);

    // Never wait for the answer: a hung server must not stall the program.
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, [](QDBusPendingCallWatcher *w) {
        if (w->isError())
            qCDebug(lcNotices) << "Notice not shown:" << w->error().name() << w->error().message();
        w->deleteLater();
    });
}
