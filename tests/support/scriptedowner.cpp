#include "support/scriptedowner.h"

#include <xcb/xcb.h>

#include <poll.h>

#include <cstdlib>

namespace {

constexpr int incrChunkBytes = 4096;

} // namespace

ScriptedOwner::ScriptedOwner(QList<Format> formats, bool targetsAsAtoms, const QByteArray &display)
    : m_formats(std::move(formats))
    , m_targetsAsAtoms(targetsAsAtoms)
{
    m_connection = xcb_connect(display.isEmpty() ? nullptr : display.constData(), nullptr);
    if (xcb_connection_has_error(m_connection))
        return;
    const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
    m_window = xcb_generate_id(m_connection);
    xcb_create_window(m_connection, 0, m_window, screen->root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, 0, nullptr);
    const quint32 clipboard = atom("CLIPBOARD");
    xcb_set_selection_owner(m_connection, m_window, clipboard, XCB_CURRENT_TIME);
    auto *owner = xcb_get_selection_owner_reply(m_connection, xcb_get_selection_owner(m_connection, clipboard), nullptr);
    m_owner = owner && owner->owner == m_window;
    std::free(owner);
    m_thread = std::thread([this] { run(); });
}

ScriptedOwner::~ScriptedOwner()
{
    m_stop = true;
    if (m_thread.joinable())
        m_thread.join();
    xcb_disconnect(m_connection);
}

int ScriptedOwner::requests(const QByteArray &target) const
{
    const std::lock_guard lock(m_mutex);
    return int(m_asked.count(target));
}

bool ScriptedOwner::answerLate()
{
    QList<Pending> pending;
    {
        const std::lock_guard lock(m_mutex);
        pending.swap(m_pending);
    }
    bool written = true;
    for (const Pending &late : std::as_const(pending)) {
        xcb_generic_error_t *error = xcb_request_check(
            m_connection, xcb_change_property_checked(m_connection, XCB_PROP_MODE_REPLACE, late.requestor,
                                                      late.property, late.type, 8, late.rest.size(),
                                                      late.rest.constData()));
        written = written && !error;
        std::free(error);
    }
    return written;
}

quint32 ScriptedOwner::atom(const QByteArray &name)
{
    auto *reply = xcb_intern_atom_reply(m_connection, xcb_intern_atom(m_connection, 0, name.size(), name.constData()),
                                        nullptr);
    const quint32 value = reply ? reply->atom : XCB_NONE;
    std::free(reply);
    return value;
}

void ScriptedOwner::run()
{
    // INCR transfers waiting for the reader to take their header.
    QList<Pending> announced;
    while (!m_stop) {
        xcb_generic_event_t *event = xcb_poll_for_event(m_connection);
        if (!event) {
            if (xcb_connection_has_error(m_connection))
                return;
            pollfd fd{xcb_get_file_descriptor(m_connection), POLLIN, 0};
            poll(&fd, 1, 20);
            continue;
        }
        const uint8_t type = event->response_type & 0x7f;
        if (type == XCB_SELECTION_REQUEST) {
            const auto *request = reinterpret_cast<const xcb_selection_request_event_t *>(event);
            handleRequest(request);
            for (const Format &format : std::as_const(m_formats)) {
                if (format.answer == Answer::IncrStall && atom(format.target) == request->target)
                    announced.append({request->requestor, request->property, request->target, format.data});
            }
        } else if (type == XCB_PROPERTY_NOTIFY) {
            const auto *notify = reinterpret_cast<const xcb_property_notify_event_t *>(event);
            for (qsizetype i = 0; i < announced.size(); ++i) {
                Pending &transfer = announced[i];
                if (notify->state != XCB_PROPERTY_DELETE || notify->window != transfer.requestor
                    || notify->atom != transfer.property)
                    continue;
                // The header was taken: the first chunk, then nothing.
                xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, transfer.requestor, transfer.property,
                                    transfer.type, 8, incrChunkBytes, transfer.rest.constData());
                transfer.rest.remove(0, incrChunkBytes);
                const std::lock_guard lock(m_mutex);
                m_pending.append(announced.takeAt(i));
                break;
            }
            xcb_flush(m_connection);
        }
        std::free(event);
    }
}

void ScriptedOwner::handleRequest(const void *event)
{
    const auto *request = static_cast<const xcb_selection_request_event_t *>(event);
    xcb_selection_notify_event_t notify{};
    notify.response_type = XCB_SELECTION_NOTIFY;
    notify.time = request->time;
    notify.requestor = request->requestor;
    notify.selection = request->selection;
    notify.target = request->target;
    notify.property = request->property;

    const quint32 targets = atom("TARGETS");
    if (request->target == targets) {
        QList<quint32> atoms{targets};
        for (const Format &format : std::as_const(m_formats))
            atoms.append(atom(format.target));
        xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, request->requestor, request->property,
                            m_targetsAsAtoms ? XCB_ATOM_ATOM : XCB_ATOM_INTEGER, 32, atoms.size(), atoms.constData());
    } else {
        const Format *asked = nullptr;
        for (const Format &format : std::as_const(m_formats)) {
            if (atom(format.target) == request->target)
                asked = &format;
        }
        {
            const std::lock_guard lock(m_mutex);
            m_asked.append(asked ? asked->target : QByteArray());
        }
        const Answer answer = asked ? asked->answer : Answer::Refuse;
        if (answer == Answer::Silent) {
            const std::lock_guard lock(m_mutex);
            m_pending.append({request->requestor, request->property, request->target, asked->data});
            return;
        }
        if (answer == Answer::Refuse) {
            notify.property = XCB_NONE;
            // Not the time of the request: owners stamp refusals carelessly.
            notify.time = request->time + 1;
        } else if (answer == Answer::IncrStall) {
            const uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
            xcb_change_window_attributes(m_connection, request->requestor, XCB_CW_EVENT_MASK, &mask);
            const quint32 size = quint32(asked->data.size());
            xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, request->requestor, request->property,
                                atom("INCR"), 32, 1, &size);
        } else {
            xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, request->requestor, request->property,
                                request->target, 8, asked->data.size(), asked->data.constData());
        }
    }
    xcb_send_event(m_connection, 0, request->requestor, XCB_EVENT_MASK_NO_EVENT, reinterpret_cast<const char *>(&notify));
    xcb_flush(m_connection);
}
