#include "platform/x11/clipboardreader.h"

#include "platform/pasteboardtype.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QtGui/qguiapplication_platform.h>
#include <QHash>
#include <QMetaObject>

#include <xcb/xcb.h>
#include <xcb/xfixes.h>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <optional>
#include <thread>

Q_LOGGING_CATEGORY(lcPasteboard, "quillstash.pasteboard", QtWarningMsg)

namespace {

using Clock = std::chrono::steady_clock;

// How long an owner may stay silent, for an answer or for the next INCR chunk.
constexpr auto ownerTimeout = std::chrono::seconds(5);
constexpr qsizetype maxFormatBytes = qsizetype(256) * 1024 * 1024;
// Conversions use these property names in turn, so that a late answer to an
// abandoned conversion does not land where the current one is awaited.
constexpr int propertyAtomCount = 16;

struct FreeDeleter
{
    void operator()(void *p) const { std::free(p); }
};
template<typename T>
using XcbPtr = std::unique_ptr<T, FreeDeleter>;

struct OwnerChange
{
    xcb_window_t owner = XCB_NONE;
    xcb_timestamp_t time = XCB_CURRENT_TIME;
};

} // namespace

class ClipboardReader::Worker
{
public:
    explicit Worker(ClipboardReader *reader);
    ~Worker();
    Worker(const Worker &) = delete;
    Worker &operator=(const Worker &) = delete;

private:
    enum class Outcome { Done, Failed, Interrupted };

    void run();
    bool setUp();
    void readState(const OwnerChange &change);
    Outcome convert(xcb_atom_t target, xcb_timestamp_t time, QByteArray *data);
    Outcome readIncr(xcb_atom_t property, const xcb_get_property_reply_t &header, QByteArray *data);
    XcbPtr<xcb_get_property_reply_t> takeProperty(xcb_atom_t property);
    Outcome awaitEvent(uint8_t type, Clock::time_point deadline, XcbPtr<xcb_generic_event_t> *event);
    XcbPtr<xcb_generic_event_t> waitForEvent(Clock::time_point deadline);
    void drainEvents();
    bool takeOwnerChange(const xcb_generic_event_t *event);
    bool interrupted() const { return m_stop || m_pending; }
    QStringList atomNames(const QList<xcb_atom_t> &atoms);
    xcb_atom_t nextProperty();
    void publish(const QList<PasteboardItem> &items, xcb_window_t owner, quint64 generation);

    ClipboardReader *const m_reader;
    std::atomic_bool m_stop{false};
    int m_wakeFd = -1;
    xcb_connection_t *m_connection = nullptr;
    xcb_window_t m_window = XCB_NONE;
    uint8_t m_xfixesFirstEvent = 0;
    xcb_atom_t m_clipboard = XCB_NONE;
    xcb_atom_t m_targets = XCB_NONE;
    xcb_atom_t m_incr = XCB_NONE;
    std::array<xcb_atom_t, propertyAtomCount> m_properties{};
    int m_nextProperty = 0;
    std::optional<OwnerChange> m_pending;
    QHash<xcb_atom_t, QString> m_atomNames;
    std::thread m_thread;
};

ClipboardReader::Worker::Worker(ClipboardReader *reader)
    : m_reader(reader)
    , m_wakeFd(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    m_thread = std::thread([this] { run(); });
}

ClipboardReader::Worker::~Worker()
{
    m_stop = true;
    const uint64_t one = 1;
    if (write(m_wakeFd, &one, sizeof one) < 0)
        qCWarning(lcPasteboard) << "cannot wake the clipboard reader";
    m_thread.join();
    if (m_connection)
        xcb_disconnect(m_connection);
    close(m_wakeFd);
}

void ClipboardReader::Worker::run()
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
    }
}

bool ClipboardReader::Worker::setUp()
{
    int screenNumber = 0;
    m_connection = xcb_connect(nullptr, &screenNumber);
    if (xcb_connection_has_error(m_connection)) {
        qCWarning(lcPasteboard) << "cannot open a second X connection; the clipboard is not read";
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

    QList<QByteArray> names = {"CLIPBOARD", "TARGETS", "INCR"};
    for (int i = 0; i < propertyAtomCount; ++i)
        names.append("QUILLSTASH_SELECTION_" + QByteArray::number(i));
    QList<xcb_intern_atom_cookie_t> cookies;
    for (const QByteArray &name : names)
        cookies.append(xcb_intern_atom(m_connection, 0, name.size(), name.constData()));
    QList<xcb_atom_t> atoms;
    for (const xcb_intern_atom_cookie_t &cookie : cookies) {
        XcbPtr<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(m_connection, cookie, nullptr));
        atoms.append(reply ? reply->atom : XCB_NONE);
    }
    m_clipboard = atoms.at(0);
    m_targets = atoms.at(1);
    m_incr = atoms.at(2);
    std::copy(atoms.begin() + 3, atoms.end(), m_properties.begin());

    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(m_connection));
    for (int i = 0; i < screenNumber && screens.rem > 1; ++i)
        xcb_screen_next(&screens);
    m_window = xcb_generate_id(m_connection);
    // Property changes from the start: INCR relies on them, and the mask must
    // be in place before the INCR property is deleted.
    const uint32_t eventMask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(m_connection, 0, m_window, screens.data->root, 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &eventMask);
    xcb_xfixes_select_selection_input(m_connection, m_window, m_clipboard,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER
                                          | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY
                                          | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    // Asked after selecting the input, so that no change falls in between.
    XcbPtr<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
        m_connection, xcb_get_selection_owner(m_connection, m_clipboard), nullptr));
    if (owner && owner->owner != XCB_NONE)
        m_pending = OwnerChange{owner->owner, XCB_CURRENT_TIME};
    return true;
}

