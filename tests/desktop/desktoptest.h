#pragma once

#include "support/notificationserver.h"

#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>
#include <memory>

// The X11 target each pasteboard type is offered under, when not its own name.
inline const std::map<QString, QString> readBackTargets{
    {QStringLiteral("public.html"), QStringLiteral("text/html")},
    {QStringLiteral("public.png"), QStringLiteral("image/png")},
};

inline void PrintTo(const QString &text, std::ostream *out) { *out << '"' << text.toStdString() << '"'; }

class QMimeData;
struct xcb_connection_t;

// Each test gets a fresh HOME, an empty clipboard and a notice server that records every notice. The
// program runs as a session would run it, with the debug lines "tick <ms>" and "captured <index> types: a, b".
class DesktopTest : public ::testing::Test
{
protected:
    static constexpr int tickMs = 1000;
    static constexpr int twoTicksMs = 2 * tickMs + 200;

    void SetUp() override;
    void TearDown() override;

    // Starts the program on this test's HOME and waits for its first tick.
    bool startProgram();
    QProcessEnvironment programEnvironment() const;
    qint64 programPid() const { return m_program.processId(); }
    // SIGTERM; expects an orderly end and no output beyond ticks, captures and the expected lines.
    void quitProgram(const QStringList &expectedLines = {});
    QList<qint64> ticks() const;
    QList<QStringList> captures() const;
    QStringList captureIndexes() const;
    // Both run the event loop until the count is reached; false at the deadline.
    bool waitForMoreTicks(int n, int timeoutMs);
    bool waitForCaptures(int count);

    // xclip owns the clipboard with data under target (text when empty), as another program would.
    bool copy(const QByteArray &data, const QString &target = {});
    // xclip -o with the event loop running, since this process may be the owner.
    static QByteArray read(const QString &target);
    // Leaves the clipboard without owner and lets this process's Qt see it: Qt stamps its writes
    // with the last server time it saw, and the server ignores a write stamped before the last change.
    bool clearClipboard();
    // This process owns the clipboard with the data, as an editor would.
    bool ownClipboard(QMimeData *mime);
    QList<NotificationServer::Notice> noticesTitled(const QString &summary) const;
    // A small PNG with a half-transparent pixel.
    static QByteArray smallPng();

    QTemporaryDir m_home;
    std::unique_ptr<NotificationServer> m_notices;

private:
    quint32 owner() const;

    QProcess m_program;
    QStringList m_lines;
    QByteArray m_partial;
    xcb_connection_t *m_connection = nullptr;
    quint32 m_clipboardAtom = 0;
};
