#include "history/historylist.h"

#include <algorithm>

HistoryList::HistoryList(QObject *parent)
    : QAbstractListModel(parent)
{
}

void HistoryList::addObject(const Entry &entry)
{
    Q_ASSERT(entry);
    m_all.append(entry);
    if (!passes(*entry))
        return;
    const int row = int(m_arranged.size());
    beginInsertRows({}, row, row);
    m_arranged.append(entry);
    endInsertRows();
}

void HistoryList::removeObject(const Entry &entry)
{
    const qsizetype index = m_all.indexOf(entry);
    if (index < 0)
        return;
    m_all.removeAt(index);
    const qsizetype row = m_arranged.indexOf(entry);
    if (row >= 0) {
        beginRemoveRows({}, int(row), int(row));
        m_arranged.removeAt(row);
        endRemoveRows();
    }
    if (m_selected.removeAll(entry) > 0)
        Q_EMIT selectionChanged();
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
    if (m_selected.removeIf(isGone) > 0)
        Q_EMIT selectionChanged();
}

template<typename Pred>
void HistoryList::removeArrangedIf(Pred isGone)
{
    // Views keep their place through row removals but not through a reset;
    // scattered rows are one reset rather than a removal (and a list move)
    // each.
    constexpr qsizetype maxRuns = 16;
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
        beginResetModel();
        m_arranged.removeIf(isGone);
        endResetModel();
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
    beginResetModel();
    m_filter = text;
    rearrange();
    const qsizetype removed = m_selected.removeIf([this](const Entry &entry) { return !passes(*entry); });
    endResetModel();
    if (removed > 0)
        Q_EMIT selectionChanged();
}

QList<Entry> HistoryList::selectedObjects() const
{
    return m_selected;
}

void HistoryList::setSelectionIndexes(const QList<int> &rows)
{
    QList<int> sorted = rows;
    std::sort(sorted.begin(), sorted.end());
    sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());

    QList<Entry> selected;
    for (int row : sorted) {
        if (row >= 0 && row < m_arranged.size())
            selected.append(m_arranged.at(row));
    }
    if (selected == m_selected)
        return;
    m_selected = selected;
    Q_EMIT selectionChanged();
}

QList<int> HistoryList::selectionIndexes() const
{
    QList<int> rows;
    for (const Entry &entry : m_selected)
        rows.append(int(m_arranged.indexOf(entry)));
    return rows;
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
    return m_filter.isEmpty() || entry.contentOrig().contains(m_filter, Qt::CaseInsensitive);
}

void HistoryList::rearrange()
{
    m_arranged.clear();
    for (const Entry &entry : std::as_const(m_all)) {
        if (passes(*entry))
            m_arranged.append(entry);
    }
}
