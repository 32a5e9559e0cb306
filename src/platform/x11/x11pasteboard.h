#pragma once

#include "platform/pasteboard.h"
#include "platform/x11/pasteboardtypes.h"

#include <QHash>
#include <QObject>
#include <QPointer>

class ClipboardReader;
class OfferedMimeData;

// The CLIPBOARD selection as the history sees it. Other programs' states are
// read by a worker (ClipboardReader) and kept whole, each one a new change
// count; the program's own states are written through QClipboard and kept
// the same way. Every read answers from the kept state.
class X11Pasteboard : public QObject, public Pasteboard
{
    Q_OBJECT
public:
    explicit X11Pasteboard(QObject *parent = nullptr);
    ~X11Pasteboard() override;

    int changeCount() const override { return m_changeCount; }
    QStringList types() const override { return m_types; }
    QByteArray dataForType(const QString &type) const override { return m_data.value(type); }

    int declareTypes(const QStringList &declared) override;
    bool setData(const QByteArray &data, const QString &type) override;

private:
    void takeSnapshot(const QList<PasteboardItem> &items, bool fromThisProgram);

    ClipboardReader *m_reader;
    int m_changeCount = 0;
    int m_declaredChangeCount = -1;
    QStringList m_types;
    QHash<QString, QByteArray> m_data;
    // Owned by QClipboard, which deletes it when another state replaces it.
    QPointer<OfferedMimeData> m_offered;
};
