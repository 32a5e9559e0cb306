#include "ui/notificationcenter.h"

NotificationCenter::NotificationCenter(QObject *parent)
    : QObject(parent)
{
}

void NotificationCenter::postNotificationName(const QString &name, QObject *object)
{
    Q_EMIT notificationPosted(name, object);
}
