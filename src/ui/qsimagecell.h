#pragma once

#include <QStyledItemDelegate>

class PreviewCache;

// Paints one row of the history table: the entry's number, its type icon,
// its preview picture and its text, and on the ten bottom rows the hot key
// that puts that row back on the clipboard. Pictures come from the shared
// cache of rendered previews; nothing is kept per entry here.
class QSImageCell : public QStyledItemDelegate
{
    Q_OBJECT

public:
    explicit QSImageCell(PreviewCache &previews, QObject *parent = nullptr);

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

    // The stamp of the row whose hot key digit is n: "Ctrl+Alt+n".
    static QString stampText(int n);
    // The stamp of the cell at option.rect in option.widget, or an empty
    // string for rows that have none (all but the ten bottom rows).
    static QString stampFor(const QStyleOptionViewItem &option);

private:
    void paintStamp(QPainter *painter, const QRect &cell, const QString &label) const;

    PreviewCache &m_previews;
};
