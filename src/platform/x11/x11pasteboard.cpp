#include "platform/x11/x11pasteboard.h"

#include "platform/x11/clipboardreader.h"
#include "platform/x11/offeredmimedata.h"
#include "platform/pasteboardtype.h"

#include <QClipboard>
#include <QGuiApplication>

X11Pasteboard::X11Pasteboard(QObject *parent)
    : QObject(parent)
    , m_reader(new ClipboardReader(this))
{
    connect(m_reader, &ClipboardReader::snapshotRead, this, &X11Pasteboard::takeSnapshot);
}

X11Pasteboard::~X11Pasteboard() = default;

int X11Pasteboard::declareTypes(const QStringList &types)
{
    auto *offered = new OfferedMimeData;
    for (const QString &type : types)
        offered->setFormatData(PasteboardTypes::formatForType(type), QByteArray());
    QGuiApplication::clipboard()->setMimeData(offered, QClipboard::Clipboard);
    m_offered = offered;
    m_reader->noteOwnWrite();

    m_types = types;
    // Both text types are the one text format here, and reading it gives
    // both: the state as published lists the missing one beside the other.
    const qsizetype utf8 = m_types.indexOf(PasteboardType::Utf8PlainText);
    const qsizetype string = m_types.indexOf(PasteboardType::String);
    if (utf8 >= 0 && string < 0)
        m_types.insert(utf8 + 1, PasteboardType::String);
    else if (string >= 0 && utf8 < 0)
        m_types.insert(string, PasteboardType::Utf8PlainText);
    m_data.clear();
    m_declaredChangeCount = ++m_changeCount;
    return m_changeCount;
}

bool X11Pasteboard::setData(const QByteArray &data, const QString &type)
{
    if (m_changeCount != m_declaredChangeCount || !m_types.contains(type))
        return false;
    m_data.insert(type, data);
    if (type == PasteboardType::Utf8PlainText || type == PasteboardType::String) {
        m_data.insert(PasteboardType::Utf8PlainText, data);
        m_data.insert(PasteboardType::String, data);
    }
    // Qt hands the data out only when another program asks, so filling the
    // offered formats now still reaches every reader.
    if (m_offered)
        m_offered->setFormatData(PasteboardTypes::formatForType(type), data);
    return true;
}

void X11Pasteboard::takeSnapshot(const QList<PasteboardItem> &items, bool fromThisProgram)
{
    // Our declared state read back (a write without the marker): it was
    // published when it was declared. Qt drops m_offered as soon as anything
    // else takes the clipboard, a copy inside the program included.
    if (fromThisProgram && m_offered)
        return;
    m_types.clear();
    m_data.clear();
    for (const PasteboardItem &item : items) {
        m_types.append(item.type);
        m_data.insert(item.type, item.data);
    }
    ++m_changeCount;
}
