#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

// One named piece of a pasteboard state: a desktop format with its data on
// the X11 side, a type of the program's own on the other.
struct PasteboardItem
{
    QString type;
    QByteArray data;

    friend bool operator==(const PasteboardItem &, const PasteboardItem &) = default;
};

// Translates between the formats X11 owners offer and the type names the
// history works with. Pure functions, so that the rules are tested without a
// display.
class PasteboardTypes
{
public:
    PasteboardTypes() = delete;

    // The offered targets worth converting, in the owner's order: protocol
    // targets, Qt's re-encoded images and legacy text aliases are dropped; of
    // the UTF-8 text targets only the most trustworthy one is kept, since they
    // all carry the same text; of a picture's encodings only PNG and TIFF, or
    // the first one when neither is offered.
    static QStringList targetsToRead(const QStringList &offered);
    // The state as the program sees it, from the offered targets and the data
    // read for them. Targets missing from `read` (timed out, too large) are
    // left out. Items with equal bytes share one buffer.
    static QList<PasteboardItem> itemsFromFormats(const QStringList &offered,
                                                  const QHash<QString, QByteArray> &read);
    // A raster picture's format (image/..., though not SVG, which is the
    // drawing a picture is made from rather than one of its encodings).
    static bool isPicture(const QString &format);
    // The format under which a type of the program's own is offered.
    static QString formatForType(const QString &type);
};
