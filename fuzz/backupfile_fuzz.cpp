// libFuzzer target for the backup file reader: whatever the bytes, decoding
// ends without a crash, a leak or undefined behaviour.
//   scripts/fuzz.sh [seconds]
#include "documents/backupfile.h"

#include <QGuiApplication>
#include <QLoggingCategory>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    // Entries keep a font, and fonts need a GUI application; no display is.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static int argc = 1;
    static char name[] = "backupfile_fuzz";
    static char *argv[] = {name, nullptr};
    new QGuiApplication(argc, argv);
    // The reader warns about each damaged record; at fuzzing speed that is noise.
    QLoggingCategory::setFilterRules(QStringLiteral("quillstash.*=false"));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    qint32 counter = 0;
    qint64 reported = 0;
    const QList<Entry> entries = BackupFile::decode(
        QByteArrayView(reinterpret_cast<const char *>(data), qsizetype(size)), counter,
        [&reported](qint32) { ++reported; });
    // One entry per complete record, numbered on from the counter, and a
    // report for each record begun (one more than the entries at the end).
    if (counter != entries.size() || reported < entries.size())
        std::abort();
    return 0;
}
