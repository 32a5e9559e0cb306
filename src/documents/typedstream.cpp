#include "documents/typedstream.h"

#include <QStringDecoder>

#include <vector>

namespace {

constexpr char streamerVersion = 4;
// The signature names the byte order of every multi-byte integer after it.
constexpr QByteArrayView littleEndianSignature = "streamtyped";
constexpr QByteArrayView bigEndianSignature = "typedstream";
constexpr qint16 macSystemVersion = 1000;

// Head bytes from -128 to -111 are tags; every other byte is a one-byte
// integer, or, where a shared string or object may stand, a reference to the
// one stored (reference number - firstReference) places earlier.
constexpr qint8 firstTag = -128;
constexpr qint8 lastTag = -111;
constexpr qint8 tagInteger2 = -127;
constexpr qint8 tagInteger4 = -126;
constexpr qint8 tagNew = -124;
constexpr qint8 tagNil = -123;
constexpr qint8 tagEndOfObject = -122;
constexpr qint8 firstReference = lastTag + 1;

constexpr QByteArrayView objectType = "@";
constexpr QByteArrayView bytesType = "+";
constexpr QByteArrayView stringClass = "NSString";
constexpr QByteArrayView mutableStringClass = "NSMutableString";
constexpr QByteArrayView rootClass = "NSObject";
constexpr int stringClassVersion = 1;
constexpr int rootClassVersion = 0;

bool isTag(qint8 head)
{
    return head >= firstTag && head <= lastTag;
}

// The archive is always written in the Intel byte order, as the Macs whose
// files these must be wrote it, whatever machine runs this.
class Writer
{
public:
    void byte(qint8 b) { m_out.append(char(b)); }

    void integer(qint32 value)
    {
        if (value >= firstReference && value <= 127) {
            byte(qint8(value));
        } else if (value >= -32768 && value <= 32767) {
            byte(tagInteger2);
            littleEndian(quint32(value), 2);
        } else {
            byte(tagInteger4);
            littleEndian(quint32(value), 4);
        }
    }

    void bytes(QByteArrayView data)
    {
        integer(qint32(data.size()));
        m_out.append(data);
    }

    // A string not stored before: each is stored once here, so none is ever
    // written as a reference.
    void newSharedString(QByteArrayView text)
    {
        byte(tagNew);
        bytes(text);
    }

    void newClass(QByteArrayView name, int version)
    {
        byte(tagNew);
        newSharedString(name);
        integer(version);
    }

    QByteArray take() { return std::move(m_out); }

private:
    void littleEndian(quint32 value, int width)
    {
        for (int i = 0; i < width; ++i)
            m_out.append(char((value >> (8 * i)) & 0xff));
    }

    QByteArray m_out;
};

class Reader
{
public:
    explicit Reader(QByteArrayView archive) : m_in(archive) {}

    std::optional<qint8> head()
    {
        if (m_pos >= m_in.size())
            return std::nullopt;
        return qint8(m_in[m_pos++]);
    }

    std::optional<QByteArrayView> take(qint64 count)
    {
        if (count < 0 || count > m_in.size() - m_pos)
            return std::nullopt;
        const QByteArrayView part = m_in.sliced(m_pos, qsizetype(count));
        m_pos += qsizetype(count);
        return part;
    }

    std::optional<qint64> integer(qint8 first, bool isSigned)
    {
        if (!isTag(first))
            return isSigned ? qint64(first) : qint64(quint8(first));
        if (first == tagInteger2)
            return wide(2, isSigned);
        if (first == tagInteger4)
            return wide(4, isSigned);
        return std::nullopt;
    }

    std::optional<qint64> integer(bool isSigned)
    {
        const auto first = head();
        return first ? integer(*first, isSigned) : std::nullopt;
    }

    std::optional<QByteArrayView> lengthAndBytes(qint8 first)
    {
        const auto length = integer(first, false);
        return length ? take(*length) : std::nullopt;
    }

