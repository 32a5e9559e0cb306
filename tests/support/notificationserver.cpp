#include "support/notificationserver.h"

namespace {
const QString serviceName = QStringLiteral("org.freedesktop.Notifications");
const QString objectPath = QStringLiteral("/org/freedesktop/Notifications");
} // namespace

NotificationServer::~NotificationServer()
{
    if (m_started) {
        m_bus.unregisterService(serviceName);
        m_bus.unregisterObject(objectPath);
    }
}

bool NotificationServer::start()
{
    if (!m_bus.registerObject(objectPath, this, QDBusConnection::ExportAllSlots))
        return false;
    if (!m_bus.registerService(serviceName)) {
        m_bus.unregisterObject(objectPath);
        return false;
    }
    return m_started = true;
}

uint NotificationServer::Notify(const QString &app_name, uint replaces_id, const QString &app_icon,
                                const QString &summary, const QString &body, const QStringList &actions,
                                const QVariantMap &hints, int expire_timeout)
{
    m_notices.append({app_name, replaces_id, app_icon, summary, body, actions, hints, expire_timeout});
    if (!m_answering) {
        setDelayedReply(true);
        m_unanswered.append(message());
        return 0;
    }
    return m_nextId++;
}
