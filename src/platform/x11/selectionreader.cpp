#include "platform/x11/selectionreader.h"

#include "platform/pasteboardtype.h"

#include <QElapsedTimer>
#include <QLoggingCategory>

#include <xcb/xcb.h>
#include <xcb/xfixes.h>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <cstring>

Q_DECLARE_LOGGING_CATEGORY(lcPasteboard)

namespace {

// A TARGETS answer longer than this lists no real state.
constexpr qsizetype maxTargetListBytes = 64 * 1024;
constexpr int maxTargets = 1024;

} // namespace

SelectionReader::SelectionReader(const QByteArray &displayName, const Limits &limits,
                                 const std::atomic<quint64> &generation, Publish publish)
    : m_displayName(displayName)
    , m_limits(limits)
    , m_generation(generation)
    , m_publish(std::move(publish))
    , m_wakeFd(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    // Without a way to wake the thread, it could not be stopped at quit.
    if (m_wakeFd < 0) {
        qCWarning(lcPasteboard) << "cannot create the clipboard reader's wake-up:" << std::strerror(errno)
                                << "- the clipboard is not read";
        return;
    }
    m_thread = std::thread([this] { run(); });
}

SelectionReader::~SelectionReader()
{
    m_stop = true;
    if (m_thread.joinable()) {
        const uint64_t one = 1;
        if (write(m_wakeFd, &one, sizeof one) < 0)
            qCWarning(lcPasteboard) << "cannot wake the clipboard reader";
        m_thread.join();
    }
    if (m_connection)
        xcb_disconnect(m_connection);
    if (m_wakeFd >= 0)
        close(m_wakeFd);
}

void SelectionReader::run()
{
    if (!setUp())
        return;
    while (!m_stop) {
        drainEvents();
        if (!m_pending) {
            if (auto event = waitForEvent(Clock::time_point::max()))
                takeOwnerChange(event.get());
            continue;
        }
        const OwnerChange change = *m_pending;
        m_pending.reset();
        readState(change);
        closeRequestor();
    }
}

bool SelectionReader::setUp()
{
    int screenNumber = 0;
    m_connection = xcb_connect(m_displayName.isEmpty() ? nullptr : m_displayName.constData(), &screenNumber);
    if (xcb_connection_has_error(m_connection)) {
        qCWarning(lcPasteboard) << "cannot open a second X connection to" << m_displayName
                                << "- the clipboard is not read";
        return false;
    }
    const xcb_query_extension_reply_t *xfixes = xcb_get_extension_data(m_connection, &xcb_xfixes_id);
    if (!xfixes || !xfixes->present) {
        qCWarning(lcPasteboard) << "the X server has no XFixes; the clipboard is not read";
        return false;
    }
    m_xfixesFirstEvent = xfixes->first_event;
    // XFixes answers nothing until the client has announced its version.
    std::free(xcb_xfixes_query_version_reply(
        m_connection, xcb_xfixes_query_version(m_connection, XCB_XFIXES_MAJOR_VERSION, XCB_XFIXES_MINOR_VERSION),
        nullptr));

    const std::array<QByteArray, 4> names = {"CLIPBOARD", "TARGETS", "INCR", "QUILLSTASH_SELECTION"};
    std::array<xcb_intern_atom_cookie_t, names.size()> cookies{};
    for (std::size_t i = 0; i < names.size(); ++i)
        cookies[i] = xcb_intern_atom(m_connection, 0, names[i].size(), names[i].constData());
    std::array<quint32, names.size()> atoms{};
    for (std::size_t i = 0; i < names.size(); ++i) {
        XcbPtr<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(m_connection, cookies[i], nullptr));
        atoms[i] = reply ? reply->atom : XCB_NONE;
    }
    m_clipboard = atoms[0];
    m_targets = atoms[1];
    m_incr = atoms[2];
    m_property = atoms[3];

    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(m_connection));
    for (int i = 0; i < screenNumber && screens.rem > 1; ++i)
        xcb_screen_next(&screens);
    m_root = screens.data->root;
    m_listener = xcb_generate_id(m_connection);
    xcb_create_window(m_connection, 0, m_listener, m_root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_xfixes_select_selection_input(m_connection, m_listener, m_clipboard,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER
                                          | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY
                                          | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    // Asked after selecting the input, so that no change falls in between.
    XcbPtr<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
        m_connection, xcb_get_selection_owner(m_connection, m_clipboard), nullptr));
    if (owner && owner->owner != XCB_NONE)
        m_pending = OwnerChange{owner->owner, XCB_CURRENT_TIME};
    return !xcb_connection_has_error(m_connection);
}

