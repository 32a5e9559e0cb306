#pragma once

#include <QByteArray>
#include <QList>

#include <atomic>
#include <mutex>
#include <thread>

struct xcb_connection_t;

// A clipboard owner that answers as it is told, on a thread and an X
// connection of its own: with data, with a refusal stamped with an odd time,
// never, or with an INCR transfer that never sends a chunk. It plays
// the programs that real owners are not polite enough to be on demand.
class ScriptedOwner
{
public:
    enum class Answer { Data, Refuse, Silent, IncrStall };
    struct Format
    {
        QByteArray target;
        Answer answer = Answer::Data;
        QByteArray data = {};
    };

    // `targetsAsAtoms` false: TARGETS comes back as INTEGER, not ATOM. An
    // empty display name: the one DISPLAY names.
    explicit ScriptedOwner(QList<Format> formats, bool targetsAsAtoms = true, const QByteArray &display = {});
    // Gives the clipboard up before it goes, so that nobody owns it after.
    ~ScriptedOwner();
    ScriptedOwner(const ScriptedOwner &) = delete;
    ScriptedOwner &operator=(const ScriptedOwner &) = delete;

    bool isOwner() const { return m_owner; }
    // How many conversions of the target were asked for.
    int requests(const QByteArray &target) const;
    // Answers every conversion left unanswered (silent ones, stalled INCR
    // transfers) now, into the window and property the reader named; true
    // when any of them landed there.
    bool lateAnswerLanded();

private:
    struct Pending
    {
        quint32 requestor;
        quint32 property;
        quint32 target;
        QByteArray rest;
    };

    void run();
    void answer(const void *request);
    const Format *format(quint32 target) const;

    QList<Format> m_formats;
    QList<quint32> m_atoms; // of m_formats, in order
    quint32 m_targets = 0;
    quint32 m_incr = 0;
    quint32 m_clipboard = 0;
    bool m_targetsAsAtoms;
    xcb_connection_t *m_connection = nullptr;
    quint32 m_window = 0;
    std::atomic_bool m_owner{false};
    std::atomic_bool m_stop{false};
    mutable std::mutex m_mutex;
    QList<QByteArray> m_asked;
    QList<Pending> m_pending;
    std::thread m_thread;
};
