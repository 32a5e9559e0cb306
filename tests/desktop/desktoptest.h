#pragma once

#include "support/notificationserver.h"

#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <optional>

// The X11 target each pasteboard type is offered under, when not its own name.
inline const std::map<QString, QString> readBackTargets{
    {QStringLiteral("public.utf8-plain-text"), QStringLiteral("UTF8_STRING")},
    {QStringLiteral("NSStringPboardType"), QStringLiteral("UTF8_STRING")},
    {QStringLiteral("public.html"), QStringLiteral("text/html")},
    {QStringLiteral("public.png"), QStringLiteral("image/png")},
    {QStringLiteral("public.tiff"), QStringLiteral("image/tiff")},
};

class QMimeData;
struct xcb_connection_t;

// Each test gets a fresh HOME, an empty clipboard, xclip as the other
// programs of the desktop and a notice server on the session bus that
// records every notice. The program under test runs as a session would run
// it, with the debug lines the tests read: "tick <ms>" per tick and
// "captured <index> types: a, b" per new entry. Any other line it prints is
// output nobody asked for and fails the test.
class DesktopTest : public ::testing::Test
{
protected:
    static constexpr int tickMs = 1000;
    static constexpr int twoTicksMs = 2 * tickMs + 200;

    void SetUp() override;
    void TearDown() override;

    // Starts the program on this test's HOME and waits for its first tick.
    bool startProgram();
    // What the program runs with: this test's HOME, the debug lines above.
    QProcessEnvironment programEnvironment() const;
    qint64 programPid() const { return m_program.processId(); }
    // SIGTERM; expects an orderly end and no line beyond ticks, captures and allowed.
    void quitProgram(const QStringList &allowed = {});
    QList<qint64> ticks() const;
    // The types of each new entry, in order.
    QList<QStringList> captures() const;
    // The index of each new entry, in order.
    QStringList captureIndexes() const;
    // The lines that are neither ticks nor captures.
    QStringList otherLines() const;
    // Both run the event loop until the count is reached; false at the deadline.
    bool waitForMoreTicks(int n, int timeoutMs);
    bool waitForCaptures(int count);

    // An xclip owns the clipboard with data under target (text when empty);
    // with stop, it gets SIGSTOP the moment it is the owner, so that it hangs
    // in front of whoever reads it. False when it never became the owner.
    bool copy(const QByteArray &data, const QString &target = {}, bool stop = false);
    // xclip -o with the event loop running, since this process may be the owner.
    static std::optional<QByteArray> read(const QString &target);
    // Leaves the clipboard without owner and lets this process's Qt see it:
    // Qt stamps its writes with the last server time it saw, and the server
    // ignores a write stamped before the last change.
    bool clearClipboard();
    // Waits until someone owns the clipboard.
    bool waitForOwner() const;
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
    std::vector<std::unique_ptr<QProcess>> m_owners;
    xcb_connection_t *m_connection = nullptr;
    quint32 m_clipboardAtom = 0;
};
