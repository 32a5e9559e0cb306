#pragma once

#include "desktop/quillstashprocess.h"
#include "desktop/xclip.h"
#include "support/notificationserver.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>
#include <optional>

class QMimeData;

// Each test gets a fresh HOME, an empty clipboard and, unless it asks
// otherwise, a notice server on the session bus that records every notice.
class DesktopTest : public ::testing::Test
{
protected:
    static constexpr int tickMs = 1000;
    static constexpr int startUpTimeoutMs = 5000;

    void SetUp() override;
    void TearDown() override;

    // Starts the program on this test's HOME; fails the test when it cannot.
    QuillstashProcess &startProgram();
    // Quits the program with SIGTERM and expects an orderly end and no output
    // beyond the debug lines (and the allowed lines).
    void quitProgram(QuillstashProcess &program, const QStringList &allowedLines = {});

    // Leaves the clipboard without owner, and lets this process's Qt see that
    // change: Qt stamps its own clipboard writes with the last server time it
    // saw, and the server ignores a write stamped before the last change.
    bool clearClipboard();
    // This process owns the clipboard with the data, as an editor would.
    bool ownClipboard(QMimeData *mime);

    std::optional<NotificationServer::Notice> waitForNotice(const QString &summary, int timeoutMs);
    QList<NotificationServer::Notice> noticesTitled(const QString &summary) const;
    static QString category(const NotificationServer::Notice &notice);

    QString home() const { return m_home.path(); }

    QTemporaryDir m_home;
    std::unique_ptr<Xclip> m_xclip;
    std::unique_ptr<NotificationServer> m_notices;
    bool m_withNoticeServer = true;
    std::vector<std::unique_ptr<QuillstashProcess>> m_programs;
};
