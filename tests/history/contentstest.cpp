#include "history/contents.h"
#include "history/previewcache.h"
#include "platform/fake/fakeimagefetcher.h"
#include "support/entries.h"

#include <QBuffer>

#include <gtest/gtest.h>

namespace {

const QString stringType = QStringLiteral("NSStringPboardType");
const QString plainType = QStringLiteral("public.utf8-plain-text");
const QString urlType = QStringLiteral("public.url");
const QString tiffType = QStringLiteral("public.tiff");
const QUrl address(QStringLiteral("https://example.org/cat.png"));

QByteArray solidPicture(int w, int h, QColor color, const char *format)
{
    QImage image(w, h, QImage::Format_RGB32);
    image.fill(color);
    QBuffer buffer;
    return buffer.open(QIODevice::WriteOnly) && image.save(&buffer, format) ? buffer.data() : QByteArray();
}

bool isBlank(const QImage &image)
{
    QImage blank(image.size(), image.format());
    blank.fill(Qt::transparent);
    return !image.isNull() && image == blank;
}

// 140 UTF-16 units or fewer are shown whole, longer texts cut with " ...", whether set as text or read as UTF-8.
TEST(Contents, DisplayStringIsCutAfter140Utf16Units)
{
    const QString emoji = QString::fromUcs4(U"\U0001F600"), lines = QStringLiteral("  line one\n\tline two");
    const std::pair<QString, QString> cases[] = {
        {QString(140, u'a'), QString(140, u'a')}, {emoji.repeated(70), emoji.repeated(70)}, {lines, lines},
        {QString(141, u'a'), QString(140, u'a') + QStringLiteral(" ...")},
        {emoji.repeated(71), emoji.repeated(70) + QStringLiteral(" ...")}};
    for (const auto &[text, shown] : cases) {
        contents decoded, entry;
        decoded.setContent(text);
        entry.setContentUtf8(text.toUtf8());
        EXPECT_EQ((QStringList{decoded.content(), entry.content(), entry.contentOrig()}), (QStringList{shown, shown, text}));
    }
}

TEST(Contents, PreviewsAreTheTiffPictureOrTheTextOrBlank)
{
    const Entry picture = makeEntry({stringType, tiffType}, QStringLiteral("caption"),
                                    {{stringType, "caption"}, {tiffType, solidPicture(20, 10, Qt::red, "TIFF")}});
    picture->setImageLater();
    EXPECT_TRUE(picture->isImageSet());
    EXPECT_EQ(picture->image().size(), QSize(160, 80));
    EXPECT_EQ(QColor(picture->image().pixel(80, 40)), QColor(Qt::red));

    const Entry text = makeEntry({plainType, stringType}, QStringLiteral("Some words to draw"));
    EXPECT_FALSE(isBlank(text->image()));

    const Entry html = makeEntry({QStringLiteral("public.html")}, QStringLiteral("[ public.html ]"));
    html->setImageLater();
    EXPECT_TRUE(isBlank(html->image()));
}

// A picture arriving for an address is drawn at 70 % and refreshes the cached preview;
// an undecodable answer is asked again, up to four attempts in all, and once more after a change.
TEST(AddressPicture, PictureArrivingIsDrawnAndUndecodableAnswersAreRetriedFourTimesAndAfterNeedUpdate)
{
    const QUrl page(QStringLiteral("https://example.org/page.html"));
    FakeImageFetcher fetcher;
    fetcher.setPicture(address, solidPicture(40, 20, Qt::blue, "PNG"));
    fetcher.setPicture(page, QByteArrayLiteral("<html>not a picture</html>"));
    const Entry entry = makeEntry({urlType}, address.toString());
    entry->setImageLater(&fetcher);
    makeEntry({plainType, stringType}, QStringLiteral("cat.png"))->setImageLater(&fetcher); // no address
    EXPECT_EQ(fetcher.requestCount(), 1);

    PreviewCache cache;
    EXPECT_TRUE(isBlank(cache.preview(entry)));
    fetcher.finishAll();
    EXPECT_TRUE(entry->isImageSet());
    const QImage preview = cache.preview(entry).convertToFormat(QImage::Format_ARGB32);
    const QRgb inside = preview.pixel(100, 40); // 40x20 scaled to 160x80
    EXPECT_NEAR(qBlue(inside), 255, 2);
    EXPECT_NEAR(qAlpha(inside), 178, 2);
    EXPECT_EQ(qAlpha(preview.pixel(200, 40)), 0);

    // A plain text address is fetched as well as a link.
    const Entry text = makeEntry({plainType, stringType}, page.toString());
    for (int attempt = 0; attempt < 4; ++attempt) {
        text->setImageLater(&fetcher);
        fetcher.finishAll();
    }
    text->setImageLater(&fetcher); // given up
    text->needUpdateImage();
    text->setImageLater(&fetcher);
    EXPECT_EQ(fetcher.requestCount(), 6);
}

} // namespace
