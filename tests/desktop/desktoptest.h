#pragma once

#include "platform/testpicture.h"
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

// Each test gets a fresh HOME, an empty clipboard and a notice server; the program is killed with the fixture.
class DesktopTest : public ::testing::Test
{
protected:
    static constexpr int tickMs = 1000;
    static constexpr int twoTicksMs = 2 * tickMs + 200;

    void SetUp() override;

    bool startProgram();
    QProcessEnvironment programEnvironment() const;
    qint64 programPid() const { return m_program.processId(); }
    // SIGTERM; expects an orderly end and no output beyond ticks, captures and the expected lines.
    void quitProgram(const QStringList &expectedLines = {});
    QList<qint64> ticks() const { return m_output.ticks; }
    QList<QStringList> captures() const { return m_output.captures; }
    QStringList captureIndexes() const { return m_output.captureIndexes; }
    bool waitForMoreTicks(int n, int timeoutMs);
    bool waitForCaptures(int count);

    // xclip owns the clipboard with data under target (text when empty), as another program would.
    bool copy(const QByteArray &data, const QString &target = {});
    // xclip -o with the event loop running: this process may be the owner.
    static QByteArray read(const QString &target);
    // Qt stamps its writes with the last server time it saw: it must see the clipboard cleared.
    bool clearClipboard();
    bool ownClipboard(QMimeData *mime);
    QList<NotificationServer::Notice> noticesTitled(const QString &summary) const;
    static QByteArray smallPng() { return pngPicture(); }

    QTemporaryDir m_home;
    std::unique_ptr<NotificationServer> m_notices;

private:
    quint32 owner() const;

    QProcess m_program;
    struct
    {
        QList<qint64> ticks;
        QList<QStringList> captures;
        QStringList captureIndexes, other;
    } m_output;
    xcb_connection_t *m_connection = nullptr;
    quint32 m_clipboardAtom = 0;
};
