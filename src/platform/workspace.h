#pragma once

#include <QUrl>

// Hands addresses to the desktop's default handler.
class Workspace
{
public:
    virtual ~Workspace() = default;

    virtual bool openURL(const QUrl &url) = 0;
};