    // A shared string, new or a reference to an earlier one; nil counts as
    // absent, since no shared string in a string archive may be nil.
    std::optional<QByteArrayView> sharedString()
    {
        const auto first = head();
        if (!first || *first == tagNil)
            return std::nullopt;
        if (*first == tagNew) {
            const auto lengthHead = head();
            const auto text = lengthHead ? lengthAndBytes(*lengthHead) : std::nullopt;
            if (text)
                m_sharedStrings.push_back(*text);
            return text;
        }
        const auto number = integer(*first, true);
        if (!number)
            return std::nullopt;
        const qint64 index = *number - firstReference;
        if (index < 0 || index >= qint64(m_sharedStrings.size()))
            return std::nullopt;
        return m_sharedStrings[size_t(index)];
    }

    void setBigEndian(bool bigEndian) { m_bigEndian = bigEndian; }

private:
    std::optional<qint64> wide(int width, bool isSigned)
    {
        const auto raw = take(width);
        if (!raw)
            return std::nullopt;
        quint32 value = 0;
        for (int i = 0; i < width; ++i) {
            const int shift = m_bigEndian ? 8 * (width - 1 - i) : 8 * i;
            value |= quint32(quint8((*raw)[i])) << shift;
        }
        if (!isSigned)
            return qint64(value);
        return width == 2 ? qint64(qint16(value)) : qint64(qint32(value));
    }

    QByteArrayView m_in;
    qsizetype m_pos = 0;
    bool m_bigEndian = false;
    std::vector<QByteArrayView> m_sharedStrings;
};

bool readHeader(Reader &in)
{
    if (in.head() != streamerVersion)
        return false;
    const auto signatureHead = in.head();
    const auto signature = signatureHead ? in.lengthAndBytes(*signatureHead) : std::nullopt;
    if (signature == littleEndianSignature)
        in.setBigEndian(false);
    else if (signature == bigEndianSignature)
        in.setBigEndian(true);
    else
        return false;
    return in.integer(false).has_value(); // the system version; any is read alike
}

bool isStringClass(QByteArrayView name)
{
    return name == stringClass || name == mutableStringClass;
}

// The object's class and its superclasses, each stored new, down to nil.
bool readStringClassChain(Reader &in)
{
    bool first = true;
    for (;;) {
        const auto marker = in.head();
        if (marker == tagNil)
            return !first;
        if (marker != tagNew)
            return false;
        const auto name = in.sharedString();
        if (!name || !(isStringClass(*name) || (!first && *name == rootClass)))
            return false;
        if (!in.integer(true))
            return false;
        first = false;
    }
}

} // namespace

QByteArray TypedStream::archiveString(const QString &text)
{
    Writer out;
    out.byte(streamerVersion);
    out.bytes(littleEndianSignature);
    out.integer(macSystemVersion);

    out.newSharedString(objectType);
    out.byte(tagNew);
    out.newClass(stringClass, stringClassVersion);
    out.newClass(rootClass, rootClassVersion);
    out.byte(tagNil);

    out.newSharedString(bytesType);
    out.bytes(text.toUtf8());
    out.byte(tagEndOfObject);
    return out.take();
}

std::optional<QString> TypedStream::unarchiveString(QByteArrayView archive)
{
    Reader in(archive);
    if (!readHeader(in))
        return std::nullopt;
    if (in.sharedString() != objectType || in.head() != tagNew)
        return std::nullopt;
    if (!readStringClassChain(in))
        return std::nullopt;
    if (in.sharedString() != bytesType)
        return std::nullopt;
    const auto lengthHead = in.head();
    const auto utf8 = lengthHead ? in.lengthAndBytes(*lengthHead) : std::nullopt;
    if (!utf8 || in.head() != tagEndOfObject)
        return std::nullopt;
    // Invalid UTF-8 is kept, with replacement characters, rather than losing
    // the entry: the rest of the record is still worth having.
    return QString::fromUtf8(*utf8);
}
