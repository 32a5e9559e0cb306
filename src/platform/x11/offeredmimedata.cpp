#include "platform/x11/offeredmimedata.h"

#include "platform/x11/pasteboardtypes.h"

#include <QBuffer>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>

#include <algorithm>
#include <array>

namespace {

struct Encoding
{
    const char *format;
    const char *writer;
};
// What programs commonly paste; Qt's image plugins write each of them.
constexpr std::array commonEncodings = {
    Encoding{"image/png", "png"},
    Encoding{"image/jpeg", "jpeg"},
    Encoding{"image/bmp", "bmp"},
    Encoding{"image/tiff", "tiff"},
};

} // namespace

void OfferedMimeData::setFormatData(const QString &format, const QByteArray &data)
{
    if (!m_data.contains(format))
        m_formats.append(format);
    // A format declared without data is offered empty until its data comes.
    m_data.insert(format, data.isNull() ? QByteArray("") : data);
}

bool OfferedMimeData::hasFormat(const QString &format) const
{
    return m_data.contains(format) || convertibleFormats().contains(format);
}

QVariant OfferedMimeData::retrieveData(const QString &format, QMetaType) const
{
    const auto it = m_data.constFind(format);
    if (it != m_data.cend())
        return QVariant(*it);
    return convertibleFormats().contains(format) ? QVariant(converted(format)) : QVariant();
}

QString OfferedMimeData::sourcePicture() const
{
    // Lossless ones first; only the header is looked at here, since this runs
    // for every list of formats a reader asks for.
    QStringList pictures;
    for (const QString &format : m_formats) {
        if (PasteboardTypes::isPicture(format))
            pictures.append(format);
    }
    std::stable_partition(pictures.begin(), pictures.end(), [](const QString &format) {
        return format == QLatin1String("image/png") || format == QLatin1String("image/tiff");
    });
    for (const QString &format : std::as_const(pictures)) {
        QByteArray bytes = m_data.value(format);
        QBuffer buffer(&bytes);
        if (buffer.open(QIODevice::ReadOnly) && QImageReader(&buffer).canRead())
            return format;
    }
    return {};
}

QStringList OfferedMimeData::convertibleFormats() const
{
    QStringList formats;
    if (sourcePicture().isEmpty())
        return formats;
    for (const Encoding &encoding : commonEncodings) {
        if (!m_data.contains(QLatin1String(encoding.format)))
            formats.append(QLatin1String(encoding.format));
    }
    return formats;
}

QByteArray OfferedMimeData::converted(const QString &format) const
{
    const auto encoding = std::find_if(commonEncodings.begin(), commonEncodings.end(),
                                       [&](const Encoding &e) { return format == QLatin1String(e.format); });
    Q_ASSERT(encoding != commonEncodings.end());
    const QImage image = QImage::fromData(m_data.value(sourcePicture()));
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (image.isNull() || !QImageWriter(&buffer, encoding->writer).write(image))
        return {};
    return bytes;
}
