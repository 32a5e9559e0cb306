#include "ui/aboutpanel.h"

#include "ui/versionbox.h"
#include "ui/versiontitleimageview.h"

#include <QDialogButtonBox>
#include <QVBoxLayout>

AboutPanel::AboutPanel(Workspace &workspace, QWidget *parent)
    : QDialog(parent)
    , m_titleView(new VersionTitleImageView(workspace, this))
    , m_versionBox(new VersionBox(this))
{
    setWindowTitle(QStringLiteral("About Quillstash"));
    m_titleView->setProperty("tag", VersionTitleImageView::homePageTag);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_titleView);
    layout->addWidget(m_versionBox);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

void AboutPanel::orderFront(QObject *sender)
{
    Q_UNUSED(sender);
    show();
    raise();
    activateWindow();
}