void SelectionReader::openRequestor()
{
    closeRequestor();
    m_requestor = xcb_generate_id(m_connection);
    // Property changes from the start: INCR relies on them, and the mask must
    // be in place before the INCR property is deleted.
    const uint32_t eventMask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(m_connection, 0, m_requestor, m_root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &eventMask);
}

// Whatever the owner still sends for this window fails from now on; what it
// already put there goes with it.
void SelectionReader::closeRequestor()
{
    if (m_requestor == XCB_NONE)
        return;
    xcb_delete_property(m_connection, m_requestor, m_property);
    xcb_destroy_window(m_connection, m_requestor);
    xcb_flush(m_connection);
    m_requestor = XCB_NONE;
}

void SelectionReader::readState(const OwnerChange &change)
{
    const quint64 generation = m_generation.load();
    if (change.owner == XCB_NONE) {
        qCDebug(lcPasteboard) << "the clipboard has no owner";
        m_publish({}, XCB_NONE, generation);
        return;
    }
    QElapsedTimer elapsed;
    elapsed.start();
    m_silenceLeft = m_limits.ownerTimeout;
    openRequestor();

    Reply listed;
    const Outcome outcome = convert(m_targets, change.time, maxTargetListBytes, &listed);
    if (outcome == Outcome::Interrupted)
        return;
    // ICCCM: a list of atoms. Anything else is no list of formats to go by.
    if (outcome != Outcome::Done || listed.type != XCB_ATOM_ATOM || listed.format != 32) {
        qCDebug(lcPasteboard) << "owner" << change.owner << "did not list its formats";
        closeRequestor();
        m_publish({}, change.owner, generation);
        return;
    }
    QList<quint32> atoms;
    for (qsizetype i = 0; i + 4 <= listed.data.size() && atoms.size() < maxTargets; i += 4) {
        quint32 atom = 0;
        std::memcpy(&atom, listed.data.constData() + i, sizeof atom);
        atoms.append(atom);
    }
    const QStringList offered = atomNames(atoms);
    if (offered.contains(PasteboardType::Ignore)) {
        qCDebug(lcPasteboard) << "the program's own state, not read";
        return;
    }

    const QHash<QString, QByteArray> read = readFormats(offered, atoms, change.time);
    if (interrupted())
        return;
    const QList<PasteboardItem> items = PasteboardTypes::itemsFromFormats(offered, read);
    // A change that arrived with the last answer makes this state outdated.
    drainEvents();
    if (interrupted())
        return;
    if (lcPasteboard().isDebugEnabled()) {
        QStringList described;
        for (const PasteboardItem &item : items)
            described.append(QStringLiteral("%1 (%2 bytes)").arg(item.type).arg(item.data.size()));
        qCDebug(lcPasteboard).noquote() << "read in" << elapsed.elapsed() << "ms, offered"
                                        << offered.join(QLatin1Char(' ')) << "->" << described.join(QStringLiteral(", "));
    }
    // Nothing of this owner's can arrive once its state is out.
    closeRequestor();
    m_publish(items, change.owner, generation);
}

// The formats worth reading, each within what is left of the snapshot's size.
// A format that is refused or too large is left out; the first time-out ends
// the reading of this owner, with what has arrived so far.
QHash<QString, QByteArray> SelectionReader::readFormats(const QStringList &offered, const QList<quint32> &atoms,
                                                        quint32 time)
{
    QHash<QString, QByteArray> read;
    qsizetype bytesLeft = m_limits.maxSnapshotBytes;
    for (const QString &target : PasteboardTypes::targetsToRead(offered)) {
        if (target.isEmpty())
            continue; // an atom the server could not name
        Reply reply;
        const qsizetype maxBytes = std::min(m_limits.maxFormatBytes, bytesLeft);
        switch (convert(atoms.at(offered.indexOf(target)), time, maxBytes, &reply)) {
        case Outcome::Done:
            bytesLeft -= reply.data.size();
            read.insert(target, reply.data);
            break;
        case Outcome::Refused:
            qCDebug(lcPasteboard) << "refused:" << target;
            break;
        case Outcome::TooLarge:
            qCDebug(lcPasteboard) << "left out, over" << maxBytes << "bytes:" << target;
            // The owner may still be sending it: the next format is asked
            // through a window that this transfer cannot reach.
            openRequestor();
            break;
        case Outcome::TimedOut:
            qCDebug(lcPasteboard) << "owner silent at" << target << "- the formats not read yet are left out";
            return read;
        case Outcome::Interrupted:
            return {};
        }
    }
    return read;
}

