#include "desktop/xclip.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTest>

#include <xcb/xcb.h>

#include <csignal>
#include <cstdlib>
#include <memory>

namespace {

constexpr int ownerTimeoutMs = 5000;
constexpr int writeTimeoutMs = 10000;

QStringList selectionArguments()
{
    return {QStringLiteral("-selection"), QStringLiteral("clipboard")};
}

} // namespace

Xclip::Xclip()
{
    m_connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(m_connection))
        return;
    const char name[] = "CLIPBOARD";
    std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
        xcb_intern_atom_reply(m_connection, xcb_intern_atom(m_connection, 0, sizeof(name) - 1, name), nullptr),
        &std::free);
    if (reply)
        m_clipboardAtom = reply->atom;
}

Xclip::~Xclip()
{
    for (QProcess *owner : std::as_const(m_owners)) {
        if (owner->state() != QProcess::NotRunning) {
            resume(owner);
            owner->kill();
            owner->waitForFinished(ownerTimeoutMs);
        }
        delete owner;
    }
    if (m_connection)
        xcb_disconnect(m_connection);
}

QProcess *Xclip::startOwner(const QByteArray &data, const QString &target)
{
    auto *process = new QProcess;
    m_owners.append(process);
    // -quiet keeps xclip in the foreground, so that its pid is the owner's.
    QStringList arguments = selectionArguments();
    arguments << QStringLiteral("-quiet");
    if (!target.isEmpty())
        arguments << QStringLiteral("-t") << target;
    // Even with -quiet, xclip tells of every request it serves.
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    process->start(QStringLiteral("xclip"), arguments);
    if (!process->waitForStarted(ownerTimeoutMs))
        return nullptr;
    process->write(data);
    QElapsedTimer writing;
    writing.start();
    while (process->bytesToWrite() > 0 && writing.elapsed() < writeTimeoutMs)
        process->waitForBytesWritten(writeTimeoutMs);
    process->closeWriteChannel();
    return process;
}

QProcess *Xclip::copy(const QByteArray &data, const QString &target)
{
    const quint32 before = owner();
    QProcess *process = startOwner(data, target);
    if (!process || !waitForOwnerChange(before))
        return nullptr;
    return process;
}

QProcess *Xclip::copyAndStop(const QByteArray &data, const QString &target)
{
    const quint32 before = owner();
    QProcess *process = startOwner(data, target);
    if (!process)
        return nullptr;
    // No event loop here: every round trip counts, since the reader under
    // test starts converting as soon as the owner changes.
    QElapsedTimer waiting;
    waiting.start();
    while (owner() == before) {
        if (waiting.elapsed() > ownerTimeoutMs)
            return nullptr;
    }
    ::kill(pid_t(process->processId()), SIGSTOP);
    return process;
}

void Xclip::resume(QProcess *owner)
{
    if (owner && owner->state() != QProcess::NotRunning)
        ::kill(pid_t(owner->processId()), SIGCONT);
}

std::optional<QByteArray> Xclip::read(const QString &target, int timeoutMs)
{
    QProcess reader;
    reader.setProcessChannelMode(QProcess::SeparateChannels);
    reader.start(QStringLiteral("xclip"), selectionArguments() << QStringLiteral("-o") << QStringLiteral("-t") << target);
    QByteArray out;
    QObject::connect(&reader, &QProcess::readyReadStandardOutput, [&] { out += reader.readAllStandardOutput(); });
    const bool finished = QTest::qWaitFor([&] { return reader.state() == QProcess::NotRunning; }, timeoutMs);
    if (!finished) {
        reader.kill();
        reader.waitForFinished(ownerTimeoutMs);
        return std::nullopt;
    }
    out += reader.readAllStandardOutput();
    if (reader.exitStatus() != QProcess::NormalExit || reader.exitCode() != 0)
        return std::nullopt;
    return out;
}

QStringList Xclip::targets(int timeoutMs)
{
    const std::optional<QByteArray> list = read(QStringLiteral("TARGETS"), timeoutMs);
    if (!list)
        return {};
    return QString::fromUtf8(*list).split(u'\n', Qt::SkipEmptyParts);
}

quint32 Xclip::owner() const
{
    if (!m_clipboardAtom)
        return 0;
    std::unique_ptr<xcb_get_selection_owner_reply_t, decltype(&std::free)> reply(
        xcb_get_selection_owner_reply(m_connection, xcb_get_selection_owner(m_connection, m_clipboardAtom), nullptr),
        &std::free);
    return reply ? reply->owner : 0;
}

bool Xclip::clear()
{
    if (!m_clipboardAtom)
        return false;
    xcb_set_selection_owner(m_connection, XCB_NONE, m_clipboardAtom, XCB_CURRENT_TIME);
    xcb_flush(m_connection);
    return QTest::qWaitFor([this] { return owner() == 0; }, ownerTimeoutMs);
}

bool Xclip::waitForOwnerChange(quint32 previous, int timeoutMs) const
{
    return QTest::qWaitFor([&] { return owner() != previous; }, timeoutMs);
}
