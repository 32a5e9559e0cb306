#include "documents/backupfile.h"

#include "documents/propertylist.h"
#include "documents/typedstream.h"

#include <QFile>
#include <QLoggingCategory>
#include <QSaveFile>

#ifdef __GLIBC__
#include <malloc.h>
#endif

#include <sys/stat.h>

#include <cstdio>
#include <cstring>
#include <limits>

Q_LOGGING_CATEGORY(lcBackupFile, "quillstash.backupfile", QtWarningMsg)

namespace {

using LengthWord = qint32;

// What "%@" makes of the first element of a types array that is not there.
const QString absentMainType = QStringLiteral("(null)");

// Nothing the program writes comes near this; a bigger file is refused
// before it is read into memory.
constexpr qint64 largestReadableFile = qint64(4) << 30;

// The bytes as the C library's stream reads them: a short read takes what is
// left, and only a read that runs past the end sets the end-of-file flag.
class RecordStream
{
public:
    explicit RecordStream(QByteArrayView bytes) : m_bytes(bytes) {}

    bool atEnd() const { return m_eof; }

    // A short read overwrites the leading bytes of the word and leaves the
    // rest as it was, which is what the debug line then shows.
    bool readWord(LengthWord &word)
    {
        const qsizetype got = std::min<qsizetype>(sizeof word, remaining());
        if (got > 0)
            std::memcpy(&word, m_bytes.data() + m_pos, size_t(got));
        m_pos += got;
        if (got < qsizetype(sizeof word)) {
            m_eof = true;
            return false;
        }
        return true;
    }

    // A length beyond what is left consumes the rest, as a short read
    // would, but nothing is allocated for it.
    std::optional<QByteArrayView> readPayload(LengthWord length)
    {
        if (length < 0)
            return std::nullopt;
        if (length > remaining()) {
            m_pos = m_bytes.size();
            m_eof = true;
            return std::nullopt;
        }
        const QByteArrayView payload = m_bytes.sliced(m_pos, length);
        m_pos += length;
        return payload;
    }

private:
    qsizetype remaining() const { return m_bytes.size() - m_pos; }

    QByteArrayView m_bytes;
    qsizetype m_pos = 0;
    bool m_eof = false;
};

bool appendBlock(QByteArray &out, const QByteArray &payload)
{
    if (payload.size() > std::numeric_limits<LengthWord>::max())
        return false;
    const LengthWord length = LengthWord(payload.size());
    out.append(reinterpret_cast<const char *>(&length), sizeof length); // this machine's byte order
    out.append(payload);
    return true;
}

std::optional<QByteArray> encodeRecords(const QList<Entry> &entries)
{
    QByteArray out;
    for (const Entry &entry : entries) {
        const QByteArray types = PropertyList::fromStringList(entry->types());
        const QByteArray datas = PropertyList::fromDatas(entry->datas());
        const QByteArray content = TypedStream::archiveString(entry->content());
        if (!appendBlock(out, content) || !appendBlock(out, types) || !appendBlock(out, datas))
            return std::nullopt;
    }
    return out;
}

} // namespace

QByteArray BackupFile::encode(const QList<Entry> &entries)
{
    return encodeRecords(entries).value_or(QByteArray());
}

QList<Entry> BackupFile::decode(QByteArrayView bytes, qint32 &counter, const SizeReport &report)
{
    QList<Entry> entries;
    RecordStream in(bytes);
    // Keeps its value across records: after the last one the loop runs once
    // more and reports the last length again. An empty file reports 0.
    LengthWord contentLength = 0;
    while (!in.atEnd()) {
        in.readWord(contentLength); // unchecked: the next read catches the end
        if (report)
            report(contentLength);
        const auto content = in.readPayload(contentLength);
        if (!content)
            break;
        LengthWord typesLength = 0;
        if (!in.readWord(typesLength))
            break;
        const auto typesBlock = in.readPayload(typesLength);
        if (!typesBlock)
            break;
        LengthWord datasLength = 0;
        if (!in.readWord(datasLength))
            break;
        const auto datasBlock = in.readPayload(datasLength);
        if (!datasBlock)
            break;

        const auto text = TypedStream::unarchiveString(*content);
        if (!text) {
            qCWarning(lcBackupFile) << "record" << entries.size() << "holds no string archive; load ends there";
            break;
        }
        const auto types = PropertyList::toStringList(*typesBlock);
        const auto datas = PropertyList::toDatas(*datasBlock);

        auto entry = std::make_shared<contents>();
        entry->setContent(*text);
        entry->setIndexCount(QString::number(counter));
        entry->setMainType(types && !types->isEmpty() ? types->first() : absentMainType);
        entry->setTypes(types.value_or(QStringList()));
        entry->setDatas(datas.value_or(contents::Datas()));
        entry->restoreFullText();
        entries.append(std::move(entry));
        ++counter;
    }
    return entries;
}

bool BackupFile::save(const QString &path, const QList<Entry> &entries)
{
    if (entries.isEmpty())
        return true;
    const auto bytes = encodeRecords(entries);
    if (!bytes) {
        qCWarning(lcBackupFile) << "an entry is too large for a backup file:" << path;
        return false;
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        qCWarning(lcBackupFile) << "cannot write" << path << file.errorString();
        return false;
    }
    // A history holds passwords: the file is private before a byte is in it.
    if (::fchmod(file.handle(), S_IRUSR | S_IWUSR) != 0 || file.write(*bytes) != bytes->size()) {
        qCWarning(lcBackupFile) << "cannot write" << path << file.errorString();
        file.cancelWriting();
        return false;
    }
    if (!file.commit()) {
        qCWarning(lcBackupFile) << "cannot write" << path << file.errorString();
        return false;
    }
    return true;
}

std::optional<QList<Entry>> BackupFile::openFile(const QString &path, qint32 &counter)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qCWarning(lcBackupFile) << "cannot read" << path << file.errorString();
        return std::nullopt;
    }
    if (file.size() > largestReadableFile) {
        qCWarning(lcBackupFile) << "too large to be a backup file:" << path;
        return std::nullopt;
    }
    std::optional<QList<Entry>> entries;
    {
        const QByteArray bytes = file.readAll();
        if (file.error() != QFileDevice::NoError) {
            qCWarning(lcBackupFile) << "cannot read" << path << file.errorString();
            return std::nullopt;
        }
        entries = decode(bytes, counter, [](qint32 contentLength) {
            std::printf("cont_Data_size:%d\n", int(contentLength));
        });
    }
    std::fflush(stdout);
#ifdef __GLIBC__
    // The file and its parse leave free pages among the entries' small
    // blocks; give them back rather than keep the file's size for good.
    malloc_trim(0);
#endif
    return entries;
}
