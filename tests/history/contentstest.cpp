#include "history/contents.h"
#include "platform/fake/fakeimagefetcher.h"

#include <QBuffer>
#include <QColor>
#include <QImage>

#include <gtest/gtest.h>

namespace {

const QString stringType = QStringLiteral("NSStringPboardType");
const QString plainType = QStringLiteral("public.utf8-plain-text");
const QString urlType = QStringLiteral("public.url");
const QString tiffType = QStringLiteral("public.tiff");

QByteArray encoded(const QImage &image, const char *format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return bytes;
}

QByteArray solidPicture(int w, int h, QColor color, const char *format)
{
    QImage image(w, h, QImage::Format_RGB32);
    image.fill(color);
    return encoded(image, format);
}

// Built in the order the capture path uses.
Entry makeEntry(const QStringList &types, const QString &text, const contents::Datas &datas = {})
{
    auto entry = std::make_shared<contents>();
    entry->setIndexCount(QStringLiteral("0"));
    entry->setContent(text);
    entry->setMainType(types.value(0));
    entry->setTypes(types);
    entry->setDatas(datas);
    return entry;
}

Entry textEntry(const QString &text)
{
    return makeEntry({plainType, stringType}, text, {{plainType, text.toUtf8()}, {stringType, text.toUtf8()}});
}

bool isBlank(const QImage &image)
{
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) != 0)
                return false;
        }
    }
    return true;
}

struct CutCase
{
    int length;
    int shownLength;
    bool cut;
};

class ContentCut : public ::testing::TestWithParam<CutCase>
{
};

TEST_P(ContentCut, DisplayStringIsCutAfter140Units)
{
    const CutCase c = GetParam();
    QString text;
    for (int i = 0; i < c.length; ++i)
        text.append(QChar(u'a' + i % 26));
    contents entry;
    entry.setContent(text);
    EXPECT_EQ(entry.contentOrig(), text);
    EXPECT_EQ(entry.content().size(), c.shownLength);
    if (c.cut)
        EXPECT_EQ(entry.content(), text.left(140) + QStringLiteral(" ..."));
    else
        EXPECT_EQ(entry.content(), text);
}

INSTANTIATE_TEST_SUITE_P(Lengths, ContentCut,
                         ::testing::Values(CutCase{0, 0, false}, CutCase{139, 139, false},
                                           CutCase{140, 140, false}, CutCase{141, 144, true},
                                           CutCase{5000, 144, true}));

TEST(Contents, CutCountsUtf16UnitsAndKeepsWhitespace)
{
    // 70 characters outside the BMP are 140 units: shown whole.
    QString wide;
    for (int i = 0; i < 70; ++i)
        wide.append(QString::fromUcs4(U"\U0001F600"));
    contents entry;
    entry.setContent(wide);
    EXPECT_EQ(entry.content(), wide);

    const QString spaced = QStringLiteral("  line one\n\tline two");
    entry.setContent(spaced);
    EXPECT_EQ(entry.content(), spaced);
}

struct IconCase
{
    const char *name;
    QStringList types;
    QString text;
    contents::TypeIcon icon;
};

class TypeIconChoice : public ::testing::TestWithParam<IconCase>
{
};

TEST_P(TypeIconChoice, FollowsPrecedence)
{
    const IconCase c = GetParam();
    const Entry entry = makeEntry(c.types, c.text);
    EXPECT_EQ(entry->typeImageIndex(), c.icon);
}

INSTANTIATE_TEST_SUITE_P(
    Table, TypeIconChoice,
    ::testing::Values(
        IconCase{"text", {plainType, stringType}, QStringLiteral("hello"), contents::IconText},
        IconCase{"textLink", {stringType}, QStringLiteral("http://example.org"), contents::IconUrl},
        IconCase{"capitalLink", {stringType}, QStringLiteral("HTTP://EXAMPLE.ORG"), contents::IconText},
        IconCase{"shortPrefix", {stringType}, QStringLiteral("http:/"), contents::IconText},
        IconCase{"secureLinkIsText", {stringType}, QStringLiteral("https://example.org"), contents::IconText},
        IconCase{"linkWithoutStringType", {plainType}, QStringLiteral("http://example.org"), contents::IconUnknown},
        IconCase{"url", {urlType}, QStringLiteral("[ public.url ]"), contents::IconUrl},
        IconCase{"urlBeatsText", {stringType, urlType}, QStringLiteral("plain"), contents::IconUrl},
        IconCase{"imageBeatsText", {stringType, tiffType}, QStringLiteral("http://x.org"), contents::IconImage},
        IconCase{"imageBeatsUrl", {urlType, tiffType}, QStringLiteral("x"), contents::IconImage},
        IconCase{"unknown", {QStringLiteral("com.example.private")}, QStringLiteral("x"), contents::IconUnknown}),
    [](const ::testing::TestParamInfo<IconCase> &info) { return std::string(info.param.name); });

