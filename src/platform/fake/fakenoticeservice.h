#pragma once

#include "platform/noticeservice.h"

#include <QList>

class FakeNoticeService : public NoticeService
{
public:
    struct Notice
    {
        QString title;
        QString description;
        QString notificationName;
        int priority = 0;
        bool sticky = false;
    };

    bool load() override { return m_available; }
    void notify(const QString &title, const QString &description, const QString &notificationName,
                int priority, bool sticky) override
    {
        m_sent.append({title, description, notificationName, priority, sticky});
    }

    void setAvailable(bool available) { m_available = available; }
    const QList<Notice> &sent() const { return m_sent; }
    QStringList titles() const
    {
        QStringList titles;
        for (const Notice &n : m_sent)
            titles.append(n.title);
        return titles;
    }
    void clear() { m_sent.clear(); }

private:
    bool m_available = true;
    QList<Notice> m_sent;
};
