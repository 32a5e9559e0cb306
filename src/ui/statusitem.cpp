#include "ui/statusitem.h"

#include "platform/imagenamed.h"

#include <QMenu>

StatusItem::StatusItem(QMenu *menu, QObject *parent)
    : QSystemTrayIcon(parent)
{
    setToolTip(QStringLiteral("Pasteboard stock"));
    setContextMenu(menu);
    connect(this, &QSystemTrayIcon::activated, this, [this](ActivationReason reason) {
        if (reason == Trigger || reason == DoubleClick)
            Q_EMIT showWindowRequested();
    });
}

void StatusItem::setImageNamed(const QString &name)
{
    if (name == m_imageName)
        return;
    m_imageName = name;
    setIcon(ImageNamed::iconNamed(name));
}
