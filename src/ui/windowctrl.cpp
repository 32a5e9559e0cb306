#include "ui/windowctrl.h"

#include "ui/mainwindow.h"
#include "ui_mainwindow.h"

#include <QCloseEvent>
#include <QGraphicsOpacityEffect>
#include <QGuiApplication>
#include <QPropertyAnimation>
#include <QToolButton>

#include <algorithm>

QString WindowCtrl::oldContent;

WindowCtrl::WindowCtrl(MainWindow *window, QObject *parent)
    : QObject(parent)
    , myWindow(window)
    , mpCurrentTypeView(window->ui().mpCurrentTypeView)
    , mpCurrentImageView(window->ui().mpCurrentImageView)
    , mpBox(window->ui().mpBox)
    , mpScrollView(window->ui().mpScrollView)
    , compactButton(window->compactButton())
    , m_orgRect(window->geometry())
    , m_contentView(window->ui().contentView)
    , m_statusBand(window->ui().statusBand)
    , m_toolbar(window->ui().toolbar)
    , m_typesColumn(window->ui().typesColumn)
    , m_imageFade(fadeFor(mpCurrentImageView))
    , m_typeFade(fadeFor(mpCurrentTypeView))
{
    myWindow->installEventFilter(this);
    m_contentView->installEventFilter(this);
    windowDidResize();
}

QPropertyAnimation *WindowCtrl::fadeFor(QWidget *view)
{
    auto *effect = new QGraphicsOpacityEffect(view);
    effect->setOpacity(activeOpacity);
    view->setGraphicsEffect(effect);
    auto *fade = new QPropertyAnimation(effect, "opacity", this);
    fade->setStartValue(activeOpacity);
    fade->setEndValue(settledPreviewOpacity);
    fade->setDuration(previewFadeMs);
    return fade;
}

void WindowCtrl::open(QObject *)
{
    _open();
}

void WindowCtrl::close(QObject *)
{
    _close();
}

void WindowCtrl::_open()
{
    myWindow->setWindowState(myWindow->windowState() & ~Qt::WindowMinimized);
    myWindow->show();
    myWindow->raise();
    myWindow->activateWindow();
    visible = true;
}

void WindowCtrl::_close()
{
    myWindow->hide();
    visible = false;
}

void WindowCtrl::willActive()
{
    myWindow->setWindowOpacity(activeOpacity);
}

void WindowCtrl::willDeactive()
{
    myWindow->setWindowOpacity(inactiveOpacity);
}

void WindowCtrl::compact()
{
    m_contentView->update();
    const QRect frame = myWindow->geometry();
    // An already small window (compact, or narrowed by the user) is not
    // remembered, so that uncompact returns to the last full-size frame.
    if (frame.width() > compactWidth && frame.height() > compactHeight)
        m_orgRect = frame;
    m_toolbar->setVisible(false);
    // Screen y grows downwards here, so keeping the top-left corner keeps x and y.
    myWindow->setGeometry(QRect(m_orgRect.topLeft().toPoint(), QSize(compactWidth, compactHeight)));
}

void WindowCtrl::uncompact()
{
    m_contentView->update();
    m_toolbar->setVisible(true);
    myWindow->setGeometry(m_orgRect.toRect());
}

void WindowCtrl::windowDidResize()
{
    // The box runs along the top, the table below it down to the status
    // band at the bottom. A window lower than box and band together (the
    // compact one) shows the box over the band and no table.
    const QRect content = m_contentView->rect();
    const int x = content.x();
    const int w = content.width();
    const int h = content.height();
    const int tableHeight = std::max(0, h - bottomBandHeight - boxHeight);
    mpBox->setGeometry(x + boxSideMargin, 0, w - 2 * boxSideMargin, boxHeight);
    mpScrollView->setGeometry(x, boxHeight, w, tableHeight);
    mpScrollView->setVisible(tableHeight > 0);
    m_statusBand->setGeometry(x, h - bottomBandHeight, w, bottomBandHeight);
    mpBox->raise();
    // A narrow box (the compact window) keeps the preview and drops the
    // types column, which would only show clipped names there.
    m_typesColumn->setVisible(w >= typesColumnMinWindowWidth);
}

void WindowCtrl::setContents(const Entry &entry)
{
    if (!entry)
        return;
    if (oldContent.isNull()) {
        oldContent = entry->content();
        showPreview(entry);
    }
    if (oldContent.compare(entry->content()) == 0)
        return;
    oldContent = entry->content();
    showPreview(entry);
}

void WindowCtrl::showPreview(const Entry &entry)
{
    // A fade still running restarts from full opacity.
    for (QPropertyAnimation *fade : {m_imageFade, m_typeFade}) {
        fade->stop();
        static_cast<QGraphicsOpacityEffect *>(fade->targetObject())->setOpacity(activeOpacity);
    }
    mpCurrentImageView->setPixmap(QPixmap::fromImage(entry->image()));
    mpCurrentTypeView->setPixmap(QPixmap::fromImage(entry->typeImage()));
    m_imageFade->start();
    m_typeFade->start();
}

void WindowCtrl::setTitlebar(const QString &title)
{
    if (title == m_title)
        return;
    m_title = title;
    // Qt takes "[*]" in a title for its modified mark and "[*][*]" for the
    // text itself; a file may well be named so.
    myWindow->setWindowTitle(QString(title).replace(QLatin1String("[*]"), QLatin1String("[*][*]")));
}

void WindowCtrl::setDocumentDirty(bool dirty)
{
    // The title carries its own "*". Qt's modified mark needs a "[*]"
    // placeholder in the title and warns on X11 without one, so the mark is
    // kept here rather than on the window.
    m_documentDirty = dirty;
}

bool WindowCtrl::setOn()
{
    if (bRecIconStatus)
        return false;
    bRecIconStatus = true;
    return true;
}

bool WindowCtrl::setOff()
{
    if (!bRecIconStatus)
        return false;
    bRecIconStatus = false;
    return true;
}

bool WindowCtrl::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_contentView && event->type() == QEvent::Resize) {
        windowDidResize();
    } else if (watched == myWindow && event->type() == QEvent::Close && event->spontaneous()) {
        // The window manager's close button hides the window; the program
        // lives on in the tray. A close from the program itself (quitting
        // closes every window) is let through, or the quit would be refused.
        event->ignore();
        _close();
        return true;
    }
    return QObject::eventFilter(watched, event);
}
