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

// A right click makes the row under the pointer the whole selection before the menu opens, so that its commands
// never act on an older one; beneath the rows it clears the selection and opens nothing. A double click posts.
TEST_F(CustomTableViewTest, RightClickSelectsOnlyTheRowUnderThePointerAndDoubleClickPosts)
{
    addTexts(4); // 4 x 84 px rows leave room beneath the last one
    view.resize(600, 500);
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
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

    QSignalSpy posted(&center, &NotificationCenter::notificationPosted);
    // A widget's double click in QTest is the second press alone.
    QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::NoModifier, rowCenter(2));
    QTest::mouseDClick(view.viewport(), Qt::LeftButton, Qt::NoModifier, rowCenter(2));
    ASSERT_EQ(posted.count(), 1);
    EXPECT_EQ(posted.at(0).at(0).toString(), QStringLiteral("OnDoubleClickOnTable"));
}
