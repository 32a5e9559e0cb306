#include "platform/x11/desktopworkspace.h"

#include <QDesktopServices>

bool DesktopWorkspace::openURL(const QUrl &url)
{
    return QDesktopServices::openUrl(url);
}
