#include "platform/x11/pasteboardtypes.h"

#include <QBuffer>
#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

namespace {

const QString utf8Text = QStringLiteral("public.utf8-plain-text");
const QString nsString = QStringLiteral("NSStringPboardType");

QByteArray pngPicture()
{
    QImage image(24, 16, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.fillRect(2, 2, 12, 8, QColor(200, 40, 10));
    painter.end();
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return png;
}

struct ReadCase
{
    const char *name;
    QStringList offered;
    QHash<QString, QByteArray> read;
    QStringList toRead;
    QList<PasteboardItem> items;
};

void PrintTo(const ReadCase &c, std::ostream *os)
{
    *os << c.name;
}

class ReadingFormats : public ::testing::TestWithParam<ReadCase>
{
};

TEST_P(ReadingFormats, MapsOfferedFormatsToTheProgramsTypes)
{
    const ReadCase &c = GetParam();
    EXPECT_EQ(PasteboardTypes::targetsToRead(c.offered), c.toRead);
    const QList<PasteboardItem> items = PasteboardTypes::itemsFromFormats(c.offered, c.read);
    ASSERT_EQ(items.size(), c.items.size());
    for (qsizetype i = 0; i < items.size(); ++i) {
        EXPECT_EQ(items[i].type, c.items[i].type) << "item " << i;
        EXPECT_EQ(items[i].data, c.items[i].data) << "item " << i;
    }
}

const QByteArray text = QByteArrayLiteral("gr\xc3\xbc\xc3\x9f dich");
const QByteArray html = QByteArrayLiteral("<b>bold</b>");
const QByteArray oneUrl = QByteArrayLiteral("# comment\r\nhttps://example.com/a\r\n");
const QByteArray twoUrls = QByteArrayLiteral("file:///tmp/a\r\nfile:///tmp/b\r\n");

INSTANTIATE_TEST_SUITE_P(
    Table, ReadingFormats,
    ::testing::Values(
        ReadCase{"xclipText",
                 {"TARGETS", "UTF8_STRING"},
                 {{"UTF8_STRING", text}},
                 {"UTF8_STRING"},
                 {{utf8Text, text}, {nsString, text}}},
        ReadCase{"qtTextSkipsAliasesAndProtocol",
                 {"text/plain", "UTF8_STRING", "STRING", "TEXT", "COMPOUND_TEXT", "TARGETS", "MULTIPLE",
                  "TIMESTAMP", "SAVE_TARGETS", "DELETE", "INSERT_SELECTION", "INSERT_PROPERTY"},
                 {{"UTF8_STRING", text}},
                 {"UTF8_STRING"},
                 {{utf8Text, text}, {nsString, text}}},
        ReadCase{"textStandsWhereTextWasFirstOffered",
                 {"text/plain", "text/html", "text/plain;charset=utf-8"},
                 {{"text/plain;charset=utf-8", text}, {"text/html", html}},
                 {"text/plain;charset=utf-8", "text/html"},
                 {{utf8Text, text}, {nsString, text}, {"public.html", html}}},
        ReadCase{"latinStringKeptWithoutUtf8Text",
                 {"STRING", "TARGETS"},
                 {{"STRING", "abc"}},
                 {"STRING"},
                 {{"STRING", "abc"}}},
        ReadCase{"namedFormatsAndCustomNames",
                 {"text/html", "text/rtf", "application/x-custom name", "quillstash.other"},
                 {{"text/html", html}, {"text/rtf", "{\\rtf1}"}, {"application/x-custom name", QByteArray("\0\1", 2)},
                  {"quillstash.other", ""}},
                 {"text/html", "text/rtf", "application/x-custom name", "quillstash.other"},
                 {{"public.html", html}, {"public.rtf", "{\\rtf1}"}, {"application/x-custom name", QByteArray("\0\1", 2)},
                  {"quillstash.other", ""}}},
        ReadCase{"oneAddressIsAUrl", {"text/uri-list"}, {{"text/uri-list", oneUrl}}, {"text/uri-list"},
                 {{"public.url", oneUrl}}},
        ReadCase{"twoAddressesKeepTheirFormat", {"text/uri-list"}, {{"text/uri-list", twoUrls}}, {"text/uri-list"},
                 {{"text/uri-list", twoUrls}}},
        ReadCase{"unreadFormatsAreLeftOut",
                 {"UTF8_STRING", "text/html", "text/rtf"},
                 {{"text/rtf", "{\\rtf1}"}},
                 {"UTF8_STRING", "text/html", "text/rtf"},
                 {{"public.rtf", "{\\rtf1}"}}},
        ReadCase{"tiffOfferedIsNotAddedAgain",
                 {"image/png", "image/tiff", "application/x-qt-image", "application/x-qt-image-x"},
                 {{"image/png", "png"}, {"image/tiff", "tiff"}},
                 {"image/png", "image/tiff"},
                 {{"public.png", "png"}, {"public.tiff", "tiff"}}}),
    [](const ::testing::TestParamInfo<ReadCase> &info) { return std::string(info.param.name); });

TEST(ReadingPictures, PictureWithoutTiffGetsTiffFirstDecodedFromTheFirstReadablePicture)
{
    const QByteArray png = pngPicture();
    const QStringList offered = {"TARGETS", "UTF8_STRING", "image/x-unknown", "image/png"};
    const QList<PasteboardItem> items = PasteboardTypes::itemsFromFormats(
        offered, {{"UTF8_STRING", text}, {"image/x-unknown", "not a picture"}, {"image/png", png}});

    QStringList types;
    for (const PasteboardItem &item : items)
        types.append(item.type);
    ASSERT_EQ(types, QStringList({utf8Text, nsString, "public.tiff", "image/x-unknown", "public.png"}));
    EXPECT_EQ(items[4].data, png);
    const QByteArray tiff = items[2].data;
    ASSERT_TRUE(tiff.startsWith("II*") || tiff.startsWith("MM")) << "not a TIFF";
    const QImage fromTiff = QImage::fromData(tiff, "TIFF");
    ASSERT_FALSE(fromTiff.isNull());
    EXPECT_EQ(fromTiff.convertToFormat(QImage::Format_ARGB32),
              QImage::fromData(png).convertToFormat(QImage::Format_ARGB32));
    // Compressed: an uncompressed 24x16 ARGB picture needs 1536 bytes of pixels alone.
    EXPECT_LT(tiff.size(), 1536);
}

TEST(ReadingPictures, ImageOnlyStateListsTiffFirst)
{
    const QList<PasteboardItem> items =
        PasteboardTypes::itemsFromFormats({"TARGETS", "image/png", "application/x-qt-image"}, {{"image/png", pngPicture()}});
    ASSERT_EQ(items.size(), 2);
    EXPECT_EQ(items[0].type, "public.tiff");
    EXPECT_EQ(items[1].type, "public.png");
}

TEST(ReadingPictures, UndecodablePictureGetsNoTiff)
{
    const QList<PasteboardItem> items =
        PasteboardTypes::itemsFromFormats({"image/png"}, {{"image/png", "truncated"}});
    ASSERT_EQ(items.size(), 1);
    EXPECT_EQ(items[0].type, "public.png");
}

TEST(WritingTypes, EachTypeGoesBackToItsDesktopFormat)
{
    const QList<std::pair<QString, QString>> table = {
        {utf8Text, "text/plain"},
        {nsString, "text/plain"},
        {"public.html", "text/html"},
        {"public.rtf", "text/rtf"},
        {"public.png", "image/png"},
        {"public.tiff", "image/tiff"},
        {"public.url", "text/uri-list"},
        {"text/uri-list", "text/uri-list"},
        {"quillstash.ignore", "quillstash.ignore"},
        {"com.apple.custom", "com.apple.custom"},
        {"STRING", "STRING"},
    };
    for (const auto &[type, format] : table)
        EXPECT_EQ(PasteboardTypes::formatForType(type), format) << type.toStdString();
}

// Whatever was read can be offered again under the format it came from.
TEST(WritingTypes, ReadingThenWritingGivesTheOriginalFormats)
{
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
