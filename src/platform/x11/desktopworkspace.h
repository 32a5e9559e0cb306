#pragma once

#include "platform/workspace.h"

class DesktopWorkspace : public Workspace
{
public:
    bool openURL(const QUrl &url) override;
};
