#include "platform/x11/pasteboardtypes.h"

#include "platform/pasteboardtype.h"
#include "platform/sharedbuffers.h"

#include <QBuffer>
#include <QImage>
#include <QImageWriter>

#include <algorithm>
#include <array>

namespace {

const QString pngFormat = QStringLiteral("image/png");
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

// GTK offers its icon encoding under these names as well as image/ ones.
bool isIconAlias(const QString &format)
{
    return format == QLatin1String("application/ico") || format == QLatin1String("text/ico");
}

// Owners offer one picture under many encodings and make each only when
// asked: GTK fourteen (three identical BMPs, six icon names). Reading them all
// made a 1600 x 1200 screenshot cost 18.6 MB instead of the 1.1 MB of its PNG
// and TIFF, which between them keep every pixel and the alpha. Without
// either, the owner's first choice stands for the picture.
QStringList picturesToRead(const QStringList &offered)
{
    QStringList kept;
    for (const QString &lossless : {pngFormat, tiffFormat}) {
        if (offered.contains(lossless))
            kept.append(lossless);
    }
    if (kept.isEmpty()) {
        const auto first = std::find_if(offered.begin(), offered.end(), PasteboardTypes::isPicture);
        if (first != offered.end())
            kept.append(*first);
    }
    return kept;
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
QByteArray compressedTiff(const QByteArray &picture)
{
    constexpr int lzwCompression = 1;
    const QImage image = QImage::fromData(picture);
    if (image.isNull())
        return {};
    QByteArray tiff;
    QBuffer buffer(&tiff);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "tiff");
    writer.setCompression(lzwCompression);
    return writer.write(image) ? tiff : QByteArray();
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
    const QStringList pictures = picturesToRead(offered);
    QStringList targets;
    for (const QString &target : offered) {
        // The text goes where the owner first offered text, whichever of its
        // names is read.
        const QString &kept = isUtf8Text(target) ? bestText : target;
        if ((isPicture(kept) && !pictures.contains(kept)) || (isIconAlias(kept) && !pictures.isEmpty()))
            continue;
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

    // At most one picture is read when TIFF is not among them.
    const auto picture = std::find_if(present.cbegin(), present.cend(), isPicture);
    QByteArray addedTiff;
    if (picture != present.cend() && !present.contains(tiffFormat))
        addedTiff = compressedTiff(read.value(*picture));

    QList<PasteboardItem> items;
    for (const QString &format : present) {
        const QByteArray data = read.value(format);
        if (isUtf8Text(format)) {
            items.append({PasteboardType::Utf8PlainText, data});
            items.append({PasteboardType::String, data});
            continue;
        }
        if (!addedTiff.isNull() && isPicture(format)) {
            items.append({PasteboardType::Tiff, addedTiff});
            addedTiff = QByteArray();
        }
        items.append({typeForFormat(format, data), data});
    }
    // An owner may offer one encoding under two names.
    QList<QByteArray *> values;
    for (PasteboardItem &item : items)
        values.append(&item.data);
    shareEqualBuffers(values);
    return items;
}

bool PasteboardTypes::isPicture(const QString &format)
{
    return format.startsWith(QLatin1String("image/")) && !format.contains(QLatin1String("svg"), Qt::CaseInsensitive);
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
