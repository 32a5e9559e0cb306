#include "platform/x11/offeredmimedata.h"

void OfferedMimeData::setFormatData(const QString &format, const QByteArray &data)
{
    if (!m_data.contains(format))
        m_formats.append(format);
    // A format declared without data is offered empty until its data comes.
    m_data.insert(format, data.isNull() ? QByteArray("") : data);
}

QVariant OfferedMimeData::retrieveData(const QString &format, QMetaType) const
{
    const auto it = m_data.constFind(format);
    return it == m_data.cend() ? QVariant() : QVariant(*it);
}
