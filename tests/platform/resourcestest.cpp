#include <QImage>

#include <gtest/gtest.h>

// The table asks for these pictures by name from the compiled-in resources.
TEST(Resources, TypeIconsAreCompiledInAs32PixelPictures)
{
    for (const char *name : {":/icontypes_image", ":/icontypes_url", ":/icontypes_text", ":/icontypes_unknown"}) {
        const QImage icon(QString::fromLatin1(name));
        ASSERT_FALSE(icon.isNull()) << name;
        EXPECT_EQ(icon.size(), QSize(32, 32)) << name;
        EXPECT_TRUE(icon.hasAlphaChannel()) << name;
    }
}
