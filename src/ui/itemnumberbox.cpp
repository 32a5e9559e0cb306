#include "ui/itemnumberbox.h"

#include "ui/viewwithtag.h"

#include <QAbstractSlider>
#include <QLabel>

ItemNumberBox::ItemNumberBox(QWidget *parent)
    : QGroupBox(parent)
{
}

void ItemNumberBox::syncNumber()
{
    auto *number = qobject_cast<QLabel *>(viewWithTag(this, numberTag));
    auto *slider = qobject_cast<QAbstractSlider *>(viewWithTag(this, sliderTag));
    if (number && slider)
        number->setNum(slider->value());
}

void ItemNumberBox::paintEvent(QPaintEvent *event)
{
    syncNumber();
    QGroupBox::paintEvent(event);
}
