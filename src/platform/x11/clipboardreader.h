#pragma once

#include "platform/x11/pasteboardtypes.h"
#include "platform/x11/selectionreader.h"

#include <QList>
#include <QLoggingCategory>
#include <QObject>

#include <atomic>
#include <memory>

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
    void deliver(const QList<PasteboardItem> &items, quint32 owner, quint64 generation);

    std::atomic<quint64> m_generation{0};
    // The window through which Qt owns the clipboard; learnt at the first
    // own write, since Qt does not publish it.
    quint32 m_qtOwner = 0;
    std::unique_ptr<SelectionReader> m_worker;
};
