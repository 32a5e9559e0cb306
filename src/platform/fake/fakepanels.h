#pragma once

#include "platform/panels.h"

#include <QList>

#include <deque>
#include <functional>
#include <utility>

// Records every panel and alert asked for and answers panels with the queued
// choices, in order; with none queued a panel is cancelled.
class FakePanels : public Panels
{
public:
    enum class Kind { Save, Open };

    struct PanelRequest
    {
        Kind kind;
        QString directory;
        QString suggestedName;
    };

    struct Alert
    {
        QString windowTitle;
        QString message;
        QString informativeText;
        QString button;
    };

    std::optional<Choice> runSavePanel(const QString &directory, const QString &suggestedName) override
    {
        return answer(Kind::Save, directory, suggestedName);
    }
    std::optional<Choice> runOpenPanel(const QString &directory, const QString &suggestedName) override
    {
        return answer(Kind::Open, directory, suggestedName);
    }
    void runAlert(const QString &windowTitle, const QString &message, const QString &informativeText,
                  const QString &button) override
    {
        m_alerts.append({windowTitle, message, informativeText, button});
        if (m_whileShown)
            m_whileShown();
    }

    std::optional<QFont> runFontPanel(const QFont &font) override
    {
        m_fontsShown.append(font);
        std::optional<QFont> chosen = std::exchange(m_nextFont, std::nullopt);
        return chosen;
    }
    // The next font panel picks this font; without it the panel is cancelled.
    void chooseFontNext(const QFont &font) { m_nextFont = font; }
    const QList<QFont> &fontsShown() const { return m_fontsShown; }

    AlertReturn runAlert(const QString &windowTitle, const QString &message, const QString &informativeText,
                         const QString &defaultButton, const QString &alternateButton, const QString &otherButton) override
    {
        m_alerts.append({windowTitle, message, informativeText,
                         defaultButton + u'|' + alternateButton + u'|' + otherButton});
        if (m_whileShown)
            m_whileShown();
        return m_alertAnswer;
    }
    // The button the next three-button alerts are closed with.
    void answerAlerts(AlertReturn answer) { m_alertAnswer = answer; }

    void confirmNext(const QString &filename, const QString &directory)
    {
        m_answers.push_back(Choice{filename, directory});
    }
    void cancelNext() { m_answers.push_back(std::nullopt); }
    // Runs while a panel or alert is up, as the event loop would.
    void setWhileShown(std::function<void()> whileShown) { m_whileShown = std::move(whileShown); }

    const QList<PanelRequest> &panels() const { return m_panels; }
    const QList<Alert> &alerts() const { return m_alerts; }

private:
    std::optional<Choice> answer(Kind kind, const QString &directory, const QString &suggestedName)
    {
        m_panels.append({kind, directory, suggestedName});
        if (m_whileShown)
            m_whileShown();
        if (m_answers.empty())
            return std::nullopt;
        std::optional<Choice> choice = m_answers.front();
        m_answers.pop_front();
        return choice;
    }

    QList<PanelRequest> m_panels;
    QList<Alert> m_alerts;
    std::deque<std::optional<Choice>> m_answers;
    std::function<void()> m_whileShown;
    QList<QFont> m_fontsShown;
    AlertReturn m_alertAnswer = AlertReturn::Alternate;
    std::optional<QFont> m_nextFont;
};
