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

TEST(SearchFieldTest, ReturnSearchesAndArrowsDoNothing)
{
    KeyCatcher parent;
    auto *field = new SearchField(&parent);
    QSignalSpy searched(field, &SearchField::searchRequested);
    QTest::keyClicks(field, QStringLiteral("Apple"));
    EXPECT_EQ(searched.count(), 0) << "typing never filters";

    field->setCursorPosition(2);
    for (const Qt::Key key : {Qt::Key_Left, Qt::Key_Right, Qt::Key_Up, Qt::Key_Down}) {
        QTest::keyClick(field, key);
        EXPECT_EQ(field->cursorPosition(), 2) << key;
    }
    EXPECT_EQ(parent.presses, 0) << "arrows must not reach the table";
    EXPECT_EQ(searched.count(), 0);
    QTest::keyClick(field, Qt::Key_Left, Qt::ShiftModifier); // selecting still works
    EXPECT_EQ(field->selectedText(), QStringLiteral("p"));

    QTest::keyClick(field, Qt::Key_Return);
    ASSERT_EQ(searched.count(), 1);
    EXPECT_EQ(searched.at(0).at(0).toString(), QStringLiteral("Apple"));

    field->clear(); // the clear button: nothing is filtered until Return
    EXPECT_EQ(searched.count(), 1);
    QTest::keyClick(field, Qt::Key_Return);
    ASSERT_EQ(searched.count(), 2);
    EXPECT_EQ(searched.at(1).at(0).toString(), QString());
    EXPECT_EQ(field->placeholderText(), QStringLiteral("Search"));
}

} // namespace
