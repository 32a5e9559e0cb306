#pragma once

#include "history/contents.h"

#include <QMutex>
#include <QObject>
#include <QString>

class CaptureLoop;
class DocumentState;
class EventTimer;
class HistoryList;
class Notices;
class Pasteboard;
class RecordingSwitch;
class Workspace;

// The commands on the history list: restore, copy, cut, manual capture,
// removal, opening an entry as a link, scrolling and the status text.
// Commands act on the first selected entry and do nothing without one.
class HistoryActions : public QObject
{
    Q_OBJECT

public:
    // A restore declares at most this many types, the marker included.
    static constexpr int maxRestoredTypes = 256;

    HistoryActions(HistoryList &nsac, const DocumentState &document, Pasteboard &pasteboard, CaptureLoop &capture,
                   Notices &notices, EventTimer &eventTimer, RecordingSwitch &recording, Workspace &workspace,
                   QObject *parent = nullptr);

    void setGeneralPasteboard(const Entry &entry);
    void changePasteBoard();
    void copy();
    void cut();
    void paste();
    void stock();
    // Captures the clipboard as it is, even the program's own writes (a
    // phrase, the date) that the tick passes by.
    void manualCapture();
    void removeObject();
    void removeAllObject();
    void onDoubleClickTable();
    void scrollTop();
    void scrollBottom();
    bool IsClean() const;
    const QString &statusString() const { return _pstrStatusString; }
    void setStatusString(const QString &status);

Q_SIGNALS:
    void scrollTopRequested();
    void scrollBottomRequested();
    void statusStringChanged(const QString &status);

private:
    HistoryList &m_nsac;
    const DocumentState &m_document;
    Pasteboard &m_pasteboard;
    CaptureLoop &m_capture;
    Notices &m_notices;
    EventTimer &m_eventTimer;
    RecordingSwitch &m_recording;
    Workspace &m_workspace;
    QString _pstrStatusString;
    QMutex mylock;
};
