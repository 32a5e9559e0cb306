#include "history/historylist.h"

#include <QtConcurrent/QtConcurrentMap>

#include <algorithm>
#include <vector>

namespace {

// Past this many separate runs of rows, one reset tells the views more
// cheaply than a removal or insertion each.
constexpr qsizetype maxRuns = 16;

} // namespace

HistoryList::HistoryList(QObject *parent)
    : QAbstractListModel(parent)
{
    connect(&m_selection, &QItemSelectionModel::selectionChanged, this, &HistoryList::selectionChanged);
}

void HistoryList::addObject(const Entry &entry)
{
    addObjects({entry});
}

void HistoryList::addObjects(const QList<Entry> &entries)
{
    QList<Entry> shown;
    for (const Entry &entry : entries) {
        Q_ASSERT(entry);
        m_all.append(entry);
        if (!entry->isImageSet())
            m_previewPending.append(entry);
        if (passes(*entry))
            shown.append(entry);
    }
    if (shown.isEmpty())
        return;
    const int row = int(m_arranged.size());
    beginInsertRows({}, row, row + int(shown.size()) - 1);
    m_arranged.append(shown);
    endInsertRows();
}

void HistoryList::removeObject(const Entry &entry)
{
    const qsizetype index = m_all.indexOf(entry);
    if (index < 0)
        return;
    m_all.removeAt(index);
    m_previewPending.removeOne(entry);
    const qsizetype row = m_arranged.indexOf(entry);
    if (row >= 0) {
        beginRemoveRows({}, int(row), int(row));
        m_arranged.removeAt(row);
        endRemoveRows();
    }
}

void HistoryList::removeObjectsAtArrangedObjectIndexes(qsizetype first, qsizetype count)
{
    first = std::max<qsizetype>(first, 0);
    const qsizetype last = std::min(first + count, m_arranged.size()) - 1;
    if (last < first)
        return;
    removeObjects(m_arranged.mid(first, last - first + 1));
}

void HistoryList::removeObjects(const QList<Entry> &entries)
{
    // Entries are distinct objects; looking addresses up in a sorted list
    // keeps removing many of a long history linear rather than quadratic.
    QList<const contents *> gone;
    gone.reserve(entries.size());
    for (const Entry &entry : entries)
        gone.append(entry.get());
    std::sort(gone.begin(), gone.end());
    const auto isGone = [&gone](const Entry &entry) {
        return std::binary_search(gone.cbegin(), gone.cend(), entry.get());
    };

    removeArrangedIf(isGone);
    m_all.removeIf(isGone);
    m_previewPending.removeIf(isGone);
}

void HistoryList::givePreviewAttempts(ImageFetcher *fetcher)
{
    // Pending entries are few (a preview is final after a few ticks), so
    // asking the filter about each costs little.
    for (const Entry &entry : std::as_const(m_previewPending)) {
        if (passes(*entry))
            entry->setImageLater(fetcher);
    }
    m_previewPending.removeIf([](const Entry &entry) { return entry->isImageSet(); });
}

void HistoryList::redrawArrangedPreviews(ImageFetcher *fetcher)
{
    for (const Entry &entry : std::as_const(m_arranged)) {
        entry->needUpdateImage();
        entry->setImageLater(fetcher);
        if (!entry->isImageSet() && !m_previewPending.contains(entry))
            m_previewPending.append(entry);
    }
}

template<typename Pred>
void HistoryList::removeArrangedIf(Pred isGone)
{
    // Views keep their place through row removals but not through a reset;
    // scattered rows are one reset rather than a removal (and a list move)
    // each.
    QList<std::pair<qsizetype, qsizetype>> runs; // first row, last row
    for (qsizetype row = 0; row < m_arranged.size(); ++row) {
        if (!isGone(m_arranged.at(row)))
            continue;
        if (!runs.isEmpty() && runs.last().second == row - 1)
            runs.last().second = row;
        else
            runs.append({row, row});
    }
    if (runs.isEmpty())
        return;
    if (runs.size() > maxRuns) {
        const QList<Entry> selected = selectedObjects();
        beginResetModel();
        m_arranged.removeIf(isGone);
        endResetModel();
        select(selected);
        return;
    }
    for (auto run = runs.crbegin(); run != runs.crend(); ++run) {
        beginRemoveRows({}, int(run->first), int(run->second));
        m_arranged.remove(run->first, run->second - run->first + 1);
        endRemoveRows();
    }
}

