#pragma once

#include <QGroupBox>

// The about box's three lines, found by tag: 1 the name and build width,
// 2 the version, 3 the copyright notice. Filled once, when the box is built.
class VersionBox : public QGroupBox
{
    Q_OBJECT

public:
    static constexpr auto copyrightNotice = u"\u00a9 2026 The Quillstash developers";

    explicit VersionBox(QWidget *parent = nullptr);

    void awakeFromNib();
};
