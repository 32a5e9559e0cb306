#include "history/captureloop.h"
#include "history/documentstate.h"
#include "history/historylist.h"
#include "platform/fake/fakepasteboard.h"
#include "support/recordingrig.h"

#include <QApplication>

#include <benchmark/benchmark.h>

namespace {

// The parts of the running program that the tick touches, on fakes.
struct Rig : RecordingRig
{
    Rig()
    {
        registries.setLimitNumber(std::numeric_limits<qint32>::max());
        registries.setSoundEnable(false);
        recording.setAutomaticRec(true);
    }

    void fill(int entries)
    {
        for (int i = 0; i < entries; ++i) {
            pasteboard.setText(QStringLiteral("entry number %1 with some ordinary copied text").arg(i));
            capture.addPasteboard();
        }
        // Let every entry use up its preview attempts, as a long-running
        // history would have.
        for (int i = 0; i <= contents::maxImageAttempts; ++i)
            capture.MainTimer();
        eventTimer.waitForIdle();
    }

    FakePasteboard pasteboard;
    HistoryList nsac;
    DocumentState document;
    CaptureLoop capture{nsac, document, pasteboard, registries, dock, notices, eventTimer, recording, nullptr};
};

// A tick with nothing new on the clipboard: what the program pays every
// second, all day long.
void BM_IdleTick(benchmark::State &state)
{
    Rig rig;
    rig.fill(int(state.range(0)));
    for (auto _ : state)
        rig.capture.MainTimer();
    state.SetLabel(std::to_string(rig.nsac.arrangedCount()) + " entries");
}
BENCHMARK(BM_IdleTick)->Arg(100)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);

// One search over a history of 1 KB texts: a new filter text, from none,
// that about one entry in ten passes (going back to none is not timed).
void BM_Search(benchmark::State &state)
{
    HistoryList nsac;
    for (int i = 0; i < state.range(0); ++i) {
        auto entry = std::make_shared<contents>();
        entry->setContent(QString(1000, u'a') + (i % 10 == 0 ? QStringLiteral("needle %1") : QStringLiteral("straw %1")).arg(i));
        nsac.addObject(entry);
    }
    for (auto _ : state) {
        nsac.setFilterString(QStringLiteral("NEEDLE"));
        state.PauseTiming();
        nsac.setFilterString(QString());
        state.ResumeTiming();
    }
}
BENCHMARK(BM_Search)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

// A tick that captures a new text of the given size.
void BM_CaptureTick(benchmark::State &state)
{
    Rig rig;
    const QString text(qsizetype(state.range(0)), u'x');
    for (auto _ : state) {
        rig.pasteboard.setText(text);
        rig.capture.MainTimer();
        state.PauseTiming();
        rig.nsac.removeObjectsAtArrangedObjectIndexes(0, rig.nsac.arrangedCount());
        rig.eventTimer.waitForIdle();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_CaptureTick)->Arg(100)->Arg(1 << 20)->Arg(16 << 20)->Unit(benchmark::kMicrosecond);

// Trimming a full history by one entry each tick, at the default limit and
// at a large one.
void BM_TrimTick(benchmark::State &state)
{
    Rig rig;
    rig.fill(int(state.range(0)));
    rig.registries.setLimitNumber(state.range(0));
    for (auto _ : state) {
        rig.pasteboard.setText(QStringLiteral("one more"));
        rig.capture.MainTimer(); // captures: one over the limit
        rig.capture.MainTimer(); // trims back to the limit
    }
}
BENCHMARK(BM_TrimTick)->Arg(60)->Arg(10'000)->Unit(benchmark::kMicrosecond);

// Rendering the preview of a text entry, as a table row does when shown.
void BM_RenderTextPreview(benchmark::State &state)
{
    Rig rig;
    rig.fill(1);
    const Entry entry = rig.nsac.arrangedObjects().first();
    for (auto _ : state)
        benchmark::DoNotOptimize(entry->image());
}
BENCHMARK(BM_RenderTextPreview)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