void ClipboardReader::Worker::readState(const OwnerChange &change)
{
    const quint64 generation = m_reader->m_generation.load();
    if (change.owner == XCB_NONE) {
        qCDebug(lcPasteboard) << "the clipboard has no owner";
        publish({}, XCB_NONE, generation);
        return;
    }
    QElapsedTimer elapsed;
    elapsed.start();
    QByteArray targetList;
    const Outcome listed = convert(m_targets, change.time, &targetList);
    if (listed == Outcome::Interrupted)
        return;
    if (listed == Outcome::Failed) {
        qCDebug(lcPasteboard) << "owner" << change.owner << "did not list its formats";
        publish({}, change.owner, generation);
        return;
    }
    QList<xcb_atom_t> atoms;
    for (qsizetype i = 0; i + 4 <= targetList.size(); i += 4)
        atoms.append(*reinterpret_cast<const uint32_t *>(targetList.constData() + i));
    const QStringList offered = atomNames(atoms);
    if (offered.contains(PasteboardType::Ignore)) {
        qCDebug(lcPasteboard) << "the program's own state, not read";
        return;
    }

    QHash<QString, QByteArray> read;
    for (const QString &target : PasteboardTypes::targetsToRead(offered)) {
        QByteArray data;
        const Outcome outcome = convert(atoms.at(offered.indexOf(target)), change.time, &data);
        if (outcome == Outcome::Interrupted)
            return;
        if (outcome == Outcome::Done)
            read.insert(target, data);
        else
            qCDebug(lcPasteboard) << "left out" << target;
    }
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
    publish(items, change.owner, generation);
}

// ICCCM conversion of one target into one of our properties.
ClipboardReader::Worker::Outcome ClipboardReader::Worker::convert(xcb_atom_t target, xcb_timestamp_t time,
                                                                  QByteArray *data)
{
    const xcb_atom_t property = nextProperty();
    xcb_convert_selection(m_connection, m_window, m_clipboard, target, property, time);
    const Clock::time_point deadline = Clock::now() + ownerTimeout;
    for (;;) {
        // Property events before the answer (the INCR property's first
        // NEW_VALUE among them, which is no chunk) are passed by.
        XcbPtr<xcb_generic_event_t> event;
        if (const Outcome waited = awaitEvent(XCB_SELECTION_NOTIFY, deadline, &event); waited != Outcome::Done)
            return waited;
        const auto *notify = reinterpret_cast<const xcb_selection_notify_event_t *>(event.get());
        if (notify->requestor != m_window || notify->selection != m_clipboard || notify->target != target)
            continue;
        if (notify->property == XCB_NONE && notify->time == time)
            return Outcome::Failed;
        if (notify->property == property)
            break;
    }
    const XcbPtr<xcb_get_property_reply_t> reply = takeProperty(property);
    if (!reply)
        return Outcome::Failed;
    if (reply->type == m_incr)
        return readIncr(property, *reply, data);
    if (reply->bytes_after > 0)
        return Outcome::Failed;
    *data = QByteArray(static_cast<const char *>(xcb_get_property_value(reply.get())),
                       xcb_get_property_value_length(reply.get()));
    return Outcome::Done;
}

ClipboardReader::Worker::Outcome ClipboardReader::Worker::readIncr(xcb_atom_t property,
                                                                   const xcb_get_property_reply_t &header,
                                                                   QByteArray *data)
{
    // The INCR value is a lower bound of the size, enough to refuse early.
    uint32_t sizeHint = 0;
    if (xcb_get_property_value_length(&header) >= int(sizeof sizeHint))
        sizeHint = *static_cast<const uint32_t *>(xcb_get_property_value(&header));
    if (sizeHint > maxFormatBytes)
        return Outcome::Failed;
    QByteArray collected;
    collected.reserve(sizeHint);
    Clock::time_point deadline = Clock::now() + ownerTimeout;
    for (;;) {
        XcbPtr<xcb_generic_event_t> event;
        if (const Outcome waited = awaitEvent(XCB_PROPERTY_NOTIFY, deadline, &event); waited != Outcome::Done)
            return waited;
        const auto *notify = reinterpret_cast<const xcb_property_notify_event_t *>(event.get());
        if (notify->window != m_window || notify->atom != property || notify->state != XCB_PROPERTY_NEW_VALUE)
            continue;
        const XcbPtr<xcb_get_property_reply_t> chunk = takeProperty(property);
        if (!chunk)
            return Outcome::Failed;
        const int length = xcb_get_property_value_length(chunk.get());
        if (length == 0) {
            *data = collected;
            return Outcome::Done;
        }
        if (chunk->bytes_after > 0 || collected.size() + length > maxFormatBytes)
            return Outcome::Failed;
        collected.append(static_cast<const char *>(xcb_get_property_value(chunk.get())), length);
        deadline = Clock::now() + ownerTimeout;
    }
}

