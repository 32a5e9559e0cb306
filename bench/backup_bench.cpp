// Save and open of a 10,000-entry history of about 100 MB, beside Python's
// plistlib reading the property lists of the same file:
//   build/bench/bench_backup [--benchmark_min_time=1]
// Throughput is over the file's bytes, in MB/s (10^6 bytes per second).
#include "documents/backupfile.h"

#include <QApplication>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <map>

namespace {

constexpr int entryCount = 10000;
constexpr int pictureEvery = 20; // 500 pictures
constexpr qsizetype pictureBytes = 48 * 1024;
const QString textType = QStringLiteral("public.utf8-plain-text");

QString historyPath;
qint64 fileBytes = 0;

// Text of sizes spread over four orders of magnitude, most of them short, as
// a real history holds: words, lines, paragraphs, now and then a document.
QList<Entry> makeHistory()
{
    QRandomGenerator random(2009);
    QList<Entry> entries;
    for (int i = 0; i < entryCount; ++i) {
        auto entry = std::make_shared<contents>();
        if (i % pictureEvery == 0) {
            QByteArray picture(pictureBytes, Qt::Uninitialized);
            random.fillRange(reinterpret_cast<quint32 *>(picture.data()), pictureBytes / 4);
            entry->setContent(QString());
            entry->setTypes({QStringLiteral("public.tiff"), QStringLiteral("public.png")});
            entry->setDatas({{QStringLiteral("public.tiff"), picture}, {QStringLiteral("public.png"), picture.left(pictureBytes / 3)}});
        } else {
            const qsizetype size = qsizetype(std::exp(2.3 + random.bounded(7.2))); // 10 B to 13 KB
            QString text;
            text.reserve(size);
            while (text.size() < size)
                text += QStringLiteral("Grüße %1 aus der Zwischenablage; ").arg(random.generate());
            text.truncate(size);
            entry->setContent(text);
            entry->setTypes({textType, QStringLiteral("NSStringPboardType")});
            entry->setDatas({{textType, text.toUtf8()}, {QStringLiteral("NSStringPboardType"), text.toUtf8()}});
        }
        entries.append(entry);
    }
    return entries;
}

const QList<Entry> &history()
{
    static const QList<Entry> entries = makeHistory();
    return entries;
}

void BM_SaveHistory(benchmark::State &state)
{
    for (auto _ : state) {
        if (!BackupFile::save(historyPath, history()))
            state.SkipWithError("the file could not be written");
    }
    state.SetBytesProcessed(state.iterations() * fileBytes);
}
BENCHMARK(BM_SaveHistory)->Unit(benchmark::kMillisecond)->UseRealTime();

// openFile less its debug line per record: read the file, decode it.
void BM_OpenHistory(benchmark::State &state)
{
    for (auto _ : state) {
        QFile file(historyPath);
        if (!file.open(QIODevice::ReadOnly))
            state.SkipWithError("the file could not be read");
        qint32 counter = 0;
        const QList<Entry> entries = BackupFile::decode(file.readAll(), counter);
        if (entries.size() != entryCount)
            state.SkipWithError("the file did not give back every entry");
    }
    state.SetBytesProcessed(state.iterations() * fileBytes);
}
BENCHMARK(BM_OpenHistory)->Unit(benchmark::kMillisecond)->UseRealTime();

// Keeps each run's throughput for the closing comparison.
class Reporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run> &runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run &run : runs) {
            if (const auto rate = run.counters.find("bytes_per_second"); rate != run.counters.end())
                mbps[run.benchmark_name()] = rate->second.value / 1e6;
        }
    }
    std::map<std::string, double> mbps;
};

// The system's interpreter when there is one, so that a PATH with another
// Python first does not change the figure.
QString python()
{
    const QString system = QStandardPaths::findExecutable(QStringLiteral("python3"), {QStringLiteral("/usr/bin")});
    return system.isEmpty() ? QStringLiteral("python3") : system;
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    QTemporaryDir folder;
    historyPath = folder.filePath(QStringLiteral("history.qs_backup"));
    if (!BackupFile::save(historyPath, history())) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(historyPath));
        return 1;
    }
    fileBytes = QFile(historyPath).size();
    std::printf("history: %d entries, file %.1f MB\n", entryCount, double(fileBytes) / 1e6);

    Reporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();

    QProcess script;
    script.start(python(), {QStringLiteral(QUILLSTASH_BENCH_DIR "/plistlib_read.py"), historyPath});
    const bool ran = script.waitForFinished(600000) && script.exitStatus() == QProcess::NormalExit && script.exitCode() == 0;
    const QString output = QString::fromUtf8(script.readAllStandardOutput()).trimmed();
    const QRegularExpressionMatch rate = QRegularExpression(QStringLiteral("mbps=([0-9.]+)")).match(output);
    std::printf("\n%-34s %10s\n", "reading and writing the file", "MB/s");
    std::printf("%-34s %10.1f\n", "Quillstash save (encode + write)", reporter.mbps["BM_SaveHistory/real_time"]);
    std::printf("%-34s %10.1f\n", "Quillstash open (read + decode)", reporter.mbps["BM_OpenHistory/real_time"]);
    if (ran && rate.hasMatch())
        std::printf("%-34s %10.1f   (%s)\n", "Python plistlib (plists only)", rate.captured(1).toDouble(), qPrintable(output));
    else
        std::printf("Python plistlib: did not run (%s)\n", qPrintable(script.errorString() + u' ' + QString::fromUtf8(script.readAllStandardError())));
    return 0;
}
