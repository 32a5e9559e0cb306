#pragma once

#include <QString>

// The desktop's notice display.
class NoticeService
{
public:
    virtual ~NoticeService() = default;

    // Connects to the display; false when there is none, and then notify()
    // does nothing.
    virtual bool load() = 0;
    // Sends one notice without waiting for the display to answer.
    virtual void notify(const QString &title, const QString &description,
                        const QString &notificationName, int priority, bool sticky) = 0;
};