TEST(Contents, PreviewAttemptsStopAfterFourAndRestartAfterNeedUpdate)
{
    const Entry entry = makeEntry({stringType}, QStringLiteral("no address here"));
    for (int attempt = 1; attempt <= contents::maxImageAttempts; ++attempt) {
        entry->setImageLater();
        EXPECT_EQ(entry->imageAttempts(), attempt);
        EXPECT_FALSE(entry->isImageSet());
    }
    entry->setImageLater();
    EXPECT_TRUE(entry->isImageSet());
    entry->setImageLater();
    EXPECT_EQ(entry->imageAttempts(), contents::maxImageAttempts);

    const quint64 before = entry->imageGeneration();
    entry->needUpdateImage();
    EXPECT_NE(entry->imageGeneration(), before);
    for (int attempt = 1; attempt <= contents::maxImageAttempts; ++attempt)
        entry->setImageLater();
    EXPECT_FALSE(entry->isImageSet());
    EXPECT_EQ(entry->imageAttempts(), contents::maxImageAttempts);
    entry->setImageLater();
    EXPECT_TRUE(entry->isImageSet());
}

TEST(Contents, TiffPictureIsTheFinalPreviewEvenWithText)
{
    const Entry entry = makeEntry({stringType, tiffType}, QStringLiteral("caption"),
                                  {{stringType, "caption"}, {tiffType, solidPicture(20, 10, Qt::red, "TIFF")}});
    entry->setImageLater();
    EXPECT_TRUE(entry->isImageSet());
    EXPECT_EQ(entry->imageAttempts(), 1);
    const QImage preview = entry->image();
    EXPECT_EQ(preview.size(), QSize(160, 80));
    EXPECT_EQ(QColor(preview.pixel(80, 40)), QColor(Qt::red));
}

TEST(Contents, TiffWithoutDataGivesAnEmptyPreview)
{
    const Entry entry = makeEntry({tiffType}, QStringLiteral("[ public.tiff ]"));
    entry->setImageLater();
    EXPECT_TRUE(entry->isImageSet());
    EXPECT_TRUE(entry->image().isNull());
}

TEST(Contents, TextPreviewDrawsTextAndOtherStatesStayBlank)
{
    const Entry text = textEntry(QStringLiteral("Some words to draw"));
    const QImage drawn = text->image();
    EXPECT_EQ(drawn.size(), QSize(contents::previewWidth, contents::previewHeight));
    EXPECT_FALSE(isBlank(drawn));

    const Entry html = makeEntry({QStringLiteral("public.html")}, QStringLiteral("[ public.html ]"),
                                 {{QStringLiteral("public.html"), "<b>x</b>"}});
    html->setImageLater();
    const QImage blank = html->image();
    EXPECT_EQ(blank.size(), QSize(contents::previewWidth, contents::previewHeight));
    EXPECT_TRUE(isBlank(blank));
}

TEST(Contents, ContentsFontIsCreatedByTheFirstPreviewAndOnlyThenReplaceable)
{
    contents::resetContentsFont();
    contents::setContentsFont(QFont(QStringLiteral("Serif"), 30));
    EXPECT_FALSE(contents::hasContentsFont());

    textEntry(QStringLiteral("first"));
    ASSERT_TRUE(contents::hasContentsFont());
    EXPECT_EQ(contents::contentsFont().family(), QStringLiteral("Lucida Grande"));
    EXPECT_EQ(contents::contentsFont().pointSizeF(), 14.0);

    contents::setContentsFont(QFont(QStringLiteral("Serif"), 30));
    EXPECT_EQ(contents::contentsFont().pointSize(), 30);
    contents::resetContentsFont();
}

TEST(Contents, SameDataIsComparedByteForByte)
{
    const Entry a = textEntry(QStringLiteral("same"));
    const Entry b = textEntry(QStringLiteral("same"));
    const Entry c = textEntry(QStringLiteral("samE"));
    EXPECT_TRUE(a->hasSameDataTo(*b));
    EXPECT_FALSE(a->hasSameDataTo(*c));
}

class AddressPicture : public ::testing::Test
{
protected:
    Entry urlEntry(const QString &address)
    {
        return makeEntry({urlType}, address, {{urlType, address.toUtf8()}});
    }

