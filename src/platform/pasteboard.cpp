#include "platform/pasteboard.h"

QString Pasteboard::stringForType(const QString &type) const
{
    const QByteArray data = dataForType(type);
    return data.isNull() ? QString() : QString::fromUtf8(data);
}
