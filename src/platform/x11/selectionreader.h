#pragma once

#include "platform/x11/pasteboardtypes.h"
#include "platform/x11/xcbpointer.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

#include <xcb/xcb.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <optional>
#include <thread>


// The worker behind ClipboardReader: a thread with an X connection of its own
// that reads every new owner of the CLIPBOARD selection whole, as ICCCM
// describes (INCR included), and hands each complete state to `publish`.
//
// Owners are other programs, so nothing they send is trusted: every owner
// change gets one budget of silence for all its formats together, and after
// its first time-out the formats not yet read are given up and what was read
// is published. Each owner change is read through a requestor window of its
// own, destroyed when the reading ends, so that an answer or an INCR chunk
// still under way for an abandoned conversion has nowhere to land.
class SelectionReader
{
public:
    struct Limits
    {
        // How long an owner may stay silent: for all its answers together,
        // and for each INCR chunk once a transfer runs.
        std::chrono::milliseconds ownerTimeout{5000};
        qsizetype maxFormatBytes = qsizetype(256) * 1024 * 1024;
        qsizetype maxSnapshotBytes = qsizetype(512) * 1024 * 1024;
    };
    // Called on the worker thread with a complete state, its owner window and
    // the generation read when the reading began.
    using Publish = std::function<void(const QList<PasteboardItem> &items, quint32 owner, quint64 generation)>;

    // Connects to the display of that name (the one the application runs
    // on). When the thread cannot be started or the display not reached, the
    // reader logs why and reads nothing; its destruction never waits.
    SelectionReader(const QByteArray &displayName, const Limits &limits, const std::atomic<quint64> &generation,
                    Publish publish);
    ~SelectionReader();
    SelectionReader(const SelectionReader &) = delete;
    SelectionReader &operator=(const SelectionReader &) = delete;

private:
    enum class Outcome { Done, Refused, TooLarge, TimedOut, Interrupted };
    struct OwnerChange
    {
        quint32 owner = 0;
        quint32 time = 0;
    };
    struct Reply
    {
        quint32 type = 0;
        quint8 format = 0;
        QByteArray data;
    };
    using Clock = std::chrono::steady_clock;

    void run();
    bool setUp();
    void readState(const OwnerChange &change);
    QHash<QString, QByteArray> readFormats(const QStringList &offered, const QList<quint32> &atoms, quint32 time);
    Outcome convert(quint32 target, quint32 time, qsizetype maxBytes, Reply *reply);
    Outcome readIncr(const xcb_get_property_reply_t &header, qsizetype maxBytes, Reply *reply);
    XcbPtr<xcb_get_property_reply_t> takeProperty(qsizetype maxBytes);
    Outcome awaitEvent(uint8_t type, Clock::time_point deadline, XcbPtr<xcb_generic_event_t> *event);
    XcbPtr<xcb_generic_event_t> waitForEvent(Clock::time_point deadline);
    void drainEvents();
    bool takeOwnerChange(const xcb_generic_event_t *event);
    bool interrupted() const { return m_stop || m_pending; }
    QStringList atomNames(const QList<quint32> &atoms);
    void openRequestor();
    void closeRequestor();

    const QByteArray m_displayName;
    const Limits m_limits;
    const std::atomic<quint64> &m_generation;
    const Publish m_publish;
    std::atomic_bool m_stop{false};
    int m_wakeFd = -1;
    xcb_connection_t *m_connection = nullptr;
    // Receives the owner changes for the reader's whole life.
    quint32 m_listener = 0;
    // Receives the answers for one owner change only.
    quint32 m_requestor = 0;
    uint8_t m_xfixesFirstEvent = 0;
    quint32 m_clipboard = 0;
    quint32 m_targets = 0;
    quint32 m_incr = 0;
    quint32 m_property = 0;
    quint32 m_root = 0;
    // Silence left to the owner being read.
    Clock::duration m_silenceLeft{};
    std::optional<OwnerChange> m_pending;
    QHash<quint32, QString> m_atomNames;
    std::thread m_thread;
};
