#include "platform/x11/clipboardreader.h"

#include "platform/x11/xcbpointer.h"

#include <QGuiApplication>
#include <QMetaObject>
#include <QtGui/qguiapplication_platform.h>

#include <xcb/xcb.h>

Q_LOGGING_CATEGORY(lcPasteboard, "quillstash.pasteboard", QtWarningMsg)

// Xlib's name of the display Qt opened; declared here rather than through
// Xlib.h, whose macros (None, Bool, Status) clash with Qt's names.
extern "C" char *XDisplayString(Display *display);

ClipboardReader::ClipboardReader(QObject *parent, const SelectionReader::Limits &limits)
    : QObject(parent)
{
    // Off X11 there is no clipboard of other programs to read.
    if (QGuiApplication::platformName() != QLatin1String("xcb"))
        return;
    // The display Qt opened (from -display or DISPLAY at start-up), whatever
    // DISPLAY says by now.
    auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    Display *display = x11 ? x11->display() : nullptr;
    if (!display) {
        qCWarning(lcPasteboard) << "Qt shows no X display; the clipboard is not read";
        return;
    }
    const QByteArray displayName(XDisplayString(display));
    m_worker = std::make_unique<SelectionReader>(
        displayName, limits, m_generation, [this](const QList<PasteboardItem> &items, quint32 owner, quint64 generation) {
            {
                const std::lock_guard lock(m_latestMutex);
                m_latest = Snapshot{items, owner, generation};
            }
            // By name, so that Qt alone makes and frees the queued call.
            QMetaObject::invokeMethod(this, "takeLatest", Qt::QueuedConnection);
        });
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

void ClipboardReader::takeLatest()
{
    std::optional<Snapshot> latest;
    {
        const std::lock_guard lock(m_latestMutex);
        latest.swap(m_latest);
    }
    if (!latest)
        return; // taken by an earlier call
    if (latest->generation != m_generation.load()) {
        qCDebug(lcPasteboard) << "dropped a state read before the program's own";
        return;
    }
    Q_EMIT snapshotRead(latest->items, latest->owner != XCB_NONE && latest->owner == m_qtOwner);
}
