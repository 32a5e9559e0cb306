#include "support/scriptedowner.h"

#include <xcb/xcb.h>

#include <poll.h>

#include <cstdlib>

namespace {

quint32 internAtom(xcb_connection_t *connection, const QByteArray &name)
{
    auto *reply = xcb_intern_atom_reply(connection, xcb_intern_atom(connection, 0, name.size(), name.constData()), nullptr);
    const quint32 atom = reply ? reply->atom : XCB_NONE;
    std::free(reply);
    return atom;
}

quint32 selectionOwner(xcb_connection_t *connection, quint32 selection)
{
    auto *reply = xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, selection), nullptr);
    const quint32 owner = reply ? reply->owner : XCB_NONE;
    std::free(reply);
    return owner;
}

} // namespace

ScriptedOwner::ScriptedOwner(QList<Format> formats, bool targetsAsAtoms, const QByteArray &display)
    : m_formats(std::move(formats))
    , m_targetsAsAtoms(targetsAsAtoms)
{
    m_connection = xcb_connect(display.isEmpty() ? nullptr : display.constData(), nullptr);
    if (xcb_connection_has_error(m_connection))
        return;
    for (const Format &format : std::as_const(m_formats))
        m_atoms.append(internAtom(m_connection, format.target));
    m_targets = internAtom(m_connection, "TARGETS");
    m_incr = internAtom(m_connection, "INCR");
    m_clipboard = internAtom(m_connection, "CLIPBOARD");
    m_window = xcb_generate_id(m_connection);
    xcb_create_window(m_connection, 0, m_window, xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root, 0,
                      0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_set_selection_owner(m_connection, m_window, m_clipboard, XCB_CURRENT_TIME);
    m_owner = selectionOwner(m_connection, m_clipboard) == m_window;
    m_thread = std::thread([this] { run(); });
}

ScriptedOwner::~ScriptedOwner()
{
    m_stop = true;
    if (m_thread.joinable())
        m_thread.join();
    if (m_owner) {
        xcb_set_selection_owner(m_connection, XCB_NONE, m_clipboard, XCB_CURRENT_TIME);
        selectionOwner(m_connection, m_clipboard); // the round trip makes it so
    }
    xcb_disconnect(m_connection);
}

int ScriptedOwner::requests(const QByteArray &target) const
{
    const std::lock_guard lock(m_mutex);
    return int(m_asked.count(target));
}

bool ScriptedOwner::lateAnswerLanded()
{
    QList<Pending> pending;
    {
        const std::lock_guard lock(m_mutex);
        pending.swap(m_pending);
    }
    bool landed = false;
    for (const Pending &late : std::as_const(pending)) {
        xcb_generic_error_t *error = xcb_request_check(
            m_connection, xcb_change_property_checked(m_connection, XCB_PROP_MODE_REPLACE, late.requestor,
                                                      late.property, late.target, 8, late.rest.size(),
                                                      late.rest.constData()));
        landed = landed || !error;
        std::free(error);
    }
    return landed;
}

const ScriptedOwner::Format *ScriptedOwner::format(quint32 target) const
{
    const qsizetype i = m_atoms.indexOf(target);
    return i < 0 ? nullptr : &m_formats[i];
}

void ScriptedOwner::run()
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
            answer(event);
        std::free(event);
    }
}

void ScriptedOwner::answer(const void *event)
{
    const auto *request = static_cast<const xcb_selection_request_event_t *>(event);
    xcb_selection_notify_event_t notify{};
    notify.response_type = XCB_SELECTION_NOTIFY;
    notify.time = request->time;
    notify.requestor = request->requestor;
    notify.selection = request->selection;
    notify.target = request->target;
    notify.property = request->property;
    const Format *asked = format(request->target);
    if (request->target == m_targets) {
        const QList<quint32> atoms = QList<quint32>{m_targets} + m_atoms;
        xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, request->requestor, request->property,
                            m_targetsAsAtoms ? XCB_ATOM_ATOM : XCB_ATOM_INTEGER, 32, atoms.size(), atoms.constData());
    } else if (!asked || asked->answer == Answer::Refuse) {
        notify.property = XCB_NONE;
        notify.time = request->time + 1; // owners stamp refusals carelessly
    } else if (asked->answer == Answer::Silent) {
        const std::lock_guard lock(m_mutex);
        m_asked.append(asked->target);
        m_pending.append({request->requestor, request->property, request->target, asked->data});
        return;
    } else if (asked->answer == Answer::IncrStall) {
        // The transfer starts and never sends a chunk.
        const quint32 size = quint32(asked->data.size());
        xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, request->requestor, request->property, m_incr, 32,
                            1, &size);
        const std::lock_guard lock(m_mutex);
        m_pending.append({request->requestor, request->property, request->target, asked->data});
    } else {
        xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, request->requestor, request->property,
                            request->target, 8, asked->data.size(), asked->data.constData());
    }
    if (asked) {
        const std::lock_guard lock(m_mutex);
        m_asked.append(asked->target);
    }
    xcb_send_event(m_connection, 0, request->requestor, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char *>(&notify));
    xcb_flush(m_connection);
}
