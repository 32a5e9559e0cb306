#pragma once

#include <QByteArray>
#include <QList>

#include <xcb/xcb.h>

#include <poll.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <thread>

// A clipboard owner that answers as it is told, on a thread and an X connection of its own: with data, a refusal,
// never, or an INCR transfer that never sends a chunk.
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

    // `targetsAsAtoms` false: TARGETS comes back as INTEGER, not ATOM. An empty display name: the one DISPLAY names.
    explicit ScriptedOwner(QList<Format> formats, bool targetsAsAtoms = true, const QByteArray &display = {})
        : m_formats(std::move(formats))
        , m_targetsAsAtoms(targetsAsAtoms)
        , m_connection(xcb_connect(display.isEmpty() ? nullptr : display.constData(), nullptr))
    {
        if (xcb_connection_has_error(m_connection))
            return;
        for (const Format &format : std::as_const(m_formats))
            m_atoms.append(atom(format.target));
        m_targets = atom("TARGETS");
        m_incr = atom("INCR");
        m_clipboard = atom("CLIPBOARD");
        m_window = xcb_generate_id(m_connection);
        xcb_create_window(m_connection, 0, m_window, xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root,
                          0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        xcb_set_selection_owner(m_connection, m_window, m_clipboard, XCB_CURRENT_TIME);
        m_owner = owner() == m_window;
        m_thread = std::thread([this] { run(); });
    }

    // Gives the clipboard up before it goes, so that nobody owns it after.
    ~ScriptedOwner()
    {
        m_stop = true;
        if (m_thread.joinable())
            m_thread.join();
        if (m_owner) {
            xcb_set_selection_owner(m_connection, XCB_NONE, m_clipboard, XCB_CURRENT_TIME);
            owner(); // the round trip makes it so
        }
        xcb_disconnect(m_connection);
    }

    bool isOwner() const { return m_owner; }

    // How many conversions of the target were asked for.
    int requests(const QByteArray &target) const
    {
        const std::lock_guard lock(m_mutex);
        return int(m_asked.count(target));
    }

    // Answers every conversion left unanswered (silent ones, stalled INCR transfers) now, into the window and
    // property the reader named; true when any of them landed there.
    bool lateAnswerLanded()
    {
        QList<std::pair<xcb_selection_request_event_t, QByteArray>> pending;
        {
            const std::lock_guard lock(m_mutex);
            pending.swap(m_pending);
        }
        bool landed = false;
        for (const auto &[late, rest] : std::as_const(pending)) {
            xcb_generic_error_t *error = xcb_request_check(m_connection, xcb_change_property_checked(
                m_connection, XCB_PROP_MODE_REPLACE, late.requestor, late.property, late.target, 8, rest.size(), rest.constData()));
            landed = landed || !error;
            std::free(error);
        }
        return landed;
    }

private:
    template<typename Reply>
    using Owned = std::unique_ptr<Reply, decltype(&std::free)>;
    quint32 atom(const QByteArray &name)
    {
        const Owned<xcb_intern_atom_reply_t> reply(
            xcb_intern_atom_reply(m_connection, xcb_intern_atom(m_connection, 0, name.size(), name.constData()), nullptr), &std::free);
        return reply ? reply->atom : XCB_NONE;
    }
    quint32 owner()
    {
        const Owned<xcb_get_selection_owner_reply_t> reply(
            xcb_get_selection_owner_reply(m_connection, xcb_get_selection_owner(m_connection, m_clipboard), nullptr), &std::free);
        return reply ? reply->owner : XCB_NONE;
    }

    void run()
    {
        while (!m_stop) {
            xcb_generic_event_t *event = xcb_poll_for_event(m_connection);
            if (!event) {
                if (xcb_connection_has_error(m_connection))
                    return;
                pollfd fd{xcb_get_file_descriptor(m_connection), POLLIN, 0};
                poll(&fd, 1, 20);
                continue;
            }
            if ((event->response_type & 0x7f) == XCB_SELECTION_REQUEST)
                answer(*reinterpret_cast<const xcb_selection_request_event_t *>(event));
            std::free(event);
        }
    }

    void answer(const xcb_selection_request_event_t &request)
    {
        xcb_selection_notify_event_t notify{XCB_SELECTION_NOTIFY, 0, 0, request.time, request.requestor,
                                            request.selection, request.target, request.property};
        const qsizetype index = m_atoms.indexOf(request.target);
        const Format *asked = index < 0 ? nullptr : &m_formats[index];
        const std::lock_guard lock(m_mutex);
        if (asked)
            m_asked.append(asked->target);
        if (request.target == m_targets) {
            const QList<quint32> atoms = QList<quint32>{m_targets} + m_atoms;
            xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, request.requestor, request.property,
                                m_targetsAsAtoms ? XCB_ATOM_ATOM : XCB_ATOM_INTEGER, 32, atoms.size(), atoms.constData());
        } else if (!asked || asked->answer == Answer::Refuse) {
            notify.property = XCB_NONE;
            notify.time = request.time + 1; // owners stamp refusals carelessly
        } else if (asked->answer == Answer::Silent) {
            m_pending.append({request, asked->data});
            return;
        } else if (asked->answer == Answer::IncrStall) {
            // The transfer starts and never sends a chunk.
            const quint32 size = quint32(asked->data.size());
            xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, request.requestor, request.property, m_incr, 32,
                                1, &size);
            m_pending.append({request, asked->data});
        } else {
            xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, request.requestor, request.property,
                                request.target, 8, asked->data.size(), asked->data.constData());
        }
        xcb_send_event(m_connection, 0, request.requestor, XCB_EVENT_MASK_NO_EVENT,
                       reinterpret_cast<const char *>(&notify));
        xcb_flush(m_connection);
    }

    QList<Format> m_formats;
    QList<quint32> m_atoms; // of m_formats, in order
    bool m_targetsAsAtoms;
    xcb_connection_t *m_connection;
    quint32 m_targets = 0, m_incr = 0, m_clipboard = 0, m_window = 0;
    std::atomic_bool m_owner{false};
    std::atomic_bool m_stop{false};
    mutable std::mutex m_mutex;
    QList<QByteArray> m_asked;
    QList<std::pair<xcb_selection_request_event_t, QByteArray>> m_pending;
    std::thread m_thread;
};
