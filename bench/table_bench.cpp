// The history table over a long history of 1 KB texts, offscreen:
//   QT_QPA_PLATFORM=offscreen build/bench/bench_table
// Opening is the first paint (rendered into a picture, as offscreen
// windows are not painted) of a new table over the list; a scroll is one
// jump to another place in the list and the repaint that follows. Only the
// rows on screen are rendered, so neither should grow with the list.
#include "history/historylist.h"
#include "history/previewcache.h"
#include "ui/customtableview.h"
#include "ui/qsimagecell.h"

#include <QApplication>
#include <QRandomGenerator>
#include <QScrollBar>

#include <benchmark/benchmark.h>

namespace {

void fill(HistoryList &nsac, int count)
{
    QList<Entry> entries;
    for (int i = 0; i < count; ++i) {
        auto entry = std::make_shared<contents>();
        QByteArray text = QByteArray::number(i) + ' ' + QByteArray(1000, 'w');
        entry->setIndexCount(QString::number(i));
        entry->setTypes({QStringLiteral("NSStringPboardType")});
        entry->setContentUtf8(text);
        entry->setDatas({{QStringLiteral("NSStringPboardType"), text}});
        entries.append(entry);
    }
    nsac.addObjects(entries);
}

struct Table
{
    explicit Table(HistoryList &nsac)
    {
        view.setModel(&nsac);
        view.setSelectionModel(nsac.selectionModel());
        view.setItemDelegate(&cell);
        view.resize(800, 600);
    }
    PreviewCache previews;
    QSImageCell cell{previews};
    CustomTableView view;
};

void BM_OpenTable(benchmark::State &state)
{
    HistoryList nsac;
    fill(nsac, int(state.range(0)));
    for (auto _ : state) {
        Table table(nsac);
        table.view.show();
        table.view.scrollToBottom();
        benchmark::DoNotOptimize(table.view.grab());
    }
}
BENCHMARK(BM_OpenTable)->Arg(1'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

void BM_ScrollTable(benchmark::State &state)
{
    HistoryList nsac;
    fill(nsac, int(state.range(0)));
    Table table(nsac);
    table.view.show();
    QRandomGenerator random(3);
    QScrollBar *bar = table.view.verticalScrollBar();
    for (auto _ : state) {
        bar->setValue(random.bounded(bar->maximum() + 1));
        // Scrolled rows are new to the cache of rendered previews.
        benchmark::DoNotOptimize(table.view.viewport()->grab());
    }
}
BENCHMARK(BM_ScrollTable)->Arg(1'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
