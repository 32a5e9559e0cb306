#pragma once

#include <QGroupBox>

// A box that shows a control's number: on each draw, the label tagged 20000
// takes the value of the slider tagged 20001. The form redraws the box
// whenever the slider moves, so the number follows the slider.
class ItemNumberBox : public QGroupBox
{
    Q_OBJECT

public:
    static constexpr int numberTag = 20000;
    static constexpr int sliderTag = 20001;

    explicit ItemNumberBox(QWidget *parent = nullptr);

    void syncNumber();

protected:
    void paintEvent(QPaintEvent *event) override;
};