    FakeImageFetcher fetcher;
    const QUrl address{QStringLiteral("https://example.org/cat.png")};
};

TEST_F(AddressPicture, ArrivingPictureIsDrawnAtSeventyPercentAndEndsTheAttempts)
{
    fetcher.setPicture(address, solidPicture(40, 20, Qt::blue, "PNG"));
    const Entry entry = urlEntry(address.toString());

    entry->setImageLater(&fetcher);
    entry->setImageLater(&fetcher); // still pending: counts, asks nothing more
    EXPECT_EQ(fetcher.requestCount(), 1);
    EXPECT_EQ(entry->imageAttempts(), 2);
    EXPECT_FALSE(entry->isImageSet());
    EXPECT_TRUE(isBlank(entry->image()));

    const quint64 before = entry->imageGeneration();
    fetcher.finishAll();
    EXPECT_TRUE(entry->isImageSet());
    EXPECT_NE(entry->imageGeneration(), before);

    const QImage preview = entry->image().convertToFormat(QImage::Format_ARGB32);
    const QRgb inside = preview.pixel(100, 40); // 40x20 scaled to 160x80
    EXPECT_NEAR(qBlue(inside), 255, 2);
    EXPECT_EQ(qRed(inside), 0);
    EXPECT_NEAR(qAlpha(inside), 178, 2);
    EXPECT_EQ(qAlpha(preview.pixel(200, 40)), 0);

    entry->setImageLater(&fetcher);
    EXPECT_EQ(fetcher.requestCount(), 1);
}

TEST_F(AddressPicture, FailedFetchesCountAsAttempts)
{
    const Entry entry = urlEntry(address.toString());
    for (int attempt = 0; attempt < contents::maxImageAttempts; ++attempt) {
        entry->setImageLater(&fetcher);
        fetcher.finishAll(); // no picture known: a failed load
    }
    EXPECT_EQ(fetcher.requestCount(), contents::maxImageAttempts);
    EXPECT_FALSE(entry->isImageSet());
    entry->setImageLater(&fetcher);
    EXPECT_TRUE(entry->isImageSet());
    EXPECT_EQ(fetcher.requestCount(), contents::maxImageAttempts);
}

TEST_F(AddressPicture, UndecodableAnswerMakesNoPicture)
{
    fetcher.setPicture(address, QByteArrayLiteral("<html>not a picture</html>"));
    const Entry entry = urlEntry(address.toString());
    entry->setImageLater(&fetcher);
    fetcher.finishAll();
    EXPECT_FALSE(entry->isImageSet());
}

TEST_F(AddressPicture, RefusedOrMalformedAddressesFetchNothing)
{
    for (const QString &text : {QStringLiteral("ftp://example.org/cat.png"), QStringLiteral("not an address"),
                                QStringLiteral("cat.png")}) {
        const Entry entry = makeEntry({plainType, stringType}, text, {{stringType, text.toUtf8()}});
        entry->setImageLater(&fetcher);
        EXPECT_EQ(entry->imageAttempts(), 1) << qPrintable(text);
        EXPECT_FALSE(entry->isImageSet()) << qPrintable(text);
    }
    EXPECT_EQ(fetcher.requestCount(), 0);
}

TEST_F(AddressPicture, PlainTextAddressIsFetchedToo)
{
    const QString text = address.toString();
    const Entry entry = makeEntry({plainType, stringType}, text, {{plainType, text.toUtf8()}});
    entry->setImageLater(&fetcher);
    EXPECT_EQ(fetcher.requestCount(), 1);
}

TEST_F(AddressPicture, AnswerForARemovedEntryIsDropped)
{
    fetcher.setPicture(address, solidPicture(4, 4, Qt::green, "PNG"));
    Entry entry = urlEntry(address.toString());
    entry->setImageLater(&fetcher);
    std::weak_ptr<contents> watch = entry;
    entry.reset();
    ASSERT_TRUE(watch.expired());
    fetcher.finishAll();
    EXPECT_EQ(fetcher.pendingCount(), 0);
}

TEST_F(AddressPicture, LatePictureAfterGivingUpIsIgnored)
{
    fetcher.setPicture(address, solidPicture(4, 4, Qt::green, "PNG"));
    const Entry entry = urlEntry(address.toString());
    for (int call = 0; call <= contents::maxImageAttempts; ++call)
        entry->setImageLater(&fetcher);
    ASSERT_TRUE(entry->isImageSet());
    const quint64 before = entry->imageGeneration();
    fetcher.finishAll();
    EXPECT_EQ(entry->imageGeneration(), before);
    EXPECT_TRUE(isBlank(entry->image()));
}

} // namespace