// ICCCM conversion of one target into the requestor's property.
SelectionReader::Outcome SelectionReader::convert(quint32 target, quint32 time, qsizetype maxBytes, Reply *reply)
{
    xcb_convert_selection(m_connection, m_requestor, m_clipboard, target, m_property, time);
    for (;;) {
        // Property events before the answer (the INCR property's first
        // NEW_VALUE among them, which is no chunk) are passed by. Waiting for
        // an answer draws on the owner's budget of silence.
        const Clock::time_point start = Clock::now();
        XcbPtr<xcb_generic_event_t> event;
        const Outcome waited = awaitEvent(XCB_SELECTION_NOTIFY, start + m_silenceLeft, &event);
        m_silenceLeft -= Clock::now() - start;
        if (waited != Outcome::Done)
            return waited;
        const auto *notify = reinterpret_cast<const xcb_selection_notify_event_t *>(event.get());
        if (notify->requestor != m_requestor || notify->selection != m_clipboard || notify->target != target)
            continue;
        // A refusal counts whatever time it carries: owners stamp it carelessly.
        if (notify->property != m_property)
            return Outcome::Refused;
        break;
    }
    const XcbPtr<xcb_get_property_reply_t> property = takeProperty(maxBytes);
    if (!property)
        return Outcome::Refused;
    if (property->type == m_incr)
        return readIncr(*property, maxBytes, reply);
    const int length = xcb_get_property_value_length(property.get());
    if (property->bytes_after > 0 || length > maxBytes)
        return Outcome::TooLarge;
    reply->type = property->type;
    reply->format = property->format;
    reply->data = QByteArray(static_cast<const char *>(xcb_get_property_value(property.get())), length);
    return Outcome::Done;
}

SelectionReader::Outcome SelectionReader::readIncr(const xcb_get_property_reply_t &header, qsizetype maxBytes,
                                                   Reply *reply)
{
    // The announced size is a lower bound, enough to refuse early; it is not
    // trusted for an allocation, since the owner may lie.
    if (header.format == 32 && xcb_get_property_value_length(&header) >= 4) {
        quint32 announced = 0;
        std::memcpy(&announced, xcb_get_property_value(&header), sizeof announced);
        if (announced > quint64(maxBytes))
            return Outcome::TooLarge;
    }
    QByteArray collected;
    for (;;) {
        // A transfer that makes progress may take its time; each chunk gets
        // the whole allowance.
        XcbPtr<xcb_generic_event_t> event;
        const Outcome waited = awaitEvent(XCB_PROPERTY_NOTIFY, Clock::now() + m_limits.ownerTimeout, &event);
        if (waited != Outcome::Done)
            return waited;
        const auto *notify = reinterpret_cast<const xcb_property_notify_event_t *>(event.get());
        if (notify->window != m_requestor || notify->atom != m_property || notify->state != XCB_PROPERTY_NEW_VALUE)
            continue;
        const XcbPtr<xcb_get_property_reply_t> chunk = takeProperty(maxBytes - collected.size());
        if (!chunk)
            return Outcome::Refused;
        const int length = xcb_get_property_value_length(chunk.get());
        if (length == 0) {
            reply->type = chunk->type;
            reply->format = chunk->format;
            reply->data = collected;
            return Outcome::Done;
        }
        if (chunk->bytes_after > 0 || collected.size() + length > maxBytes)
            return Outcome::TooLarge;
        collected.append(static_cast<const char *>(xcb_get_property_value(chunk.get())), length);
    }
}

