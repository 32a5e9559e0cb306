#pragma once

#include <QMenu>
#include <QPointer>
#include <QTableView>
#include <QTimer>

#include <chrono>

class NotificationCenter;

// The history table: one column of entry rows of one fixed height. Return,
// Backspace/Delete and double clicks become notifications for the
// controller; a right click always acts on the row under the pointer.
//
// Qt has no notion of a window's live resize, so a burst of resize events
// stands for one: while it lasts pictures are scaled the cheap way, and one
// full redraw with smooth scaling follows when the burst has ended.
class CustomTableView : public QTableView
{
    Q_OBJECT

public:
    // Fits the 80 px preview with a little room above and below.
    static constexpr int rowHeight = 84;
    static constexpr std::chrono::milliseconds liveResizeQuietTime{250};

    // Values of interpolation().
    enum Interpolation : quint32 { InterpolationDefault = 0, InterpolationNone = 1, InterpolationHigh = 3 };

    explicit CustomTableView(QWidget *parent = nullptr);

    void setNotificationCenter(NotificationCenter *center);
    // The object the notifications are posted with (the controller); may be null.
    void setNotificationObject(QObject *object);
    // The menu of a right click on a row; owned by the caller.
    void setContextMenu(QMenu *menu);
    QMenu *contextMenu() const { return m_contextMenu; }

    quint32 interpolation() const { return _interpolation; }
    // How pictures are scaled while the rows are painted.
    Qt::TransformationMode transformationMode() const;

    // The digit of the row at the rectangle's top, counted from the bottom
    // of the table: 0 for the last row. A rectangle on no row gives the row count.
    int GetKeyNumberFromRect(const QRect &cellRect) const;

public Q_SLOTS:
    void onDoubleClick();
    void viewWillStartLiveResize();
    void viewDidEndLiveResize();

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void post(const QString &name);

    QPointer<NotificationCenter> m_center;
    QPointer<QObject> m_notificationObject;
    QPointer<QMenu> m_contextMenu;
    QTimer m_liveResizeEnd;
    bool m_inLiveResize = false;
    quint32 _interpolation = InterpolationDefault;
};
