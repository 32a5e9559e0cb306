#pragma once

#include <QBuffer>
#include <QImage>

// A small PNG, transparent but for a red line, so that a lossy or alpha-dropping conversion shows.
inline QByteArray pngPicture()
{
    QImage image(24, 16, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    for (int x = 0; x < 16; ++x)
        image.setPixelColor(x, x, QColor(200, 40, 10));
    QByteArray png;
    QBuffer buffer(&png);
    image.save(&buffer, "PNG");
    return png;
}