void HistoryList::setFilterString(const QString &text)
{
    if (text == m_filter)
        return;
    m_filter = text;
    m_matcher = TextMatcher(text);
    // Both lists follow capture order, so one walk over every entry finds
    // the rows that go and the rows that come, in runs. `row` is where the
    // walk stands in the list as the runs before it leave it: a run of rows
    // that go all sit at that row, one after another; a run that comes is
    // put there and the walk moves past it.
    struct Run
    {
        bool insert;
        qsizetype first, last;
        QList<Entry> entries;
    };
    // The search runs once per entry, on every core, before the walk.
    std::vector<char> passing(size_t(m_all.size()));
    findPassing(passing);

    QList<Run> runs;
    qsizetype row = 0;
    qsizetype arranged = 0;
    for (qsizetype i = 0; i < m_all.size() && runs.size() <= maxRuns; ++i) {
        const Entry &entry = m_all.at(i);
        const bool shown = arranged < m_arranged.size() && m_arranged.at(arranged) == entry;
        arranged += shown;
        const bool passes = passing[size_t(i)];
        if (shown != passes) {
            const bool extends = !runs.isEmpty() && runs.last().insert == passes
                && (passes ? runs.last().last + 1 == row : runs.last().first == row);
            if (!extends)
                runs.append({passes, row, row - 1, {}});
            ++runs.last().last;
            if (passes)
                runs.last().entries.append(entry);
        }
        row += passes;
    }
    // Past that many runs the walk stopped: one reset tells the views.
    if (runs.size() > maxRuns) {
        const QList<Entry> selected = selectedObjects();
        beginResetModel();
        m_arranged.clear();
        for (qsizetype i = 0; i < m_all.size(); ++i) {
            if (passing[size_t(i)])
                m_arranged.append(m_all.at(i));
        }
        endResetModel();
        select(selected);
        return;
    }
    for (const Run &run : std::as_const(runs)) {
        if (run.insert) {
            beginInsertRows({}, int(run.first), int(run.last));
            for (qsizetype i = 0; i < run.entries.size(); ++i)
                m_arranged.insert(run.first + i, run.entries.at(i));
            endInsertRows();
        } else {
            beginRemoveRows({}, int(run.first), int(run.last));
            m_arranged.remove(run.first, run.last - run.first + 1);
            endRemoveRows();
        }
    }
}

void HistoryList::findPassing(std::vector<char> &passing) const
{
    // A search over a long history reads every text it holds, which one core
    // cannot fetch from memory as fast as the user expects an answer: the
    // entries are searched in slices, on every core.
    constexpr qsizetype sliceSize = 4096;
    const qsizetype count = m_all.size();
    if (count <= sliceSize) {
        for (qsizetype i = 0; i < count; ++i)
            passing[size_t(i)] = passes(*m_all.at(i));
        return;
    }
    QList<qsizetype> slices;
    for (qsizetype first = 0; first < count; first += sliceSize)
        slices.append(first);
    QtConcurrent::blockingMap(slices, [&](qsizetype first) {
        const qsizetype end = std::min(first + sliceSize, count);
        for (qsizetype i = first; i < end; ++i)
            passing[size_t(i)] = passes(*m_all.at(i));
    });
}

QList<Entry> HistoryList::selectedObjects() const
{
    QList<Entry> selected;
    for (int row : selectionIndexes())
        selected.append(m_arranged.at(row));
    return selected;
}

void HistoryList::setSelectionIndexes(const QList<int> &rows)
{
    QItemSelection selection;
    for (int row : rows) {
        if (row >= 0 && row < m_arranged.size())
            selection.select(index(row), index(row));
    }
    m_selection.select(selection, QItemSelectionModel::ClearAndSelect);
}

QList<int> HistoryList::selectionIndexes() const
{
    QList<int> rows;
    for (const QModelIndex &selected : m_selection.selectedIndexes())
        rows.append(selected.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

// Selects the entries again after a reset, which clears the selection
// without a word: when none of them is left, nothing else would say so.
void HistoryList::select(const QList<Entry> &entries)
{
    QList<int> rows;
    for (const Entry &entry : entries) {
        if (const qsizetype row = m_arranged.indexOf(entry); row >= 0)
            rows.append(int(row));
    }
    setSelectionIndexes(rows);
    if (rows.isEmpty() && !entries.isEmpty())
        Q_EMIT selectionChanged();
}

int HistoryList::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_arranged.size());
}

QVariant HistoryList::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const Entry &entry = m_arranged.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return entry->content();
    case EntryRole:
        return QVariant::fromValue(entry);
    case IndexCountRole:
        return entry->indexCount();
    case TypeIconRole:
        return entry->typeImage();
    default:
        return {};
    }
}

bool HistoryList::passes(const contents &entry) const
{
    return m_matcher.matches(entry.contentOrigUtf8());
}
