#include "historyfixture.h"

#include <QSignalSpy>

using HistoryListTest = HistoryFixture;

// Removing an unselected entry moves the selected rows with it; the filter
// matches the full text ignoring case, keeps capture order and drops hidden selections.
TEST_F(HistoryListTest, SelectionFollowsRemovalsAndTheFilter)
{
    for (const char *text : {"Apple pie", "banana", "APPLE juice", "cherry", "pineapple"})
        addEntry(QString::fromLatin1(text), QString::number(nsac.allObjects().size()));
    nsac.setSelectionIndexes({3, 1, 42, -1});
    EXPECT_EQ(nsac.selectionIndexes(), (QList<int>{1, 3}));
    nsac.removeObject(nsac.arrangedObjects().at(0));
    EXPECT_EQ(nsac.selectionIndexes(), (QList<int>{0, 2}));
    nsac.removeObject(nsac.selectedObjects().first());
    EXPECT_EQ(texts(nsac.selectedObjects()), QStringList{QStringLiteral("cherry")});

    addEntry(QString(200, u'x') + QStringLiteral("apple"), QStringLiteral("5")); // beyond the cut display string
    nsac.setSelectionIndexes({0, 1});
    // A new filter moves rows in and out; the views keep their place and the shown selection stays.
    QSignalSpy reset(&nsac, &QAbstractItemModel::modelReset);
    nsac.setFilterString(QStringLiteral("apple"));
    EXPECT_EQ(arranged(&contents::indexCount), QStringLiteral("2 4 5").split(u' '));
    EXPECT_EQ(texts(nsac.selectedObjects()), QStringList{QStringLiteral("APPLE juice")});
    nsac.setFilterString(QString());
    EXPECT_EQ(arranged(&contents::indexCount), QStringLiteral("2 3 4 5").split(u' '));
    EXPECT_EQ(nsac.selectionIndexes(), QList<int>{0});
    EXPECT_EQ(reset.count(), 0);
}

// Many runs of rows go as one reset (a few, as row removals, in every other removal); the fixture checks that the
// views were told.
TEST_F(HistoryListTest, RemovingManyRunsKeepsTheRestInOrder)
{
    QList<Entry> gone;
    QList<Entry> kept;
    for (int i = 0; i < 100; ++i) {
        const Entry entry = addEntry(QString::number(i), QString::number(i));
        (i % 2 == 1 ? gone : kept).append(entry);
    }
    nsac.setSelectionIndexes({1, 2});
    nsac.removeObjects(gone);
    EXPECT_EQ(arranged(), texts(kept));
    EXPECT_EQ(texts(nsac.selectedObjects()), QStringList{QStringLiteral("2")});
}
