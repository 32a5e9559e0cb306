#pragma once

#include "platform/x11/pasteboardtypes.h"
#include "platform/x11/selectionreader.h"

#include <QList>
#include <QLoggingCategory>
#include <QObject>

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>

Q_DECLARE_LOGGING_CATEGORY(lcPasteboard)

// Reads every new state of the CLIPBOARD selection on a worker thread with an
// X connection of its own (SelectionReader), so that an owner that answers
// slowly or never cannot stall the window. It reads the display the
// application runs on; off X11 (e.g. offscreen) it does nothing.
class ClipboardReader : public QObject
{
    Q_OBJECT
public:
    explicit ClipboardReader(QObject *parent = nullptr, const SelectionReader::Limits &limits = {});
    ~ClipboardReader() override;
    ClipboardReader(const ClipboardReader &) = delete;
    ClipboardReader &operator=(const ClipboardReader &) = delete;

    // Called on the GUI thread right after the program has taken the
    // clipboard through QClipboard: a state whose reading began earlier is
    // older than the program's own and is dropped.
    void noteOwnWrite();

Q_SIGNALS:
    // A complete state, delivered on the GUI thread; empty once the clipboard
    // has no owner or the owner did not answer. `fromThisProgram`: offered by
    // this program's own QClipboard, whoever in the program put it there.
    void snapshotRead(const QList<PasteboardItem> &items, bool fromThisProgram);

private:
    struct Snapshot
    {
        QList<PasteboardItem> items;
        quint32 owner = 0;
        quint64 generation = 0;
    };

    // On the GUI thread: publishes the latest state the worker read. States
    // read in a burst replace one another, since only the last one is current.
    Q_INVOKABLE void takeLatest();

    std::atomic<quint64> m_generation{0};
    // Handed from the worker to the GUI thread under a lock of the standard
    // library, so that the hand-over is plain to see for thread checkers too.
    std::mutex m_latestMutex;
    std::optional<Snapshot> m_latest;
    // The window through which Qt owns the clipboard; learnt at the first
    // own write, since Qt does not publish it.
    quint32 m_qtOwner = 0;
    std::unique_ptr<SelectionReader> m_worker;
};
