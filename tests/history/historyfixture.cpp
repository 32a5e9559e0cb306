#include "historyfixture.h"

#include <QMutex>

namespace {

MessageLog *activeLog = nullptr;
QMutex logMutex;

} // namespace

MessageLog::MessageLog()
{
    activeLog = this;
    m_previous = qInstallMessageHandler(&MessageLog::handler);
}

MessageLog::~MessageLog()
{
    qInstallMessageHandler(m_previous);
    activeLog = nullptr;
}

void MessageLog::handler(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    const QMutexLocker locker(&logMutex);
    if (activeLog)
        activeLog->m_messages.append({type, QString::fromUtf8(context.category), text});
}

QStringList MessageLog::texts(const QString &category) const
{
    QStringList texts;
    for (const Message &m : m_messages) {
        if (m.category == category)
            texts.append(m.text);
    }
    return texts;
}

QStringList MessageLog::warnings() const
{
    QStringList texts;
    for (const Message &m : m_messages) {
        if (m.type != QtDebugMsg && m.type != QtInfoMsg)
            texts.append(m.category + QStringLiteral(": ") + m.text);
    }
    return texts;
}

ModelMirror::ModelMirror(QAbstractItemModel &model)
    : m_model(model)
{
    const auto reload = [this] {
        m_rows.clear();
        for (int row = 0; row < m_model.rowCount(); ++row)
            m_rows.append(entryAt(row));
    };
    reload();
    QObject::connect(&model, &QAbstractItemModel::modelReset, &model, reload);
    QObject::connect(&model, &QAbstractItemModel::rowsInserted, &model,
                     [this](const QModelIndex &, int first, int last) {
                         for (int row = first; row <= last; ++row)
                             m_rows.insert(row, entryAt(row));
                     });
    QObject::connect(&model, &QAbstractItemModel::rowsRemoved, &model,
                     [this](const QModelIndex &, int first, int last) { m_rows.remove(first, last - first + 1); });
}

Entry ModelMirror::entryAt(int row) const
{
    return m_model.index(row, 0).data(HistoryList::EntryRole).value<Entry>();
}

HistoryFixture::HistoryFixture()
{
    registries = std::make_unique<ApplicationRegistries>(defaults, loginItems,
                                                         QUrl(QStringLiteral("file:///usr/bin/quillstash")));
    notices = std::make_unique<Notices>(noticeService, clock, dock, *registries);
    eventTimer = std::make_unique<EventTimer>(soundPlayer, [this] { return registries->isSoundEnable(); });
    recording = std::make_unique<RecordingSwitch>(*registries, *notices, *eventTimer);
    capture = std::make_unique<CaptureLoop>(nsac, pasteboard, *registries, dock, *notices, *eventTimer,
                                            *recording, &fetcher);
    actions = std::make_unique<HistoryActions>(nsac, pasteboard, *capture, *notices, *eventTimer, *recording,
                                               workspace);
}

void HistoryFixture::SetUp()
{
    notices->setUp();
}

void HistoryFixture::TearDown()
{
    eventTimer->waitForIdle();
    EXPECT_EQ(log.warnings(), QStringList());
    EXPECT_EQ(mirror.rows(), nsac.arrangedObjects());
}

void HistoryFixture::tick()
{
    capture->MainTimer();
    clock.advance(CaptureLoop::tickIntervalMs);
}

void HistoryFixture::ticks(int count)
{
    for (int i = 0; i < count; ++i)
        tick();
}

QStringList HistoryFixture::arrangedIndexCounts() const
{
    QStringList counts;
    for (const Entry &entry : nsac.arrangedObjects())
        counts.append(entry->indexCount());
    return counts;
}

QStringList HistoryFixture::allContents() const
{
    QStringList texts;
    for (const Entry &entry : nsac.allObjects())
        texts.append(entry->content());
    return texts;
}

QStringList HistoryFixture::sounds()
{
    eventTimer->waitForIdle();
    return soundPlayer.played();
}

Entry HistoryFixture::addEntry(const QString &text, const QString &indexCount)
{
    auto entry = std::make_shared<contents>();
    entry->setIndexCount(indexCount);
    entry->setContent(text);
    entry->setMainType(QStringLiteral("public.utf8-plain-text"));
    entry->setTypes({QStringLiteral("public.utf8-plain-text"), QStringLiteral("NSStringPboardType")});
    entry->setDatas({{QStringLiteral("public.utf8-plain-text"), text.toUtf8()},
                     {QStringLiteral("NSStringPboardType"), text.toUtf8()}});
    nsac.addObject(entry);
    return entry;
}
