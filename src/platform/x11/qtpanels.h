#pragma once

#include "platform/panels.h"

// Qt's file dialogs and message box, modal over the active window.
class QtPanels : public Panels
{
public:
    std::optional<Choice> runSavePanel(const QString &directory, const QString &suggestedName) override;
    std::optional<Choice> runOpenPanel(const QString &directory, const QString &suggestedName) override;
    void runAlert(const QString &windowTitle, const QString &message, const QString &informativeText,
                  const QString &button) override;
    AlertReturn runAlert(const QString &windowTitle, const QString &message, const QString &informativeText,
                         const QString &defaultButton, const QString &alternateButton,
                         const QString &otherButton) override;
    std::optional<QFont> runFontPanel(const QFont &font) override;
};
