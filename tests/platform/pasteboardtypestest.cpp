#include "platform/x11/pasteboardtypes.h"

#include "platform/testpicture.h"

#include <gtest/gtest.h>

const QString utf8Text = QStringLiteral("public.utf8-plain-text");
const QString nsString = QStringLiteral("NSStringPboardType");
const QByteArray text = QByteArrayLiteral("gr\xc3\xbc\xc3\x9f dich");
const QByteArray html = QByteArrayLiteral("<b>bold</b>");
const QByteArray oneUrl = QByteArrayLiteral("# comment\r\nhttps://example.com/a\r\n");
const QByteArray twoUrls = QByteArrayLiteral("file:///tmp/a\r\nfile:///tmp/b\r\n");

TEST(PasteboardTypes, ReadingMapsOfferedFormatsToTheProgramsTypes)
{
    const QByteArray rtf = "{\\rtf1}", custom("\0\1", 2);
    const struct { const char *name; QStringList offered; QHash<QString, QByteArray> read; QStringList toRead;
                   QList<PasteboardItem> items; } rows[] = {
        {"qtTextSkipsAliasesAndProtocol", {"text/plain", "UTF8_STRING", "STRING", "TEXT", "COMPOUND_TEXT", "TARGETS",
         "MULTIPLE", "TIMESTAMP", "SAVE_TARGETS", "DELETE", "INSERT_SELECTION", "INSERT_PROPERTY"},
         {{"UTF8_STRING", text}}, {"UTF8_STRING"}, {{utf8Text, text}, {nsString, text}}},
        {"textStandsWhereTextWasFirstOffered", {"text/plain", "text/html", "text/plain;charset=utf-8"},
         {{"text/plain;charset=utf-8", text}, {"text/html", html}}, {"text/plain;charset=utf-8", "text/html"},
         {{utf8Text, text}, {nsString, text}, {"public.html", html}}},
        {"latinStringKeptWithoutUtf8Text", {"STRING", "TARGETS"}, {{"STRING", "a"}}, {"STRING"}, {{"STRING", "a"}}},
        {"namedFormatsAndCustomNames", {"text/html", "text/rtf", "application/x-custom name", "quillstash.other"},
         {{"text/html", html}, {"text/rtf", rtf}, {"application/x-custom name", custom}, {"quillstash.other", ""}},
         {"text/html", "text/rtf", "application/x-custom name", "quillstash.other"},
         {{"public.html", html}, {"public.rtf", rtf}, {"application/x-custom name", custom}, {"quillstash.other", ""}}},
        {"oneAddressIsAUrl", {"text/uri-list"}, {{"text/uri-list", oneUrl}}, {"text/uri-list"}, {{"public.url", oneUrl}}},
        {"twoAddressesStay", {"text/uri-list"}, {{"text/uri-list", twoUrls}}, {"text/uri-list"}, {{"text/uri-list", twoUrls}}},
        {"equalBytesUnderTwoNames", {"text/html", "application/x-html"}, {{"text/html", html}, {"application/x-html", QByteArray("<b>bold</b>")}},
         {"text/html", "application/x-html"}, {{"public.html", html}, {"application/x-html", html}}},
        {"undecodablePictureGetsNoTiff", {"image/png"}, {{"image/png", "bad"}}, {"image/png"}, {{"public.png", "bad"}}},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(PasteboardTypes::targetsToRead(row.offered), row.toRead) << row.name;
        const QList<PasteboardItem> items = PasteboardTypes::itemsFromFormats(row.offered, row.read);
        EXPECT_EQ(items, row.items) << row.name;
        // An owner may offer the same bytes under several names; memory holds them once.
        for (const PasteboardItem &a : items) {
            for (const PasteboardItem &b : items)
                EXPECT_TRUE(a.data != b.data || a.data.constData() == b.data.constData()) << row.name;
        }
    }
}

// Owners offer one picture under many encodings, each made when asked (GTK fourteen): only PNG and TIFF are read, or
// else the first encoding, and the picture always ends up with a TIFF.
TEST(PasteboardTypes, OnePictureIsReadInItsLosslessEncodingsOnly)
{
    const QStringList gtk = {"TIMESTAMP", "TARGETS", "MULTIPLE", "SAVE_TARGETS", "image/png", "image/jpeg",
                             "image/bmp", "image/x-bmp", "image/x-MS-bmp", "image/x-icon", "image/x-ico",
                             "image/x-win-bitmap", "image/vnd.microsoft.icon", "application/ico", "image/ico",
                             "image/icon", "text/ico", "image/tiff"};
    const struct { const char *name; QStringList offered, toRead, types; } rows[] = {
        {"gtk", gtk, {"image/png", "image/tiff"}, {"public.png", "public.tiff"}},
        {"qt", {"image/png", "application/x-qt-image", "TARGETS"}, {"image/png"}, {"public.tiff", "public.png"}},
        {"jpegAndIcon", {"image/jpeg", "image/x-icon"}, {"image/jpeg"}, {"public.tiff", "image/jpeg"}},
        {"otherFormatsAndDrawingsStay", {"text/html", "image/svg+xml", "image/gif", "image/png", "text/ico", "x-special/a"},
         {"text/html", "image/svg+xml", "image/png", "x-special/a"},
         {"public.html", "image/svg+xml", "public.tiff", "public.png", "x-special/a"}},
        {"iconNameWithoutPictureStays", {"application/ico"}, {"application/ico"}, {"application/ico"}},
    };
    const QImage picture = QImage::fromData(pngPicture());
    for (const auto &row : rows) {
        // As if every offered format had been read: what is not wanted must not get in.
        QHash<QString, QByteArray> read;
        for (const QString &format : row.offered) {
            QBuffer encoded;
            encoded.open(QIODevice::WriteOnly);
            read.insert(format, picture.save(&encoded, format.section(u'/', 1).toLatin1()) ? encoded.data() : format.toUtf8());
        }
        EXPECT_EQ(PasteboardTypes::targetsToRead(row.offered), row.toRead) << row.name;
        const QList<PasteboardItem> items = PasteboardTypes::itemsFromFormats(row.offered, read);
        QStringList types;
        for (qsizetype i = 0; i < items.size(); ++i) {
            types.append(items[i].type);
            const QString format = PasteboardTypes::formatForType(items[i].type);
            if (row.toRead.contains(format)) {
                EXPECT_EQ(items[i].data, read.value(format)) << row.name << ' ' << format.toStdString();
                continue;
            }
            // An added TIFF, lossless, compressed (24x16 ARGB pixels alone
            // take 1536 bytes), before the picture it is made from.
            EXPECT_EQ(QImage::fromData(items[i].data, "TIFF").convertToFormat(QImage::Format_ARGB32),
                      QImage::fromData(items.value(i + 1).data).convertToFormat(QImage::Format_ARGB32)) << row.name;
            EXPECT_LT(items[i].data.size(), 1536) << row.name;
        }
        EXPECT_EQ(types, row.types) << row.name;
    }
}
