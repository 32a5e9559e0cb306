// How long the clipboard reader takes to publish a state, for a polite owner
// and for owners that hang, with the program's own limits. Needs an X
// display (run it under xvfb-run); prints one line per case.
//   build/bench/bench_reader
#include "platform/x11/clipboardreader.h"

#include "support/scriptedowner.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

#include <cstdio>

namespace {

using Answer = ScriptedOwner::Answer;

// Milliseconds from the owner taking the clipboard to the state being read.
double timeToSnapshot(const QList<ScriptedOwner::Format> &formats)
{
    ClipboardReader reader;
    QSignalSpy spy(&reader, &ClipboardReader::snapshotRead);
    QTest::qWait(100); // the reader has read whatever owned the clipboard before
    spy.clear();
    QElapsedTimer clock;
    clock.start();
    ScriptedOwner owner(formats);
    if (!owner.isOwner() || !spy.wait(60'000))
        return -1;
    return clock.nsecsElapsed() / 1e6;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    if (QGuiApplication::platformName() != QLatin1String("xcb")) {
        std::fprintf(stderr, "bench_reader needs an X display\n");
        return 1;
    }
    qRegisterMetaType<QList<PasteboardItem>>();
    const QByteArray text(1024, 't');
    const struct
    {
        const char *what;
        QList<ScriptedOwner::Format> formats;
    } cases[] = {
        {"text and html, both answered", {{"UTF8_STRING", Answer::Data, text}, {"text/html", Answer::Data, text}}},
        {"four formats, none answered",
         {{"UTF8_STRING", Answer::Silent}, {"text/html", Answer::Silent}, {"text/rtf", Answer::Silent},
          {"image/png", Answer::Silent}}},
        {"text answered, three formats not",
         {{"UTF8_STRING", Answer::Data, text}, {"text/html", Answer::Silent}, {"text/rtf", Answer::Silent},
          {"image/png", Answer::Silent}}},
    };
    for (const auto &c : cases)
        std::printf("%-40s %8.1f ms to the snapshot\n", c.what, timeToSnapshot(c.formats));
    return 0;
}
