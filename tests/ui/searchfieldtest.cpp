#include "ui/searchfield.h"

#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace {

class KeyCatcher : public QWidget
{
public:
    int presses = 0;

protected:
    void keyPressEvent(QKeyEvent *) override { ++presses; }
};

// The desktop tests search on Return; here typing alone and the arrows, which must not reach the table.
TEST(SearchFieldTest, TypingAndArrowsNeitherSearchNorMoveNorReachTheTable)
{
    KeyCatcher parent;
    auto *field = new SearchField(&parent);
    QSignalSpy searched(field, &SearchField::searchRequested);
    QTest::keyClicks(field, QStringLiteral("Apple"));
    field->setCursorPosition(2);
    for (const Qt::Key key : {Qt::Key_Left, Qt::Key_Right, Qt::Key_Up, Qt::Key_Down}) {
        QTest::keyClick(field, key);
        EXPECT_EQ(field->cursorPosition(), 2) << key;
    }
    EXPECT_EQ(parent.presses, 0) << "arrows must not reach the table";
    EXPECT_EQ(searched.count(), 0);
}

} // namespace
