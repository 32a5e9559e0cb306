#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

// A freedesktop notification server for tests: owns
// org.freedesktop.Notifications on the given bus and records every Notify call.
class NotificationServer : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    struct Notice
    {
        QString appName;
        uint replacesId = 0;
        QString appIcon;
        QString summary;
        QString body;
        QStringList actions;
        QVariantMap hints;
        int expireTimeout = 0;
    };

    explicit NotificationServer(const QDBusConnection &bus = QDBusConnection::sessionBus()) : m_bus(bus) {}
    ~NotificationServer() override;

    // Takes the service name and exports the object; false when the name is taken.
    bool start();

    const QList<Notice> &notices() const { return m_notices; }
    void clear() { m_notices.clear(); }
    // Records calls but leaves them unanswered, as a hung server does.
    void setAnswering(bool answering) { m_answering = answering; }

public Q_SLOTS:
    uint Notify(const QString &app_name, uint replaces_id, const QString &app_icon, const QString &summary,
                const QString &body, const QStringList &actions, const QVariantMap &hints, int expire_timeout);
    // Bodies may carry markup, so the program escapes clipboard text.
    QStringList GetCapabilities() { return {QStringLiteral("body"), QStringLiteral("body-markup")}; }

private:
    QDBusConnection m_bus;
    QList<Notice> m_notices;
    QList<QDBusMessage> m_unanswered;
    bool m_answering = true;
    bool m_started = false;
    uint m_nextId = 1;
};
