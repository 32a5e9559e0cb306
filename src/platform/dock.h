#pragma once

#include <QString>

// The application's presence in the desktop's dock or task manager.
class Dock
{
public:
    virtual ~Dock() = default;

    // An empty label clears the badge.
    virtual void setBadgeLabel(const QString &label) = 0;
    virtual QString badgeLabel() const = 0;
    // Asks once for the user's attention (a single bounce, not a lasting one).
    virtual void requestUserAttention() = 0;
    // True while one of the application's windows has the focus.
    virtual bool isActive() const = 0;
};