// Reading with delete set tells an INCR owner to send its next chunk. The
// server deletes only a property read to its end, so one larger than asked
// for stays, with bytes_after telling how much is left.
XcbPtr<xcb_get_property_reply_t> SelectionReader::takeProperty(qsizetype maxBytes)
{
    const uint32_t maxLongs = uint32_t(maxBytes / 4 + 1);
    return XcbPtr<xcb_get_property_reply_t>(xcb_get_property_reply(
        m_connection,
        xcb_get_property(m_connection, 1, m_requestor, m_property, XCB_GET_PROPERTY_TYPE_ANY, 0, maxLongs),
        nullptr));
}

// The next event of the given type. Interrupted when the clipboard changes
// hands (or the reader stops) first, TimedOut when the deadline passes.
SelectionReader::Outcome SelectionReader::awaitEvent(uint8_t type, Clock::time_point deadline,
                                                     XcbPtr<xcb_generic_event_t> *event)
{
    for (;;) {
        *event = waitForEvent(deadline);
        if (!*event)
            return m_stop ? Outcome::Interrupted : Outcome::TimedOut;
        if (takeOwnerChange(event->get()))
            return Outcome::Interrupted;
        if (((*event)->response_type & 0x7f) == type)
            return Outcome::Done;
    }
}

// The next event, or null once the deadline has passed or the reader stops.
XcbPtr<xcb_generic_event_t> SelectionReader::waitForEvent(Clock::time_point deadline)
{
    for (;;) {
        if (m_stop)
            return {};
        // Waiting for a reply may have queued events that poll() would not
        // wake for: take those first.
        if (xcb_generic_event_t *event = xcb_poll_for_event(m_connection))
            return XcbPtr<xcb_generic_event_t>(event);
        if (xcb_connection_has_error(m_connection)) {
            qCWarning(lcPasteboard) << "the X connection of the clipboard reader broke; the clipboard is no longer read";
            m_stop = true;
            return {};
        }
        xcb_flush(m_connection);
        int timeoutMs = -1;
        if (deadline != Clock::time_point::max()) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
            if (left.count() <= 0)
                return {};
            timeoutMs = int(left.count());
        }
        std::array<pollfd, 2> fds = {pollfd{xcb_get_file_descriptor(m_connection), POLLIN, 0},
                                     pollfd{m_wakeFd, POLLIN, 0}};
        if (poll(fds.data(), fds.size(), timeoutMs) > 0 && fds[1].revents) {
            uint64_t count = 0;
            if (read(m_wakeFd, &count, sizeof count) < 0)
                continue;
        }
    }
}

void SelectionReader::drainEvents()
{
    while (xcb_generic_event_t *event = xcb_poll_for_event(m_connection)) {
        takeOwnerChange(event);
        std::free(event);
    }
}

// Only the latest change matters: a state replaced while it is being read
// is gone and no longer worth reading.
bool SelectionReader::takeOwnerChange(const xcb_generic_event_t *event)
{
    if ((event->response_type & 0x7f) != m_xfixesFirstEvent + XCB_XFIXES_SELECTION_NOTIFY)
        return false;
    const auto *notify = reinterpret_cast<const xcb_xfixes_selection_notify_event_t *>(event);
    if (notify->selection != m_clipboard)
        return false;
    qCDebug(lcPasteboard) << "owner change" << notify->subtype << "to" << notify->owner;
    m_pending = OwnerChange{notify->owner, notify->selection_timestamp};
    return true;
}

QStringList SelectionReader::atomNames(const QList<quint32> &atoms)
{
    QList<std::pair<quint32, xcb_get_atom_name_cookie_t>> asked;
    for (quint32 atom : atoms) {
        if (!m_atomNames.contains(atom))
            asked.append({atom, xcb_get_atom_name(m_connection, atom)});
    }
    for (const auto &[atom, cookie] : asked) {
        XcbPtr<xcb_get_atom_name_reply_t> reply(xcb_get_atom_name_reply(m_connection, cookie, nullptr));
        if (reply)
            m_atomNames.insert(atom, QString::fromUtf8(xcb_get_atom_name_name(reply.get()),
                                                       xcb_get_atom_name_name_length(reply.get())));
    }
    QStringList names;
    for (quint32 atom : atoms)
        names.append(m_atomNames.value(atom));
    return names;
}
