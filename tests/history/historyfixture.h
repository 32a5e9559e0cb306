#pragma once

#include "history/captureloop.h"
#include "history/documentstate.h"
#include "history/historyactions.h"
#include "history/historylist.h"
#include "platform/fake/fakeimagefetcher.h"
#include "platform/fake/fakepasteboard.h"
#include "platform/fake/fakeworkspace.h"
#include "support/entries.h"
#include "support/recordingrig.h"

#include <QAbstractItemModelTester>

#include <gtest/gtest.h>

inline const QString stringType = QStringLiteral("NSStringPboardType");

inline void PrintTo(const QString &text, std::ostream *os) { *os << '"' << text.toStdString() << '"'; }

// The objects the controller wires together, with fakes for the desktop.
class HistoryFixture : public ::testing::Test, protected RecordingRig
{
protected:
    HistoryFixture()
    {
        // Every message is kept as "category: text"; one that no test expected fails it.
        static HistoryFixture *active = nullptr;
        active = this;
        previousHandler = qInstallMessageHandler([](QtMsgType, const QMessageLogContext &context, const QString &text) {
            active->logged.append(QString::fromUtf8(context.category) + QStringLiteral(": ") + text);
        });
        // The tester misses changes made without any signal; counting the announced rows catches those.
        QObject::connect(&nsac, &QAbstractItemModel::rowsInserted, [this](auto, int f, int l) { shownRows += l - f + 1; });
        QObject::connect(&nsac, &QAbstractItemModel::rowsRemoved, [this](auto, int f, int l) { shownRows -= l - f + 1; });
        QObject::connect(&nsac, &QAbstractItemModel::modelReset, [this] { shownRows = nsac.rowCount(); });
    }
    ~HistoryFixture() override { qInstallMessageHandler(previousHandler); }
    void TearDown() override
    {
        eventTimer.waitForIdle();
        EXPECT_EQ(logged, QStringList());
        EXPECT_EQ(shownRows, nsac.arrangedCount());
    }

    // Each tick is followed by a second passing.
    void tick(int count = 1)
    {
        for (int i = 0; i < count; ++i) {
            capture.MainTimer();
            clock.advance(1000);
        }
    }
    QStringList arranged(const EntryField &field = &contents::content) const
    {
        return texts(nsac.arrangedObjects(), field);
    }
    // An entry as the capture builds it, added to the list.
    Entry addEntry(const QString &text, const QString &indexCount = QStringLiteral("0"),
                   const QStringList &types = {stringType}, const contents::Datas &datas = {{stringType, "x"}})
    {
        const Entry entry = makeEntry(types, text, datas);
        entry->setIndexCount(indexCount);
        nsac.addObject(entry);
        return entry;
    }

    QStringList logged;
    QtMessageHandler previousHandler = nullptr;
    FakePasteboard pasteboard;
    FakeImageFetcher fetcher;
    FakeWorkspace workspace;
    HistoryList nsac;
    QAbstractItemModelTester modelTester{&nsac, QAbstractItemModelTester::FailureReportingMode::Warning};
    int shownRows = 0;
    DocumentState document;
    CaptureLoop capture{nsac, document, pasteboard, registries, dock, notices, eventTimer, recording, &fetcher};
    HistoryActions actions{nsac, document, pasteboard, capture, notices, eventTimer, recording, workspace};
};
