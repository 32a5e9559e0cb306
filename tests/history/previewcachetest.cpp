#include "history/previewcache.h"

#include "platform/fake/fakeimagefetcher.h"

#include <QBuffer>

#include <gtest/gtest.h>

namespace {

Entry addressEntry(const QString &address)
{
    auto entry = std::make_shared<contents>();
    entry->setContent(address);
    entry->setTypes({QStringLiteral("public.url")});
    entry->setDatas({{QStringLiteral("public.url"), address.toUtf8()}});
    return entry;
}

QByteArray redPng()
{
    QImage image(8, 8, QImage::Format_RGB32);
    image.fill(Qt::red);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

TEST(PreviewCache, RendersAgainWhenTheEntryChanges)
{
    PreviewCache cache;
    FakeImageFetcher fetcher;
    const QUrl address(QStringLiteral("https://example.org/red.png"));
    fetcher.setPicture(address, redPng());
    const Entry entry = addressEntry(address.toString());

    EXPECT_EQ(qAlpha(cache.preview(entry).pixel(10, 10)), 0);
    entry->setImageLater(&fetcher);
    fetcher.finishAll();
    EXPECT_NE(qAlpha(cache.preview(entry).pixel(10, 10)), 0);
}

TEST(PreviewCache, StaysWithinItsBudget)
{
    constexpr qsizetype budget = 1024 * 1024;
    PreviewCache cache(budget);
    QList<Entry> entries;
    for (int i = 0; i < 40; ++i) {
        entries.append(addressEntry(QStringLiteral("https://example.org/%1.png").arg(i)));
        EXPECT_EQ(cache.preview(entries.last()).size(), QSize(contents::previewWidth, contents::previewHeight));
    }
    EXPECT_LE(cache.totalBytes(), budget);
    EXPECT_GT(cache.totalBytes(), budget / 2);
}

} // namespace
