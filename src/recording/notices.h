#pragma once

#include <QString>

#include <optional>

class ApplicationRegistries;
class Clock;
class Dock;
class NoticeService;

// Desktop notices for the program's events, with the dock bounce and the
// one-second filter against repeats of the same title.
class Notices
{
public:
    static constexpr quint32 repeatWindowMs = 999;
    static constexpr int priority = 2;

    static inline const QString AddPasteboardNotification = QStringLiteral("AddPasteboardNotification");
    static inline const QString ChangePasteboardNotification = QStringLiteral("ChangePasteboardNotification");
    static inline const QString RemovePasteboardNotification = QStringLiteral("RemovePasteboardNotification");
    static inline const QString RecStartPasteboardNotification = QStringLiteral("RecStartPasteboardNotification");
    static inline const QString RecStopPasteboardNotification = QStringLiteral("RecStopPasteboardNotification");

    Notices(NoticeService &service, Clock &clock, Dock &dock, ApplicationRegistries &registries);
    Notices(const Notices &) = delete;
    Notices &operator=(const Notices &) = delete;

    // Connects to the notice display; without one, logs so once and goes on.
    void setUp();
    bool isLoaded() const { return m_loaded; }
    void messageGrowl(const QString &title, const QString &desc, const QString &notify);
    // When the last notice went out (passed the repeat filter), on the clock's
    // milliseconds; nothing before the first.
    std::optional<quint32> lastSentAt() const { return m_anySent ? std::optional<quint32>(now) : std::nullopt; }

private:
    NoticeService &m_service;
    Clock &m_clock;
    Dock &m_dock;
    ApplicationRegistries &m_registries;
    bool m_loaded = false;
    bool m_anySent = false;
    quint32 now = 0;
    QString str;
};
