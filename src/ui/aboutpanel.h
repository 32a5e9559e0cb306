#pragma once

#include <QDialog>

class VersionBox;
class VersionTitleImageView;
class Workspace;

// The about box: the title picture, which opens the home page on a double
// click, above the name, build width, version and copyright lines.
class AboutPanel : public QDialog
{
    Q_OBJECT

public:
    explicit AboutPanel(Workspace &workspace, QWidget *parent = nullptr);

    VersionTitleImageView *titleView() const { return m_titleView; }
    VersionBox *versionBox() const { return m_versionBox; }

public Q_SLOTS:
    // Shows the panel, or brings it to the front when it is shown already.
    void orderFront(QObject *sender = nullptr);

private:
    VersionTitleImageView *m_titleView;
    VersionBox *m_versionBox;
};
