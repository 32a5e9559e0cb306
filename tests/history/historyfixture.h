#pragma once

#include "history/captureloop.h"
#include "history/historyactions.h"
#include "history/historylist.h"
#include "platform/fake/fakeclock.h"
#include "platform/fake/fakedock.h"
#include "platform/fake/fakeimagefetcher.h"
#include "platform/fake/fakeloginitems.h"
#include "platform/fake/fakenoticeservice.h"
#include "platform/fake/fakepasteboard.h"
#include "platform/fake/fakesoundplayer.h"
#include "platform/fake/fakeuserdefaults.h"
#include "platform/fake/fakeworkspace.h"
#include "recording/eventtimer.h"
#include "recording/notices.h"
#include "recording/recordingswitch.h"
#include "settings/applicationregistries.h"

#include <QAbstractItemModelTester>
#include <QList>
#include <QLoggingCategory>
#include <QString>

#include <gtest/gtest.h>

#include <memory>
#include <ostream>

// Readable failure messages for the Qt strings the tests compare.
inline void PrintTo(const QString &text, std::ostream *os)
{
    *os << '"' << text.toStdString() << '"';
}

// Records every message the code under test logs, so that a test can look for
// the lines it expects and fail on warnings nobody expected.
class MessageLog
{
public:
    struct Message
    {
        QtMsgType type;
        QString category;
        QString text;
    };

    MessageLog();
    ~MessageLog();
    MessageLog(const MessageLog &) = delete;
    MessageLog &operator=(const MessageLog &) = delete;

    QList<Message> messages() const { return m_messages; }
    QStringList texts(const QString &category) const;
    QStringList warnings() const;
    void clear() { m_messages.clear(); }

private:
    static void handler(QtMsgType type, const QMessageLogContext &context, const QString &text);

    QList<Message> m_messages;
    QtMessageHandler m_previous = nullptr;
};

// Follows a model through its signals alone. A change the model makes
// without announcing it leaves the copy behind, which QAbstractItemModelTester
// does not notice.
class ModelMirror
{
public:
    explicit ModelMirror(QAbstractItemModel &model);
    // The entries the model showed, as its signals told.
    const QList<Entry> &rows() const { return m_rows; }

private:
    Entry entryAt(int row) const;

    QAbstractItemModel &m_model;
    QList<Entry> m_rows;
};

// Scopes a change of logging rules to one test.
class LoggingRules
{
public:
    explicit LoggingRules(const QString &rules) { QLoggingCategory::setFilterRules(rules); }
    ~LoggingRules() { QLoggingCategory::setFilterRules(QString()); }
};

// The objects the controller wires together, with fakes for the desktop.
class HistoryFixture : public ::testing::Test
{
protected:
    HistoryFixture();
    void SetUp() override;
    void TearDown() override;

    // One tick, then a second passes.
    void tick();
    void ticks(int count);
    // Another program copies.
    void copyText(const QString &text) { pasteboard.setText(text); }
    QStringList arrangedIndexCounts() const;
    QStringList allContents() const;
    QStringList sounds();
    void select(int row) { nsac.setSelectionIndexes({row}); }
    Entry addEntry(const QString &text, const QString &indexCount);

    MessageLog log;
    FakePasteboard pasteboard;
    FakeUserDefaults defaults;
    FakeLoginItems loginItems;
    std::unique_ptr<ApplicationRegistries> registries;
    FakeNoticeService noticeService;
    FakeClock clock;
    FakeDock dock;
    std::unique_ptr<Notices> notices;
    FakeSoundPlayer soundPlayer;
    std::unique_ptr<EventTimer> eventTimer;
    std::unique_ptr<RecordingSwitch> recording;
    FakeImageFetcher fetcher;
    FakeWorkspace workspace;
    HistoryList nsac;
    QAbstractItemModelTester modelTester{&nsac, QAbstractItemModelTester::FailureReportingMode::Warning};
    ModelMirror mirror{nsac};
    std::unique_ptr<CaptureLoop> capture;
    std::unique_ptr<HistoryActions> actions;
};