// The next event of the given type. Interrupted when the clipboard changes
// hands (or the reader stops) first, Failed when the deadline passes.
ClipboardReader::Worker::Outcome ClipboardReader::Worker::awaitEvent(uint8_t type, Clock::time_point deadline,
                                                                     XcbPtr<xcb_generic_event_t> *event)
{
    for (;;) {
        *event = waitForEvent(deadline);
        if (!*event)
            return m_stop ? Outcome::Interrupted : Outcome::Failed;
        if (takeOwnerChange(event->get()))
            return Outcome::Interrupted;
        if (((*event)->response_type & 0x7f) == type)
            return Outcome::Done;
    }
}

// Reading with delete set tells an INCR owner to send its next chunk.
XcbPtr<xcb_get_property_reply_t> ClipboardReader::Worker::takeProperty(xcb_atom_t property)
{
    const uint32_t maxLongs = maxFormatBytes / 4 + 1;
    return XcbPtr<xcb_get_property_reply_t>(xcb_get_property_reply(
        m_connection, xcb_get_property(m_connection, 1, m_window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, maxLongs),
        nullptr));
}

// The next event, or null once the deadline has passed or the reader stops.
XcbPtr<xcb_generic_event_t> ClipboardReader::Worker::waitForEvent(Clock::time_point deadline)
{
    for (;;) {
        if (m_stop)
            return {};
        // Waiting for a reply may have queued events that poll() would not
        // wake for: take those first.
        if (xcb_generic_event_t *event = xcb_poll_for_event(m_connection))
            return XcbPtr<xcb_generic_event_t>(event);
        if (xcb_connection_has_error(m_connection)) {
            qCWarning(lcPasteboard) << "the X connection of the clipboard reader broke";
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

void ClipboardReader::Worker::drainEvents()
{
    while (xcb_generic_event_t *event = xcb_poll_for_event(m_connection)) {
        takeOwnerChange(event);
        std::free(event);
    }
}

// Only the latest change matters: a state replaced while it is being read
// is gone and no longer worth reading.
bool ClipboardReader::Worker::takeOwnerChange(const xcb_generic_event_t *event)
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

QStringList ClipboardReader::Worker::atomNames(const QList<xcb_atom_t> &atoms)
{
    QList<std::pair<xcb_atom_t, xcb_get_atom_name_cookie_t>> asked;
    for (xcb_atom_t atom : atoms) {
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
    for (xcb_atom_t atom : atoms)
        names.append(m_atomNames.value(atom));
    return names;
}

xcb_atom_t ClipboardReader::Worker::nextProperty()
{
    const xcb_atom_t property = m_properties.at(m_nextProperty);
    m_nextProperty = (m_nextProperty + 1) % propertyAtomCount;
    return property;
}

void ClipboardReader::Worker::publish(const QList<PasteboardItem> &items, xcb_window_t owner, quint64 generation)
{
    ClipboardReader *reader = m_reader;
    QMetaObject::invokeMethod(
        reader, [reader, items, owner, generation] { reader->deliver(items, owner, generation); },
        Qt::QueuedConnection);
}

ClipboardReader::ClipboardReader(QObject *parent)
    : QObject(parent)
{
    // Off X11 there is no clipboard of other programs to read.
    if (QGuiApplication::platformName() != QLatin1String("xcb"))
        return;
    m_worker = std::make_unique<Worker>(this);
}

ClipboardReader::~ClipboardReader() = default;

void ClipboardReader::noteOwnWrite()
{
    ++m_generation;
    if (!m_worker || m_qtOwner != 0)
        return;
    // A round trip to the X server only, which never waits on another program.
    auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    xcb_connection_t *connection = x11 ? x11->connection() : nullptr;
    if (!connection)
        return;
    static const char clipboardName[] = "CLIPBOARD";
    XcbPtr<xcb_intern_atom_reply_t> clipboard(xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, sizeof clipboardName - 1, clipboardName), nullptr));
    if (!clipboard)
        return;
    XcbPtr<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
        connection, xcb_get_selection_owner(connection, clipboard->atom), nullptr));
    if (owner)
        m_qtOwner = owner->owner;
}

void ClipboardReader::deliver(const QList<PasteboardItem> &items, quint32 owner, quint64 generation)
{
    if (generation != m_generation.load()) {
        qCDebug(lcPasteboard) << "dropped a state read before the program's own";
        return;
    }
    Q_EMIT snapshotRead(items, owner != XCB_NONE && owner == m_qtOwner);
}
