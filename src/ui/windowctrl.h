#pragma once

#include "history/contents.h"

#include <QObject>
#include <QRectF>
#include <QString>

class MainWindow;
class QAbstractButton;
class QAbstractScrollArea;
class QFrame;
class QLabel;
class QPropertyAnimation;
class QToolBar;
class QWidget;

// The main window's behaviour: showing and hiding it, dimming it while the
// application is in the background, the compact mode, the placement of the
// preview box and the history table, the preview of what the clipboard
// holds, the title and modified mark, and the two flags of the recording
// indicator.
//
// Frames are the window's geometry(): the client area without the window
// manager's decoration, which is what setGeometry() takes and what is known
// before the window manager has framed the window.
class WindowCtrl : public QObject
{
    Q_OBJECT

public:
    static constexpr int compactWidth = 250;
    static constexpr int compactHeight = 160;
    static constexpr int boxHeight = 112;
    static constexpr int boxSideMargin = 4;
    static constexpr int bottomBandHeight = 30;
    static constexpr qreal activeOpacity = 1.0;
    static constexpr qreal inactiveOpacity = 0.8;
    static constexpr qreal settledPreviewOpacity = 0.7;
    static constexpr int previewFadeMs = 250;
    static constexpr int typesColumnMinWindowWidth = 480;

    // Remembers the window's frame as laid out so far as the full-size frame.
    explicit WindowCtrl(MainWindow *window, QObject *parent = nullptr);

    void open(QObject *sender = nullptr);
    void close(QObject *sender = nullptr);
    void _open();
    void _close();

    void willActive();
    void didActive() {}
    void willDeactive();
    void didDeactive() {}

    void compact();
    void uncompact();
    void windowDidResize();

    // Shows the entry's preview and type icon, unless its display text is
    // the one shown already.
    void setContents(const Entry &entry);
    void setTitlebar(const QString &title);
    void setDocumentDirty(bool dirty);
    bool isDocumentDirty() const { return m_documentDirty; }

    bool setOn();
    bool setOff();
    bool recIconStatus() const { return bRecIconStatus; }
    bool viewOnOff() const { return viewonandoff; }
    void setViewOnOff(bool on) { viewonandoff = on; }

    MainWindow *window() const { return myWindow; }
    const QRectF &orgRect() const { return m_orgRect; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void showPreview(const Entry &entry);
    QPropertyAnimation *fadeFor(QWidget *view);

    MainWindow *myWindow;
    bool bRecIconStatus = false;
    bool viewonandoff = true;
    bool visible = true;
    QLabel *mpCurrentTypeView;
    QLabel *mpCurrentImageView;
    QFrame *mpBox;
    QAbstractScrollArea *mpScrollView;
    QAbstractButton *compactButton = nullptr;
    QRectF m_orgRect;
    [[maybe_unused]] qint32 mStatusCompact = 0; // reserved

    QWidget *m_contentView;
    QWidget *m_statusBand;
    QToolBar *m_toolbar;
    QWidget *m_typesColumn;
    QPropertyAnimation *m_imageFade;
    QPropertyAnimation *m_typeFade;
    bool m_documentDirty = false;
    QString m_title;

    // The display text last put into the preview, shared by every window.
    static QString oldContent;
};
