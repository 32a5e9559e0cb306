#include "platform/x11/pasteboardtypes.h"

#include "platform/testpicture.h"

#include <gtest/gtest.h>

void PrintTo(const PasteboardItem &item, std::ostream *os)
{
    *os << item.type.toStdString() << '=' << ::testing::PrintToString(item.data.toStdString());
}

namespace {

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
        {"unreadFormatsAreLeftOut", {"UTF8_STRING", "text/rtf"}, {{"text/rtf", rtf}}, {"UTF8_STRING", "text/rtf"},
         {{"public.rtf", rtf}}},
        {"tiffOfferedIsNotAddedAgain", {"image/png", "image/tiff", "application/x-qt-image", "application/x-qt-image-x"},
         {{"image/png", "png"}, {"image/tiff", "tiff"}}, {"image/png", "image/tiff"},
         {{"public.png", "png"}, {"public.tiff", "tiff"}}},
        {"undecodablePictureGetsNoTiff", {"image/png"}, {{"image/png", "bad"}}, {"image/png"}, {{"public.png", "bad"}}},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(PasteboardTypes::targetsToRead(row.offered), row.toRead) << row.name;
        EXPECT_EQ(PasteboardTypes::itemsFromFormats(row.offered, row.read), row.items) << row.name;
    }
}

TEST(PasteboardTypes, PictureWithoutTiffGetsACompressedTiffBeforeTheFirstReadablePicture)
{
    const QByteArray png = pngPicture();
    const QList<PasteboardItem> items = PasteboardTypes::itemsFromFormats(
        {"TARGETS", "UTF8_STRING", "image/x-unknown", "image/png"},
        {{"UTF8_STRING", text}, {"image/x-unknown", "not a picture"}, {"image/png", png}});
    const QByteArray tiff = items.value(2).data;
    EXPECT_EQ(items, (QList<PasteboardItem>{{utf8Text, text}, {nsString, text}, {"public.tiff", tiff},
                                            {"image/x-unknown", "not a picture"}, {"public.png", png}}));
    ASSERT_TRUE(tiff.startsWith("II*") || tiff.startsWith("MM")) << "not a TIFF";
    EXPECT_EQ(QImage::fromData(tiff, "TIFF").convertToFormat(QImage::Format_ARGB32),
              QImage::fromData(png).convertToFormat(QImage::Format_ARGB32));
    // An uncompressed 24x16 ARGB picture needs 1536 bytes of pixels alone.
    EXPECT_LT(tiff.size(), 1536);
}

// Whatever was read can be offered again under the format it came from.
TEST(PasteboardTypes, WritingGivesEveryTypeBackItsDesktopFormat)
{
    const QList<std::pair<QString, QString>> table = {
        {utf8Text, "text/plain"}, {nsString, "text/plain"}, {"public.html", "text/html"}, {"public.rtf", "text/rtf"},
        {"public.png", "image/png"}, {"public.tiff", "image/tiff"}, {"public.url", "text/uri-list"},
        {"text/uri-list", "text/uri-list"}, {"quillstash.ignore", "quillstash.ignore"}, {"STRING", "STRING"},
    };
    for (const auto &[type, format] : table)
        EXPECT_EQ(PasteboardTypes::formatForType(type), format) << type.toStdString();
    const QStringList offered = {"text/html", "text/rtf", "image/png", "image/tiff", "text/uri-list", "x-special/gnome"};
    QHash<QString, QByteArray> read;
    for (const QString &format : offered)
        read.insert(format, format == "text/uri-list" ? oneUrl : format.toUtf8());
    const QList<PasteboardItem> items = PasteboardTypes::itemsFromFormats(offered, read);
    ASSERT_EQ(items.size(), offered.size());
    for (qsizetype i = 0; i < items.size(); ++i) {
        EXPECT_EQ(PasteboardTypes::formatForType(items[i].type), offered[i]);
        EXPECT_EQ(items[i].data, read.value(offered[i]));
    }
}

} // namespace
