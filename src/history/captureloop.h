#pragma once

#include "history/contents.h"

#include <QObject>
#include <QString>
#include <QStringList>

class ApplicationRegistries;
class Dock;
class DocumentState;
class EventTimer;
class HistoryList;
class ImageFetcher;
class Notices;
class Pasteboard;
class RecordingSwitch;

// The one-second tick and the capture of the pasteboard into the history.
// MainTimer() does one whole tick; the running program calls it from a
// repeating timer, tests call it directly.
class CaptureLoop : public QObject
{
    Q_OBJECT

public:
    CaptureLoop(HistoryList &nsac, DocumentState &document, Pasteboard &pasteboard,
                ApplicationRegistries &registries, Dock &dock, Notices &notices, EventTimer &eventTimer,
                RecordingSwitch &recording, ImageFetcher *fetcher, QObject *parent = nullptr);

    void MainTimer();
    // Captures the pasteboard now, unless it holds the program's own write
    // (or a state marked secret) and no manual capture is running.
    void addPasteboard();
    // A new entry built from the pasteboard's current state, or null when it
    // lists no types.
    Entry NewPasteBoardContents();
    void setCurrentPasteboardToView(int n);
    // Orders entries by the number in their indexCount (text that is not a
    // number counts as 0).
    static int intSort(const contents &a, const contents &b);

    bool manualAdd() const { return mbManualAdd; }
    void setManualAdd(bool on) { mbManualAdd = on; }
    const Entry &currentContent() const { return m_currentContent; }
    bool isPaused() const { return m_paused; }
    // While paused (a modal preferences window is open) MainTimer() does nothing.
    void setPaused(bool paused) { m_paused = paused; }

Q_SIGNALS:
    // Each of these is sent when what it shows changed, so that an idle tick
    // repaints nothing.
    void entryCountShown(int n);
    void titleChanged(const QString &title, bool documentDirty);
    void typesSourceChanged(const QStringList &types);
    void currentContentChanged(const Entry &entry);
    void scrollBottomRequested();
    // Once per tick, after the guarded steps and before the dock badge: the
    // auto-save count runs here.
    void autoSaveDue();

private:
    bool isOwnOrSecretWrite(const QStringList &types) const;
    void showCurrent(int n);
    void showTypes(const QStringList &types);

    HistoryList &m_nsac;
    DocumentState &m_document;
    Pasteboard &m_pasteboard;
    ApplicationRegistries &m_registries;
    Dock &m_dock;
    Notices &m_notices;
    EventTimer &m_eventTimer;
    RecordingSwitch &m_recording;
    ImageFetcher *m_fetcher;

    qint32 lastChangeCount = -1;
    qint32 nsac_count = 0;
    qint32 viewChangeCount = -1;
    qint32 m_currentChangeCount = -1;
    bool mbManualAdd = false;
    bool m_paused = false;
    Entry m_currentContent;

    // What the views were last told.
    int m_shownCount = -1;
    QString m_shownTitle;
    bool m_shownDirty = false;
    Entry m_shownContent;
    QStringList m_shownTypes;
    bool m_typesShown = false;
};
