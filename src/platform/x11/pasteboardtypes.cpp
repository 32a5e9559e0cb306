#include "platform/x11/pasteboardtypes.h"

#include "platform/pasteboardtype.h"

#include <QBuffer>
#include <QImage>
#include <QImageWriter>

#include <algorithm>
#include <array>

namespace {

const QString tiffFormat = QStringLiteral("image/tiff");
const QString uriListFormat = QStringLiteral("text/uri-list");

// Most trustworthy first: a bare text/plain may come from an owner that still
// thinks in Latin-1.
const std::array utf8TextFormats = {QStringLiteral("text/plain;charset=utf-8"),
                                    QStringLiteral("UTF8_STRING"), QStringLiteral("text/plain")};

// Formats whose meaning has a name of its own in the history; everything else
// keeps the name the owner gave it.
struct NamedFormat
{
    const char *format;
    const char *type;
};
constexpr std::array namedFormats = {
    NamedFormat{"text/html", "public.html"}, NamedFormat{"text/rtf", "public.rtf"},
    NamedFormat{"image/png", "public.png"},  NamedFormat{"image/tiff", "public.tiff"},
    NamedFormat{"text/uri-list", "public.url"},
};

bool isUtf8Text(const QString &target)
{
    return std::find(utf8TextFormats.begin(), utf8TextFormats.end(), target) != utf8TextFormats.end();
}

bool isSkipped(const QString &target, bool hasUtf8Text)
{
    static const QStringList protocolTargets = {
        QStringLiteral("TARGETS"),          QStringLiteral("MULTIPLE"),
        QStringLiteral("TIMESTAMP"),        QStringLiteral("SAVE_TARGETS"),
        QStringLiteral("DELETE"),           QStringLiteral("INSERT_SELECTION"),
        QStringLiteral("INSERT_PROPERTY"),
    };
    static const QStringList legacyTextAliases = {QStringLiteral("STRING"), QStringLiteral("TEXT"),
                                                  QStringLiteral("COMPOUND_TEXT")};
    // Qt offers every picture again under this name and re-encodes it on demand.
    if (target.startsWith(QLatin1String("application/x-qt-image")))
        return true;
    return protocolTargets.contains(target) || (hasUtf8Text && legacyTextAliases.contains(target));
}

// The addresses of a text/uri-list, comments and blank lines aside.
int addressCount(const QByteArray &uriList)
{
    int count = 0;
    for (const QByteArray &line : uriList.split('\n')) {
        const QByteArray address = line.trimmed();
        if (!address.isEmpty() && !address.startsWith('#'))
            ++count;
    }
    return count;
}

QString typeForFormat(const QString &format, const QByteArray &data)
{
    if (format == uriListFormat && addressCount(data) != 1)
        return format;
    for (const NamedFormat &named : namedFormats) {
        if (format == QLatin1String(named.format))
            return QString::fromLatin1(named.type);
    }
    return format;
}

// Pictures are kept as TIFF too, because previews and icons only look there.
QByteArray tiffFromFirstPicture(const QStringList &formats, const QHash<QString, QByteArray> &read)
{
    constexpr int lzwCompression = 1;
    for (const QString &format : formats) {
        if (!format.startsWith(QLatin1String("image/")))
            continue;
        const QImage image = QImage::fromData(read.value(format));
        if (image.isNull())
            continue;
        QByteArray tiff;
        QBuffer buffer(&tiff);
        buffer.open(QIODevice::WriteOnly);
        QImageWriter writer(&buffer, "tiff");
        writer.setCompression(lzwCompression);
        if (writer.write(image))
            return tiff;
    }
    return {};
}

} // namespace

QStringList PasteboardTypes::targetsToRead(const QStringList &offered)
{
    QString bestText;
    for (const QString &format : utf8TextFormats) {
        if (offered.contains(format)) {
            bestText = format;
            break;
        }
    }
    QStringList targets;
    for (const QString &target : offered) {
        // The text goes where the owner first offered text, whichever of its
        // names is read.
        const QString &kept = isUtf8Text(target) ? bestText : target;
        if (!isSkipped(kept, !bestText.isEmpty()) && !targets.contains(kept))
            targets.append(kept);
    }
    return targets;
}

QList<PasteboardItem> PasteboardTypes::itemsFromFormats(const QStringList &offered,
                                                        const QHash<QString, QByteArray> &read)
{
    const QStringList targets = targetsToRead(offered);
    QStringList present;
    for (const QString &target : targets) {
        if (read.contains(target))
            present.append(target);
    }

    QByteArray addedTiff;
    if (!present.contains(tiffFormat))
        addedTiff = tiffFromFirstPicture(present, read);

    QList<PasteboardItem> items;
    for (const QString &format : present) {
        const QByteArray data = read.value(format);
        if (isUtf8Text(format)) {
            items.append({PasteboardType::Utf8PlainText, data});
            items.append({PasteboardType::String, data});
            continue;
        }
        if (!addedTiff.isNull() && format.startsWith(QLatin1String("image/"))) {
            items.append({PasteboardType::Tiff, addedTiff});
            addedTiff = QByteArray();
        }
        items.append({typeForFormat(format, data), data});
    }
    return items;
}

QString PasteboardTypes::formatForType(const QString &type)
{
    if (type == PasteboardType::Utf8PlainText || type == PasteboardType::String)
        return QStringLiteral("text/plain");
    for (const NamedFormat &named : namedFormats) {
        if (type == QLatin1String(named.type))
            return QString::fromLatin1(named.format);
    }
    return type;
}
