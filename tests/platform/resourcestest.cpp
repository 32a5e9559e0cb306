#include <QFile>
#include <QImage>

#include <gtest/gtest.h>

namespace {

class TypeIcon : public ::testing::TestWithParam<const char *>
{
};

// The table asks for these pictures by name from the compiled-in resources.
TEST_P(TypeIcon, IsCompiledInAsA32PixelPicture)
{
    const QString name = QStringLiteral(":/") + QLatin1String(GetParam());
    const QImage icon(name);
    ASSERT_FALSE(icon.isNull()) << qPrintable(name);
    EXPECT_EQ(icon.size(), QSize(32, 32));
    EXPECT_TRUE(icon.hasAlphaChannel());
}

INSTANTIATE_TEST_SUITE_P(Names, TypeIcon,
                         ::testing::Values("icontypes_image", "icontypes_url", "icontypes_text",
                                           "icontypes_unknown"));

TEST(Packaging, DesktopEntryOpensBackups)
{
    QFile entry(QStringLiteral(QUILLSTASH_SOURCE_DATA_DIR "/quillstash.desktop"));
    ASSERT_TRUE(entry.open(QIODevice::ReadOnly));
    const QList<QByteArray> lines = entry.readAll().split('\n');
    EXPECT_EQ(lines.first(), QByteArray("[Desktop Entry]"));
    for (const char *line : {"Type=Application", "Name=Quillstash", "Exec=quillstash %f",
                             "Icon=quillstash", "MimeType=application/x-quillstash-backup;",
                             "Categories=Utility;"})
        EXPECT_TRUE(lines.contains(QByteArray(line))) << line;

    QFile mime(QStringLiteral(QUILLSTASH_SOURCE_DATA_DIR "/quillstash-mime.xml"));
    ASSERT_TRUE(mime.open(QIODevice::ReadOnly));
    const QByteArray xml = mime.readAll();
    EXPECT_TRUE(xml.contains("type=\"application/x-quillstash-backup\""));
    EXPECT_TRUE(xml.contains("pattern=\"*.qs_backup\""));
}

} // namespace
