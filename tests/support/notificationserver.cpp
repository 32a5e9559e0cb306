#include "support/notificationserver.h"

#include <QDBusConnectionInterface>

namespace {
const QString serviceName = QStringLiteral("org.freedesktop.Notifications");
const QString objectPath = QStringLiteral("/org/freedesktop/Notifications");
} // namespace

NotificationServer::NotificationServer(const QDBusConnection &bus, QObject *parent)
    : QObject(parent), m_bus(bus)
{
}

NotificationServer::~NotificationServer()
{
    stop();
}

bool NotificationServer::start()
{
    if (m_started)
        return true;
    if (!m_bus.registerObject(objectPath, this, QDBusConnection::ExportAllSlots))
        return false;
    if (!m_bus.registerService(serviceName)) {
        m_bus.unregisterObject(objectPath);
        return false;
    }
    m_started = true;
    return true;
}

void NotificationServer::stop()
{
    if (!m_started)
        return;
    m_bus.unregisterService(serviceName);
    m_bus.unregisterObject(objectPath);
    m_unanswered.clear();
    m_started = false;
}

uint NotificationServer::Notify(const QString &app_name, uint replaces_id, const QString &app_icon,
                                const QString &summary, const QString &body,
                                const QStringList &actions, const QVariantMap &hints,
                                int expire_timeout)
{
    m_notices.append(
        {app_name, replaces_id, app_icon, summary, body, actions, hints, expire_timeout});
    if (!m_answering) {
        setDelayedReply(true);
        m_unanswered.append(message());
        return 0;
    }
    return m_nextId++;
}

QStringList NotificationServer::GetCapabilities()
{
    return m_capabilities;
}

void NotificationServer::CloseNotification(uint)
{
}

QString NotificationServer::GetServerInformation(QString &vendor, QString &version,
                                                 QString &spec_version)
{
    vendor = QStringLiteral("Quillstash tests");
    version = QStringLiteral("1");
    spec_version = QStringLiteral("1.2");
    return QStringLiteral("notificationserver");
}
