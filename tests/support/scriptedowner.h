#pragma once

#include <QByteArray>
#include <QList>

#include <atomic>
#include <memory>
#include <mutex>
#include <thread>

struct xcb_connection_t;

// A clipboard owner that answers as it is told, on a thread and an X
// connection of its own: with data, with a refusal stamped with an odd time,
// never, or with an INCR transfer that stops after its first chunk. It plays
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
    ~ScriptedOwner();
    ScriptedOwner(const ScriptedOwner &) = delete;
    ScriptedOwner &operator=(const ScriptedOwner &) = delete;

    // False when it could not take the clipboard.
    bool isOwner() const { return m_owner; }
    // How many conversions of the target were asked for.
    int requests(const QByteArray &target) const;
    // Answers every conversion left unanswered (silent ones, stalled INCR
    // transfers) now, into the window and property the reader named. False
    // when the server refused a write, i.e. the window is gone.
    bool answerLate();

private:
    struct Pending
    {
        quint32 requestor;
        quint32 property;
        quint32 type;
        QByteArray rest;
    };

    void run();
    void handleRequest(const void *event);
    quint32 atom(const QByteArray &name);

    QList<Format> m_formats;
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
