#pragma once

#include "platform/noticeservice.h"

#include <QDBusConnection>

#include <memory>

// Notices through the freedesktop notification service on the session bus.
class DBusNoticeService : public NoticeService
{
public:
    explicit DBusNoticeService(const QDBusConnection &bus = QDBusConnection::sessionBus());
    ~DBusNoticeService() override;

    DBusNoticeService(const DBusNoticeService &) = delete;
    DBusNoticeService &operator=(const DBusNoticeService &) = delete;

    bool load() override;
    void notify(const QString &title, const QString &description, const QString &notificationName,
                int priority, bool sticky) override;

private:
    struct Capabilities;

    QDBusConnection m_bus;
    bool m_loaded = false;
    // Shared with the pending capability query, which may answer after we are gone.
    std::shared_ptr<Capabilities> m_capabilities;
};
