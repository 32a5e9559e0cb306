#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QVariantMap>

// Owns org.freedesktop.Notifications on the given bus and records every Notify call.
class NotificationServer : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    struct Notice
    {
        QString appName, appIcon, summary, body;
        uint replacesId = 0;
        QStringList actions;
        QVariantMap hints;
        int expireTimeout = 0;
    };

    explicit NotificationServer(const QDBusConnection &bus = QDBusConnection::sessionBus()) : m_bus(bus) {}
    ~NotificationServer() override
    {
        m_bus.unregisterService(QStringLiteral("org.freedesktop.Notifications"));
    }

    bool start()
    {
        return m_bus.registerObject(QStringLiteral("/org/freedesktop/Notifications"), this, QDBusConnection::ExportAllSlots)
            && m_bus.registerService(QStringLiteral("org.freedesktop.Notifications"));
    }
    const QList<Notice> &notices() const { return m_notices; }
    // Records calls but leaves them unanswered, as a hung server does.
    void setAnswering(bool answering) { m_answering = answering; }

public Q_SLOTS:
    uint Notify(const QString &appName, uint replacesId, const QString &appIcon, const QString &summary,
                const QString &body, const QStringList &actions, const QVariantMap &hints, int expireTimeout)
    {
        m_notices.append({appName, appIcon, summary, body, replacesId, actions, hints, expireTimeout});
        setDelayedReply(!m_answering);
        return uint(m_notices.size());
    }
    // Bodies may carry markup, so the program escapes clipboard text.
    QStringList GetCapabilities() { return {QStringLiteral("body"), QStringLiteral("body-markup")}; }

private:
    QDBusConnection m_bus;
    QList<Notice> m_notices;
    bool m_answering = true;
};
