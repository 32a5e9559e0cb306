#include "tablefixture.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>

using CustomTableViewTest = TableFixture;

// The desktop tests press Return and Delete; Backspace posts as Delete does, for the controller to act on, and the
// keypad's Enter and a letter post nothing.
TEST_F(CustomTableViewTest, BackspacePostsLikeDeleteAndKeypadEnterNothing)
{
    addTexts(1);
    QSignalSpy posted(&center, &NotificationCenter::notificationPosted);
    QTest::keyClick(&view, Qt::Key_Enter, Qt::KeypadModifier);
    QTest::keyClick(&view, Qt::Key_A);
    QTest::keyClick(&view, Qt::Key_Backspace);
    ASSERT_EQ(posted.size(), 1);
    EXPECT_EQ(posted[0][0].toString(), "DelKeyPressedOnTable");
}

TEST_F(CustomTableViewTest, DoubleClickOnARowPosts)
{
    addTexts(3);
    view.resize(600, 400);
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    QSignalSpy posted(&center, &NotificationCenter::notificationPosted);
    // A widget's double click in QTest is the second press alone.
    QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::NoModifier, rowCenter(2));
    QTest::mouseDClick(view.viewport(), Qt::LeftButton, Qt::NoModifier, rowCenter(2));
    ASSERT_EQ(posted.count(), 1);
    EXPECT_EQ(posted.at(0).at(0).toString(), QStringLiteral("OnDoubleClickOnTable"));
}

TEST_F(CustomTableViewTest, RightClickSelectsOnlyTheRowUnderThePointer)
{
    addTexts(4); // 4 x 84 px rows leave room beneath the last one
    view.resize(600, 500);
    view.show();
    QMenu menu;
    menu.addAction(QStringLiteral("Remove"));
    view.setContextMenu(&menu);

    nsac.setSelectionIndexes({0, 1});
    const auto rightClick = [&](QPoint pos) {
        QContextMenuEvent event(QContextMenuEvent::Mouse, pos, view.viewport()->mapToGlobal(pos));
        QCoreApplication::sendEvent(view.viewport(), &event);
    };
    rightClick(rowCenter(3));
    EXPECT_EQ(nsac.selectionIndexes(), QList<int>{3});
    EXPECT_EQ(QApplication::activePopupWidget(), &menu);
    menu.close();

    rightClick(QPoint(20, 4 * 84 + 40));
    EXPECT_TRUE(nsac.selectionIndexes().isEmpty());
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

// The digit counts from the bottom row when scrolled; below every row counts as row -1, as a click beneath does.
TEST_F(CustomTableViewTest, KeyNumberCountsFromTheLastRowWhenScrolled)
{
    addTexts(12);
    view.resize(600, 300);
    view.show();
    view.scrollToBottom();
    for (const auto &[row, digit] : {std::pair{11, 0}, {9, 2}, {1, 10}})
        EXPECT_EQ(view.GetKeyNumberFromRect(view.visualRect(nsac.index(row))), digit) << row;
    EXPECT_EQ(view.GetKeyNumberFromRect(QRect(0, 300, 10, 10)), 12);
}
