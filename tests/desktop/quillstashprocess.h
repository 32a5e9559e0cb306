#pragma once

#include <QObject>
#include <QProcess>
#include <QString>
#include <QStringList>

// The built program, run as a user's session would run it, with its own
// HOME and XDG_CONFIG_HOME, reading its debug output: one "tick <ms>" line per
// tick and one "captured <indexCount> types: a, b" line per new entry. Any
// other line is output nobody asked for and makes the test fail.
class QuillstashProcess : public QObject
{
    Q_OBJECT

public:
    struct Line
    {
        qint64 receivedMs = 0; // test clock, ms since epoch
        QString text;
    };
    struct Capture
    {
        QString indexCount;
        QStringList types;
        qint64 receivedMs = 0;
    };

    // home is the folder the program takes as HOME; its settings and
    // autostart entries live below home/.config.
    explicit QuillstashProcess(const QString &home, QObject *parent = nullptr);
    ~QuillstashProcess() override;

    static QString configHome(const QString &home);
    static QString settingsPath(const QString &home);
    static QString autostartPath(const QString &home);

    // Starts the program and waits until it runs.
    bool start();
    // SIGTERM, then waits for the end (running the event loop meanwhile);
    // false when it is still running at the deadline, and then it is killed.
    bool terminate(int timeoutMs = 10000);
    bool isRunning() const;
    int exitCode() const { return m_process.exitCode(); }
    QProcess::ExitStatus exitStatus() const { return m_process.exitStatus(); }
    qint64 pid() const { return m_process.processId(); }

    const QList<Line> &lines() const { return m_lines; }
    // The ms stamps of the tick lines, in order.
    QList<qint64> ticks() const;
    QList<Capture> captures() const;
    // Every line that is neither a tick nor a capture, except the ones
    // listed in allowed (compared whole).
    QStringList unexpectedLines(const QStringList &allowed = {}) const;

    // Wait, running the event loop, until the condition holds; false at the deadline.
    bool waitForTickCount(int count, int timeoutMs);
    bool waitForCaptureCount(int count, int timeoutMs);
    // Waits for n more tick lines than seen so far.
    bool waitForMoreTicks(int n, int timeoutMs);

private:
    void readStandardError();

    QString m_home;
    QProcess m_process;
    QByteArray m_partial;
    QList<Line> m_lines;
};
