#pragma once

#include <QFont>
#include <QString>

#include <optional>

// Modal file panels and alerts.
class Panels
{
public:
    struct Choice
    {
        QString filename;  // the full path chosen
        QString directory; // the folder the panel was in when confirmed
    };

    virtual ~Panels() = default;

    // Nothing when the user cancels.
    virtual std::optional<Choice> runSavePanel(const QString &directory, const QString &suggestedName) = 0;
    virtual std::optional<Choice> runOpenPanel(const QString &directory, const QString &suggestedName) = 0;
    // A warning with one button.
    virtual void runAlert(const QString &windowTitle, const QString &message, const QString &informativeText,
                          const QString &button) = 0;
    // Which button closed a three-button warning. Escape is the alternate one.
    enum class AlertReturn { Default, Alternate, Other };
    virtual AlertReturn runAlert(const QString &windowTitle, const QString &message, const QString &informativeText,
                                 const QString &defaultButton, const QString &alternateButton,
                                 const QString &otherButton) = 0;
    // The font chooser, starting at the given font; nothing when cancelled.
    virtual std::optional<QFont> runFontPanel(const QFont &font) = 0;
};
