#include "ui/searchfield.h"

#include <QKeyEvent>

SearchField::SearchField(QWidget *parent)
    : QLineEdit(parent)
{
    setPlaceholderText(QStringLiteral("Search"));
    setClearButtonEnabled(true);
}

void SearchField::keyPressEvent(QKeyEvent *event)
{
    // Shift, Ctrl and Alt with an arrow still select and move by words.
    const bool plain = (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        event->accept();
        Q_EMIT searchRequested(text());
        return;
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
        if (plain) {
            event->accept();
            return;
        }
        break;
    default:
        break;
    }
    QLineEdit::keyPressEvent(event);
}
