#include "platform/x11/x11pasteboard.h"

#include "platform/pasteboardtype.h"
#include "platform/x11/clipboardreader.h"
#include "platform/x11/offeredmimedata.h"

#include <QClipboard>
#include <QGuiApplication>

X11Pasteboard::X11Pasteboard(QObject *parent)
    : QObject(parent)
    , m_reader(new ClipboardReader(this))
{
    connect(m_reader, &ClipboardReader::snapshotRead, this, &X11Pasteboard::takeSnapshot);
}

X11Pasteboard::~X11Pasteboard() = default;

int X11Pasteboard::declareTypes(const QStringList &declared)
{
    // Text declared by its UTF-8 name is the string as well, as another
    // program's text is when it is read: entries show the string.
    QStringList types = declared;
    if (types.contains(PasteboardType::Utf8PlainText) && !types.contains(PasteboardType::String))
        types.insert(types.indexOf(PasteboardType::Utf8PlainText) + 1, PasteboardType::String);
    auto *offered = new OfferedMimeData;
    for (const QString &type : types)
        offered->setFormatData(PasteboardTypes::formatForType(type), QByteArray());
    QGuiApplication::clipboard()->setMimeData(offered, QClipboard::Clipboard);
    m_offered = offered;
    m_reader->noteOwnWrite();

    m_types = types;
    m_data.clear();
    m_declaredChangeCount = ++m_changeCount;
    return m_changeCount;
}

bool X11Pasteboard::setData(const QByteArray &data, const QString &type)
{
    if (m_changeCount != m_declaredChangeCount || !m_types.contains(type))
        return false;
    m_data.insert(type, data);
    // Both names are the one text/plain format on the clipboard.
    if (type == PasteboardType::Utf8PlainText || type == PasteboardType::String) {
        for (const QString &text : {PasteboardType::Utf8PlainText, PasteboardType::String}) {
            if (m_types.contains(text))
                m_data.insert(text, data);
        }
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
