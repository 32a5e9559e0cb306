#include "ui/versionbox.h"

#include "ui/viewwithtag.h"

#include <QCoreApplication>
#include <QLabel>
#include <QVBoxLayout>

namespace {

constexpr int nameTag = 1;
constexpr int versionTag = 2;
constexpr int noticeTag = 3;

// The width this program was compiled for, not that of the machine it runs on.
constexpr auto buildWidthMark = sizeof(void *) == 8 ? "(64bit)" : "(32bit)";

void setLine(const QWidget *box, int tag, const QString &text)
{
    if (auto *label = qobject_cast<QLabel *>(viewWithTag(box, tag)))
        label->setText(text);
}

} // namespace

VersionBox::VersionBox(QWidget *parent)
    : QGroupBox(parent)
{
    auto *layout = new QVBoxLayout(this);
    for (int tag : {nameTag, versionTag, noticeTag}) {
        auto *label = new QLabel(this);
        label->setProperty("tag", tag);
        label->setAlignment(Qt::AlignHCenter);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        layout->addWidget(label);
    }
    awakeFromNib();
}

void VersionBox::awakeFromNib()
{
    setLine(this, nameTag,
            QStringLiteral("%1 %2").arg(QCoreApplication::applicationName(), QLatin1String(buildWidthMark)));
    setLine(this, versionTag, QStringLiteral("Version %1").arg(QCoreApplication::applicationVersion()));
    setLine(this, noticeTag, QString::fromUtf16(copyrightNotice));
}
