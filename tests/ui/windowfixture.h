#pragma once

#include "support/entries.h"
#include "ui/mainwindow.h"
#include "ui/menuitems.h"
#include "ui/windowctrl.h"

#include <QBuffer>
#include <QImage>

#include <gtest/gtest.h>

// An entry whose preview is a picture of one colour, with the given display text.
inline Entry pictureEntry(const QString &text, const QColor &colour)
{
    QImage picture(120, 60, QImage::Format_RGB32);
    picture.fill(colour);
    QByteArray tiff;
    QBuffer buffer(&tiff);
    picture.save(&buffer, "TIFF");
    const QString type = QStringLiteral("public.tiff");
    return makeEntry({type}, text, {{type, tiff}});
}

// The main window with its actions and controller, as the application builds them, framed at (100, 50, 800, 600).
class WindowFixture : public ::testing::Test
{
protected:
    // A widget of mainwindow.ui by its object name.
    template<typename T>
    T *child(const char *name) const
    {
        T *widget = window.findChild<T *>(QString::fromLatin1(name));
        EXPECT_TRUE(widget) << name;
        return widget;
    }

    static MainWindow *framed(MainWindow *window)
    {
        window->setGeometry(100, 50, 800, 600);
        return window;
    }

    MenuItems items;
    MainWindow window;
    bool installed = (window.installActions(items), true);
    WindowCtrl ctrl{framed(&window)};
};
