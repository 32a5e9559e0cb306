#include "ui/customtableview.h"

#include "ui/notificationcenter.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QResizeEvent>

namespace {

enum class TableKey { None, Delete, Return };

// Only the main Return key restores: keypad Enter keeps the table's own meaning.
TableKey tableKey(const QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Backspace:
    case Qt::Key_Delete:
        return TableKey::Delete;
    case Qt::Key_Return:
        return TableKey::Return;
    default:
        return TableKey::None;
    }
}

} // namespace

CustomTableView::CustomTableView(QWidget *parent)
    : QTableView(parent)
{
    setSelectionBehavior(SelectRows);
    setSelectionMode(ExtendedSelection);
    setEditTriggers(NoEditTriggers);
    setShowGrid(false);
    setWordWrap(false);
    setAlternatingRowColors(true);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    viewport()->setAttribute(Qt::WA_Hover);

    // One fixed height for every row, so that a long history is never measured.
    QHeaderView *rows = verticalHeader();
    rows->hide();
    rows->setSectionResizeMode(QHeaderView::Fixed);
    rows->setMinimumSectionSize(1);
    rows->setDefaultSectionSize(rowHeight);
    QHeaderView *columns = horizontalHeader();
    columns->hide();
    columns->setStretchLastSection(true);

    connect(this, &QAbstractItemView::doubleClicked, this, &CustomTableView::onDoubleClick);

    m_liveResizeEnd.setSingleShot(true);
    m_liveResizeEnd.setInterval(liveResizeQuietTime);
    connect(&m_liveResizeEnd, &QTimer::timeout, this, &CustomTableView::viewDidEndLiveResize);
}

void CustomTableView::setNotificationCenter(NotificationCenter *center)
{
    m_center = center;
}

void CustomTableView::setNotificationObject(QObject *object)
{
    m_notificationObject = object;
}

void CustomTableView::setContextMenu(QMenu *menu)
{
    m_contextMenu = menu;
}

Qt::TransformationMode CustomTableView::transformationMode() const
{
    return _interpolation == InterpolationNone ? Qt::FastTransformation : Qt::SmoothTransformation;
}

int CustomTableView::GetKeyNumberFromRect(const QRect &cellRect) const
{
    const int rows = model() ? model()->rowCount(rootIndex()) : 0;
    return rows - rowAt(cellRect.top()) - 1;
}

void CustomTableView::onDoubleClick()
{
    post(NotificationCenter::onDoubleClickOnTable);
}

void CustomTableView::viewWillStartLiveResize()
{
    _interpolation = InterpolationNone;
}

void CustomTableView::viewDidEndLiveResize()
{
    m_inLiveResize = false;
    _interpolation = InterpolationHigh;
    viewport()->update();
}

bool CustomTableView::event(QEvent *event)
{
    // The table's keys win over a window shortcut on the same key (a Delete
    // action in the menu), so that one key press removes one entry.
    if (event->type() == QEvent::ShortcutOverride) {
        auto *key = static_cast<QKeyEvent *>(event);
        if (tableKey(key) != TableKey::None && (key->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier) {
            event->accept();
            return true;
        }
    }
    return QTableView::event(event);
}

void CustomTableView::keyPressEvent(QKeyEvent *event)
{
    switch (tableKey(event)) {
    case TableKey::Delete:
        post(NotificationCenter::delKeyPressedOnTable);
        event->accept();
        return;
    case TableKey::Return:
        post(NotificationCenter::retKeyPressedOnTable);
        event->accept();
        return;
    case TableKey::None:
        QTableView::keyPressEvent(event);
        return;
    }
}

void CustomTableView::contextMenuEvent(QContextMenuEvent *event)
{
    event->accept();
    QItemSelectionModel *selection = selectionModel();
    if (!model() || !selection)
        return;

    if (event->reason() == QContextMenuEvent::Keyboard) {
        // The menu key acts on the selection the user already has.
        const QModelIndex current = currentIndex();
        if (m_contextMenu && selection->hasSelection() && current.isValid())
            m_contextMenu->popup(viewport()->mapToGlobal(visualRect(current).center()));
        return;
    }

    // The row under the pointer becomes the whole selection before the menu
    // opens, so that its commands never act on an older selection.
    const int row = rowAt(event->pos().y());
    if (row < 0) {
        selection->clearSelection();
        return;
    }
    const QModelIndex index = model()->index(row, 0, rootIndex());
    selection->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    if (m_contextMenu)
        m_contextMenu->popup(event->globalPos());
}

void CustomTableView::resizeEvent(QResizeEvent *event)
{
    QTableView::resizeEvent(event);
    // The first size a widget gets when it is shown is no resize by the user.
    if (!isVisible() || !event->oldSize().isValid())
        return;
    if (!m_inLiveResize) {
        m_inLiveResize = true;
        viewWillStartLiveResize();
    }
    m_liveResizeEnd.start();
}

void CustomTableView::post(const QString &name)
{
    if (m_center)
        m_center->postNotificationName(name, m_notificationObject);
}
