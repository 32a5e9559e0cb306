#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

class QProcess;
struct xcb_connection_t;

// The CLIPBOARD selection as other programs see it: owners started with
// xclip (each offers one target), reads through xclip -o, and the owner
// window read straight from the X server. Every xclip it starts is ended
// when it goes, stopped ones included.
class Xclip
{
public:
    Xclip();
    ~Xclip();
    Xclip(const Xclip &) = delete;
    Xclip &operator=(const Xclip &) = delete;

    // Starts an xclip that owns the clipboard with data under target (text
    // when empty), and returns once it is the owner; null if it never
    // became one within the deadline.
    QProcess *copy(const QByteArray &data, const QString &target = {});
    // Like copy(), but sends SIGSTOP the moment xclip owns the clipboard,
    // so that it hangs in front of whoever reads it.
    QProcess *copyAndStop(const QByteArray &data, const QString &target = {});
    static void resume(QProcess *owner);

    // Runs xclip -o for the target while the event loop runs (this process
    // may be the owner that has to answer). Nothing when it fails.
    static std::optional<QByteArray> read(const QString &target, int timeoutMs = 5000);
    static QStringList targets(int timeoutMs = 5000);

    // The window owning CLIPBOARD, 0 when none.
    quint32 owner() const;
    // Leaves the clipboard without owner and waits until the server says so.
    bool clear();
    // Waits, running the event loop, until the owner differs from previous.
    bool waitForOwnerChange(quint32 previous, int timeoutMs = 5000) const;

private:
    QProcess *startOwner(const QByteArray &data, const QString &target);

    xcb_connection_t *m_connection = nullptr;
    quint32 m_clipboardAtom = 0;
    QList<QProcess *> m_owners;
};
