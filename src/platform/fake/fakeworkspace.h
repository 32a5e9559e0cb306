#pragma once

#include "platform/workspace.h"

#include <QList>

class FakeWorkspace : public Workspace
{
public:
    bool openURL(const QUrl &url) override
    {
        m_opened.append(url);
        return true;
    }

    const QList<QUrl> &opened() const { return m_opened; }

private:
    QList<QUrl> m_opened;
};
