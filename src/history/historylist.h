#pragma once

#include "history/contents.h"
#include "history/textmatcher.h"

#include <QAbstractListModel>
#include <QItemSelectionModel>
#include <QList>

#include <vector>

class ImageFetcher;

// The history list: every entry in capture order and the arranged entries
// (those that pass the search filter, in the same order). Model rows are the
// arranged entries. The selection is the one selection model over those rows,
// which the history table shows and changes; no other copy of it is kept.
class HistoryList : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role { EntryRole = Qt::UserRole + 1, IndexCountRole, TypeIconRole };

    explicit HistoryList(QObject *parent = nullptr);

    const QList<Entry> &allObjects() const { return m_all; }
    const QList<Entry> &arrangedObjects() const { return m_arranged; }
    qsizetype arrangedCount() const { return m_arranged.size(); }

    void addObject(const Entry &entry);
    // Appends many entries (an opened file) as one insertion.
    void addObjects(const QList<Entry> &entries);
    void removeObject(const Entry &entry);
    // Removes many entries in one pass (trimming a long history).
    void removeObjects(const QList<Entry> &entries);
    void removeObjectsAtArrangedObjectIndexes(qsizetype first, qsizetype count);

    // Entries pass when their contentOrig contains the text, ignoring case.
    // An empty text shows every entry.
    void setFilterString(const QString &text);
    const QString &filterString() const { return m_filter; }

    // One more preview attempt for each arranged entry whose preview is not
    // final yet; entries with a final preview are not visited.
    void givePreviewAttempts(ImageFetcher *fetcher);
    // The shown entries' previews are made again (the drawing font changed);
    // those not final at once get the tick's attempts as new entries do.
    void redrawArrangedPreviews(ImageFetcher *fetcher);

    // The selection the history table uses as its own.
    QItemSelectionModel *selectionModel() { return &m_selection; }
    // Selected entries in row order.
    QList<Entry> selectedObjects() const;
    // Rows of arranged entries; rows out of range are ignored.
    void setSelectionIndexes(const QList<int> &rows);
    QList<int> selectionIndexes() const;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

Q_SIGNALS:
    // The selected entries changed, by the table or by a change of the list.
    void selectionChanged();

private:
    bool passes(const contents &entry) const;
    // Whether each entry passes the filter, in the order of m_all.
    void findPassing(std::vector<char> &passing) const;
    template<typename Pred>
    void removeArrangedIf(Pred isGone);
    void select(const QList<Entry> &entries);

    QList<Entry> m_all;
    QList<Entry> m_arranged;
    QString m_filter;
    TextMatcher m_matcher;
    // Entries whose preview is not final yet, in capture order.
    QList<Entry> m_previewPending;
    QItemSelectionModel m_selection{this};
};
