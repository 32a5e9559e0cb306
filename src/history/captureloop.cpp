#include "history/captureloop.h"

#include "history/documentstate.h"
#include "history/historylist.h"
#include "platform/dock.h"
#include "platform/leadinginteger.h"
#include "platform/pasteboard.h"
#include "platform/pasteboardtype.h"
#include "recording/eventtimer.h"
#include "recording/notices.h"
#include "recording/recordingswitch.h"
#include "settings/applicationregistries.h"

#include <QDateTime>
#include <QLoggingCategory>

#include <algorithm>
#include <climits>
#include <exception>

// Both are off by default; the desktop tests switch them on and read them.
Q_LOGGING_CATEGORY(lcCapture, "quillstash.capture", QtInfoMsg)
Q_LOGGING_CATEGORY(lcTick, "quillstash.tick", QtInfoMsg)

namespace {

const QByteArray passwordHintSecret = QByteArrayLiteral("secret");

// Sequence numbers are compared as the numbers their texts start with; the
// initial "zero" counts as 0.
int intValue(const QString &text)
{
    return int(std::clamp<qint64>(leadingInteger(text), INT_MIN, INT_MAX));
}

} // namespace

CaptureLoop::CaptureLoop(HistoryList &nsac, DocumentState &document, Pasteboard &pasteboard,
                         ApplicationRegistries &registries, Dock &dock, Notices &notices, EventTimer &eventTimer,
                         RecordingSwitch &recording, ImageFetcher *fetcher, QObject *parent)
    : QObject(parent)
    , m_nsac(nsac)
    , m_document(document)
    , m_pasteboard(pasteboard)
    , m_registries(registries)
    , m_dock(dock)
    , m_notices(notices)
    , m_eventTimer(eventTimer)
    , m_recording(recording)
    , m_fetcher(fetcher)
{
}

void CaptureLoop::MainTimer()
{
    if (m_paused)
        return;
    qCDebug(lcTick, "tick %lld", static_cast<long long>(QDateTime::currentMSecsSinceEpoch()));

    m_recording.checkAutoRecStatus();
    m_recording.updateOnOffSign();

    const int n = int(m_nsac.arrangedCount());
    if (n != m_shownCount) {
        m_shownCount = n;
        Q_EMIT entryCountShown(n);
    }

    try {
        m_document.updateTitle();
        const bool dirty = !m_document.isClean();
        if (m_document.title() != m_shownTitle || dirty != m_shownDirty) {
            m_shownTitle = m_document.title();
            m_shownDirty = dirty;
            Q_EMIT titleChanged(m_shownTitle, dirty);
        }

        const qint32 m = qint32(m_nsac.arrangedCount());
        if (m != nsac_count) {
            nsac_count = m;
            m_document.setEStatus(1);
        }

        if (m_registries.isAutoRemove()) {
            qsizetype c = m_nsac.arrangedCount();
            if (c > m_registries.limitNumber()) {
                // One stable sort in intSort's order serves every removal of
                // this tick: nothing else changes the list meanwhile, so its
                // first entries are the first smallest in turn. The entries
                // go in one pass, so that a limit lowered under a long
                // history does not stall the tick.
                QList<Entry> oldestFirst = m_nsac.arrangedObjects();
                std::stable_sort(oldestFirst.begin(), oldestFirst.end(),
                                 [](const Entry &a, const Entry &b) { return intSort(*a, *b) < 0; });
                oldestFirst.resize(c - std::max<qsizetype>(m_registries.limitNumber(), 0));
                m_nsac.removeObjects(oldestFirst);
            }
        }

        if (m_recording.automaticRec()) {
            const int changeCount = m_pasteboard.changeCount();
            if (changeCount != lastChangeCount) {
                addPasteboard();
                lastChangeCount = changeCount;
            }
        }

        // Only entries whose preview is not final yet take part: an idle
        // tick over a long history visits none.
        m_nsac.givePreviewAttempts(m_fetcher);

        if (n > 0) {
            const QList<Entry> selected = m_nsac.selectedObjects();
            if (!selected.isEmpty())
                showTypes(selected.first()->types());
        }
    } catch (const std::exception &) {
        qWarning("exception catched");
    }

    Q_EMIT autoSaveDue();

    if (n > 0 && !m_dock.isActive())
        m_dock.setBadgeLabel(QString::number(n));
    else
        m_dock.setBadgeLabel(QString());

    setCurrentPasteboardToView(n);
}

