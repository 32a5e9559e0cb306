#include "history/historyactions.h"

#include "history/captureloop.h"
#include "history/documentstate.h"
#include "history/historylist.h"
#include "platform/pasteboard.h"
#include "platform/pasteboardtype.h"
#include "platform/workspace.h"
#include "recording/eventtimer.h"
#include "recording/notices.h"
#include "recording/recordingswitch.h"

#include <QMutexLocker>
#include <QScopeGuard>
#include <QUrl>

HistoryActions::HistoryActions(HistoryList &nsac, const DocumentState &document, Pasteboard &pasteboard,
                               CaptureLoop &capture, Notices &notices, EventTimer &eventTimer,
                               RecordingSwitch &recording, Workspace &workspace, QObject *parent)
    : QObject(parent)
    , m_nsac(nsac)
    , m_document(document)
    , m_pasteboard(pasteboard)
    , m_capture(capture)
    , m_notices(notices)
    , m_eventTimer(eventTimer)
    , m_recording(recording)
    , m_workspace(workspace)
{
}

void HistoryActions::setGeneralPasteboard(const Entry &entry)
{
    if (!entry)
        return;
    // The marker makes the next tick pass this state by; it must always fit.
    // An entry captured by hand from our own write already lists it: it is
    // declared once, last.
    QStringList types = entry->types();
    types.removeAll(PasteboardType::Ignore);
    types = types.mid(0, maxRestoredTypes - 1);
    types.append(PasteboardType::Ignore);
    m_pasteboard.declareTypes(types);

    const contents::Datas &datas = entry->datas();
    for (const QString &type : std::as_const(types)) {
        if (datas.contains(type))
            m_pasteboard.setData(datas.value(type), type);
    }

    m_eventTimer.setSoundName(QStringLiteral("Submarine"));
    m_notices.messageGrowl(QStringLiteral("Change Pasteboard"), entry->content(),
                           Notices::ChangePasteboardNotification);
}

void HistoryActions::changePasteBoard()
{
    m_recording.cancelAutoRec();
    const QList<Entry> selected = m_nsac.selectedObjects();
    if (!selected.isEmpty())
        setGeneralPasteboard(selected.first());
}

void HistoryActions::copy()
{
    changePasteBoard();
}

void HistoryActions::cut()
{
    changePasteBoard();
    removeObject();
}

void HistoryActions::paste()
{
    manualCapture();
}

void HistoryActions::stock()
{
    manualCapture();
}

void HistoryActions::manualCapture()
{
    m_capture.setManualAdd(true);
    const auto endManualAdd = qScopeGuard([this] { m_capture.setManualAdd(false); });
    m_capture.addPasteboard();
}

void HistoryActions::removeObject()
{
    const QList<Entry> selected = m_nsac.selectedObjects();
    if (selected.isEmpty())
        return;
    const Entry entry = selected.first();
    m_eventTimer.setSoundName(QStringLiteral("Bottle"));
    m_notices.messageGrowl(QStringLiteral("Remove from Table"), entry->content(),
                           Notices::RemovePasteboardNotification);
    m_nsac.removeObject(entry);
}

void HistoryActions::removeAllObject()
{
    const QMutexLocker locker(&mylock);
    m_nsac.removeObjectsAtArrangedObjectIndexes(0, m_nsac.arrangedCount());
}

void HistoryActions::onDoubleClickTable()
{
    const QList<Entry> selected = m_nsac.selectedObjects();
    if (selected.isEmpty())
        return;
    const Entry entry = selected.first();

    // In both cases the display string is what is opened, not the stored link.
    if (entry->types().contains(PasteboardType::String)) {
        if (const std::optional<QUrl> url = contents::addressOf(entry->content())) {
            m_workspace.openURL(*url);
            return;
        }
    }
    if (entry->types().contains(PasteboardType::UrlPboard) && entry->datas().contains(PasteboardType::UrlPboard)) {
        if (const std::optional<QUrl> url = contents::addressOf(entry->content()))
            m_workspace.openURL(*url);
    }
}

void HistoryActions::scrollTop()
{
    Q_EMIT scrollTopRequested();
}

void HistoryActions::scrollBottom()
{
    Q_EMIT scrollBottomRequested();
}

bool HistoryActions::IsClean() const
{
    return m_document.isClean();
}

void HistoryActions::setStatusString(const QString &status)
{
    _pstrStatusString = status;
    Q_EMIT statusStringChanged(_pstrStatusString);
}
