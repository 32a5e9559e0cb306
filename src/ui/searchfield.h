#pragma once

#include <QLineEdit>

// The search field of the main window. The search runs only when Return is
// pressed, never per keystroke: filtering a long history is not free, and
// clearing the field shows every entry again only with the next Return.
// The arrow keys do nothing here: they neither move the caret nor reach
// the history table.
class SearchField : public QLineEdit
{
    Q_OBJECT

public:
    explicit SearchField(QWidget *parent = nullptr);

Q_SIGNALS:
    void searchRequested(const QString &text);

protected:
    void keyPressEvent(QKeyEvent *event) override;
};