bool CaptureLoop::isOwnOrSecretWrite(const QStringList &types) const
{
    if (types.contains(PasteboardType::Ignore) || types.contains(PasteboardType::Concealed))
        return true;
    return types.contains(PasteboardType::PasswordHint)
        && m_pasteboard.dataForType(PasteboardType::PasswordHint) == passwordHintSecret;
}

void CaptureLoop::addPasteboard()
{
    const QStringList types = m_pasteboard.types();
    if (types.isEmpty())
        return;
    if (!mbManualAdd && isOwnOrSecretWrite(types))
        return;

    const Entry entry = NewPasteBoardContents();
    if (entry) {
        m_nsac.addObject(entry);
        m_document.setCounter(m_document.getCounter() + 1);
        qCDebug(lcCapture, "captured %s types: %s", qUtf8Printable(entry->indexCount()),
                qUtf8Printable(entry->types().join(QStringLiteral(", "))));
    }
    m_eventTimer.setSoundName(QStringLiteral("Pop"));
    m_notices.messageGrowl(QStringLiteral("Add to Table"), entry ? entry->content() : QString(),
                           Notices::AddPasteboardNotification);
    Q_EMIT scrollBottomRequested();
}

Entry CaptureLoop::NewPasteBoardContents()
{
    const QStringList firstTypes = m_pasteboard.types();
    if (firstTypes.isEmpty())
        return {};

    auto entry = std::make_shared<contents>();
    entry->setIndexCount(QString::number(m_document.getCounter()));
    if (firstTypes.contains(PasteboardType::String))
        entry->setContentUtf8(m_pasteboard.dataForType(PasteboardType::String));
    else
        entry->setContent(QStringLiteral("[ ") + firstTypes.first() + QStringLiteral(" ]"));
    entry->setMainType(firstTypes.first());

    const QStringList types = m_pasteboard.types();
    contents::Datas datas;
    for (const QString &type : types) {
        const QByteArray data = m_pasteboard.dataForType(type);
        if (!data.isNull())
            datas.insert(type, data);
    }
    entry->setTypes(types);
    entry->setDatas(datas);
    return entry;
}

void CaptureLoop::setCurrentPasteboardToView(int n)
{
    if (viewChangeCount < 0) {
        viewChangeCount = m_pasteboard.changeCount();
        showCurrent(n);
    }
    if (m_pasteboard.changeCount() == viewChangeCount)
        return;
    showCurrent(n);
}

void CaptureLoop::showCurrent(int n)
{
    // Once the pasteboard has changed, the current state is shown again on
    // every tick. While it stays the same state (same change count) it keeps
    // its entry, so that its preview attempts, and a picture fetched from its
    // address, carry over instead of starting anew every second.
    const int changeCount = m_pasteboard.changeCount();
    if (!m_currentContent || changeCount != m_currentChangeCount) {
        m_currentContent = NewPasteBoardContents();
        m_currentChangeCount = changeCount;
    }

    if (m_currentContent) {
        m_currentContent->setImageLater(m_fetcher);
        if (m_currentContent != m_shownContent) {
            m_shownContent = m_currentContent;
            Q_EMIT currentContentChanged(m_currentContent);
        }
    }
    if (n == 0)
        showTypes(m_currentContent ? m_currentContent->types() : QStringList());
}

void CaptureLoop::showTypes(const QStringList &types)
{
    if (m_typesShown && types == m_shownTypes)
        return;
    m_typesShown = true;
    m_shownTypes = types;
    Q_EMIT typesSourceChanged(types);
}

int CaptureLoop::intSort(const contents &a, const contents &b)
{
    const int left = intValue(a.indexCount());
    const int right = intValue(b.indexCount());
    if (left < right)
        return -1;
    if (left > right)
        return 1;
    return 0;
}
