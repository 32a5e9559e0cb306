#include "history/historylist.h"

#include "historyfixture.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace {

Entry entryWithText(const QString &text, int number)
{
    auto entry = std::make_shared<contents>();
    entry->setIndexCount(QString::number(number));
    entry->setContent(text);
    return entry;
}

class HistoryListTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        const QStringList texts = {QStringLiteral("Apple pie"), QStringLiteral("banana"), QStringLiteral("APPLE juice"),
                                   QStringLiteral("cherry"), QStringLiteral("pineapple")};
        for (int i = 0; i < texts.size(); ++i)
            list.addObject(entryWithText(texts.at(i), i));
    }

    void TearDown() override
    {
        EXPECT_EQ(log.warnings(), QStringList());
        EXPECT_EQ(mirror.rows(), list.arrangedObjects());
    }

    QStringList arranged() const
    {
        QStringList texts;
        for (const Entry &entry : list.arrangedObjects())
            texts.append(entry->content());
        return texts;
    }

    MessageLog log;
    HistoryList list;
    QAbstractItemModelTester tester{&list, QAbstractItemModelTester::FailureReportingMode::Warning};
    ModelMirror mirror{list};
};

TEST_F(HistoryListTest, FilterMatchesFullTextIgnoringCase)
{
    list.setFilterString(QStringLiteral("apple"));
    EXPECT_EQ(arranged(), (QStringList{QStringLiteral("Apple pie"), QStringLiteral("APPLE juice"),
                                       QStringLiteral("pineapple")}));
    EXPECT_EQ(list.rowCount(), 3);

    // The match lies beyond the cut display string.
    const QString longText = QString(200, u'x') + QStringLiteral("needle");
    list.addObject(entryWithText(longText, 9));
    list.setFilterString(QStringLiteral("NEEDLE"));
    ASSERT_EQ(list.arrangedCount(), 1);
    EXPECT_EQ(list.arrangedObjects().first()->contentOrig(), longText);

    list.setFilterString(QString());
    EXPECT_EQ(list.arrangedCount(), 6);
}

TEST_F(HistoryListTest, EntryAddedUnderFilterAppearsInOrderWhenFilterClears)
{
    list.setFilterString(QStringLiteral("cherry"));
    list.addObject(entryWithText(QStringLiteral("date"), 5));
    EXPECT_EQ(list.arrangedCount(), 1);
    EXPECT_EQ(list.allObjects().size(), 6);
    list.setFilterString(QString());
    EXPECT_EQ(arranged().last(), QStringLiteral("date"));
}

TEST_F(HistoryListTest, SelectionFollowsRemovalsAndFilter)
{
    QSignalSpy changed(&list, &HistoryList::selectionChanged);
    list.setSelectionIndexes({3, 1, 42, -1});
    EXPECT_EQ(list.selectionIndexes(), (QList<int>{1, 3}));
    ASSERT_EQ(changed.count(), 1);

    // Removing an unselected entry moves the selected rows with it.
    list.removeObject(list.arrangedObjects().at(0));
    EXPECT_EQ(list.selectionIndexes(), (QList<int>{0, 2}));
    EXPECT_EQ(list.selectedObjects().first()->content(), QStringLiteral("banana"));

    list.removeObject(list.selectedObjects().first());
    EXPECT_EQ(list.selectedObjects().size(), 1);
    EXPECT_EQ(list.selectedObjects().first()->content(), QStringLiteral("cherry"));

    list.setFilterString(QStringLiteral("apple"));
    EXPECT_TRUE(list.selectedObjects().isEmpty());
    EXPECT_EQ(changed.count(), 3);
}

TEST_F(HistoryListTest, RemovingArrangedIndexesKeepsHiddenEntries)
{
    list.setFilterString(QStringLiteral("apple"));
    list.setSelectionIndexes({0});
    list.removeObjectsAtArrangedObjectIndexes(0, list.arrangedCount());
    EXPECT_EQ(list.arrangedCount(), 0);
    EXPECT_TRUE(list.selectedObjects().isEmpty());
    list.setFilterString(QString());
    EXPECT_EQ(arranged(), (QStringList{QStringLiteral("banana"), QStringLiteral("cherry")}));
}

TEST_F(HistoryListTest, RemovingAPartialRangeClampsToTheList)
{
    list.removeObjectsAtArrangedObjectIndexes(3, 10);
    EXPECT_EQ(arranged(), (QStringList{QStringLiteral("Apple pie"), QStringLiteral("banana"),
                                       QStringLiteral("APPLE juice")}));
}

TEST_F(HistoryListTest, RemovingManyKeepsTheRestInOrder)
{
    // Few runs of rows are removed as rows, many as one reset; the mirror
    // checks that the views were told either way.
    for (const int step : {2, 7}) {
        QList<Entry> entries;
        for (int i = 0; i < 100; ++i)
            entries.append(entryWithText(QStringLiteral("e%1").arg(i), i));
        list.setContent(entries);
        list.setSelectionIndexes({1, 3});
        QList<Entry> gone;
        QStringList kept;
        for (int i = 0; i < entries.size(); ++i) {
            if (i % step == 1)
                gone.append(entries.at(i));
            else
                kept.append(entries.at(i)->content());
        }
        list.removeObjects(gone);
        EXPECT_EQ(arranged(), kept);
        EXPECT_EQ(mirror.rows(), list.arrangedObjects());
        EXPECT_EQ(list.selectedObjects().size(), step == 2 ? 0 : 1);
    }
}

TEST_F(HistoryListTest, SetContentReplacesEverythingUnderTheFilter)
{
    list.setSelectionIndexes({0});
    list.setFilterString(QStringLiteral("b"));
    list.setContent({entryWithText(QStringLiteral("bee"), 0), entryWithText(QStringLiteral("wasp"), 1)});
    EXPECT_EQ(arranged(), QStringList{QStringLiteral("bee")});
    EXPECT_EQ(list.allObjects().size(), 2);
    EXPECT_TRUE(list.selectedObjects().isEmpty());
}

TEST_F(HistoryListTest, RowsCarryTheEntry)
{
    const QModelIndex row = list.index(1);
    EXPECT_EQ(row.data().toString(), QStringLiteral("banana"));
    EXPECT_EQ(row.data(HistoryList::IndexCountRole).toString(), QStringLiteral("1"));
    EXPECT_EQ(row.data(HistoryList::EntryRole).value<Entry>(), list.arrangedObjects().at(1));
}

} // namespace
