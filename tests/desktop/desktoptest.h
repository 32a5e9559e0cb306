#pragma once

#include "support/notificationserver.h"
#include "support/statusnotifierhost.h"

#include <QProcess>
#include <QRect>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>
#include <optional>

inline void PrintTo(const QString &text, std::ostream *out) { *out << '"' << text.toStdString() << '"'; }

class QMimeData;
struct xcb_connection_t;

// Each test gets a fresh HOME, an empty clipboard, a notice server and a tray; the program is killed with the fixture.
class DesktopTest : public ::testing::Test
{
protected:
    static constexpr int tickMs = 1000;
    static constexpr int twoTicksMs = 2 * tickMs + 200;

    void SetUp() override;

    bool startProgram();
    QProcessEnvironment programEnvironment() const;
    // SIGTERM (unless the program is to end by itself); expects an orderly end and no output beyond ticks, captures
    // and the expected lines.
    void quitProgram(const QStringList &expectedLines = {}, bool terminate = true);
    QList<QStringList> captures() const { return m_output.captures; }
    QStringList captureIndexes() const { return m_output.captureIndexes; }
    bool waitForMoreTicks(int n, int timeoutMs);
    bool waitForCaptures(int count);
    // The table's rows as last painted, top row first ("icon 2 stamp Ctrl+Alt+1 text Some text"); empty if unpainted.
    QStringList paintedRows() const { return m_output.rows; }

    // xclip owns the clipboard with data under target (text when empty), as another program would.
    bool copy(const QByteArray &data, const QString &target = {});
    // xclip -o with the event loop running: this process may be the owner.
    static QByteArray read(const QString &target);
    // The clipboard's text; empty when it holds none.
    static QString clipboardText()
    {
        return read(QStringLiteral("TARGETS")).contains("UTF8_STRING") ? QString::fromUtf8(read(QStringLiteral("UTF8_STRING"))) : QString();
    }
    // Qt stamps its writes with the last server time it saw: it must see the clipboard cleared.
    bool clearClipboard();
    bool ownClipboard(QMimeData *mime);
    // The bodies of the notices of that title in the order sent, once there are count of them (or two ticks passed).
    QStringList noticeBodies(const QString &summary, int count = 0) const;

    // xdotool with these arguments; its output, or nullopt when it fails.
    static std::optional<QString> xdotool(const QStringList &arguments);
    // xdotool with a command line split at spaces, asserted.
    static void xdo(const QString &command) { ASSERT_TRUE(xdotool(command.split(u' '))) << command.toStdString(); }
    static void key(const QString &keys) { xdo("key --delay 50 " + keys); }
    // The first visible window of that title once it shows, focused; empty when none comes within 3 s.
    static QString focusWindow(const QString &title);
    // Ctrl+Q in the main window, of that title; true when the "Warning" alert came and has the keyboard.
    static bool quitAsks(const QString &title = QStringLiteral("^Untitled"));
    // The window's place and size on the screen (with no window manager, the X window's own).
    static QRect windowGeometry(const QString &window);

    QTemporaryDir m_home;
    std::unique_ptr<NotificationServer> m_notices;
    StatusNotifierHost m_tray;

private:
    quint32 owner() const;

    struct
    {
        qsizetype ticks = 0;
        QList<QStringList> captures;
        QStringList captureIndexes, other, rows;
    } m_output;
    // After m_output: a program still running when a test fails writes its last lines as it is killed.
    QProcess m_program;
    xcb_connection_t *m_connection = nullptr;
    quint32 m_clipboardAtom = 0;
};
