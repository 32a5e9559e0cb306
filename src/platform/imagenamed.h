#pragma once

#include <QIcon>
#include <QImage>
#include <QSize>
#include <QString>
#include <QStringList>

// The program's own pictures (type icons, recording signs, the application
// icon), drawn with QPainter at whatever size is asked for, so that a 16 px
// table cell, a 22 px tray and a hi-dpi toolbar each get a sharp picture
// instead of a scaled bitmap. A name is the same picture with or without
// ".png", as the names came from picture files.
class ImageNamed
{
public:
    ImageNamed() = delete;

    // A transparent picture of size x devicePixelRatio pixels, carrying that
    // ratio; null for a name that is not one of ours or an empty size.
    static QImage imageNamed(const QString &name, const QSize &size, qreal devicePixelRatio = 1.0);

    // An icon that draws the named picture anew at each size it is asked for;
    // a null icon for a name that is not one of ours.
    static QIcon iconNamed(const QString &name);

    static QStringList names();
};
