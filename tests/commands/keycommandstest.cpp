#include "commands/keycommands.h"
#include "history/historyfixture.h"
#include "platform/fake/fakepanels.h"

#include <QAction>
#include <QMenu>

namespace {

const QString plainType = QStringLiteral("public.utf8-plain-text");
const QString ignoreType = QStringLiteral("quillstash.ignore");

class KeyCommandsTest : public HistoryFixture
{
protected:
    KeyCommandsTest() { phrases.setTarget(registrar, [this](const QByteArray &selector) { keys.perform(selector); }); }
    void addTexts(const QStringList &list)
    {
        for (const QString &text : list)
            nsac.addObject(textEntry(text));
    }
    QString clipboardText() const { return QString::fromUtf8(pasteboard.dataForType(plainType)); }

    FakePanels panels;
    FixedPhrases phrases{{registries, defaults, pasteboard, capture, nsac, notices, eventTimer, clock, panels, &fetcher}};
    KeyCommands keys{{nsac, capture, actions, recording, notices, eventTimer, pasteboard, phrases}};
    // Each registration as "key code/modifiers in hex/selector".
    QStringList registrations;
    HotKeyRegistrar registrar = [this](quint32 keyCode, quint64 modifiers, const QByteArray &selector) {
        registrations << QStringLiteral("%1/%2/%3").arg(keyCode).arg(modifiers, 0, 16).arg(QString::fromLatin1(selector));
        return quintptr(0);
    };
};

TEST_F(KeyCommandsTest, SeventeenCtrlAltKeysAreRegisteredInTheirOrderAndEverySelectorReachesItsCommand)
{
    keys.registerCommands(registrar);
    EXPECT_EQ(registrations.join(u' '),
              QStringLiteral("3/180000/_keyEvent_F 5/180000/_keyEvent_G 14/180000/_keyEvent_E 0/180000/_keyEvent_A "
                             "1/180000/_keyEvent_S 8/180000/_keyEvent_C 35/180000/_keyEvent_P 18/180000/_keyEvent_1 "
                             "19/180000/_keyEvent_2 20/180000/_keyEvent_3 21/180000/_keyEvent_4 23/180000/_keyEvent_5 "
                             "22/180000/_keyEvent_6 26/180000/_keyEvent_7 28/180000/_keyEvent_8 25/180000/_keyEvent_9 "
                             "29/180000/_keyEvent_0"));

    int opened = 0, closed = 0;
    QObject::connect(&keys, &KeyCommands::openWindowRequested, [&] { ++opened; });
    QObject::connect(&keys, &KeyCommands::closeWindowRequested, [&] { ++closed; });
    addTexts({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")});
    registries.setFixedPhrasContent(QStringLiteral("phrase nine"), 9);
    const QList<std::pair<const char *, QString>> performed = {
        {"optcmd_2:", QStringLiteral("a")}, {"_keyEvent_1", QStringLiteral("b")}, {"OnFixed_9:", QStringLiteral("phrase nine")}};
    for (const auto &[selector, text] : performed) {
        EXPECT_TRUE(keys.perform(selector)) << selector;
        EXPECT_EQ(clipboardText(), text) << selector;
    }
    for (const char *selector : {"_keyEvent_F", "_keyEvent_G", "_keyEvent_G"})
        EXPECT_TRUE(keys.perform(selector));
    EXPECT_EQ(std::pair(opened, closed), std::pair(1, 2));
    for (const char *selector : {"OnFixed_0:", "OnFixed_10:", "optcmd_1", "_keyEvent_X", "_keyEvent_", "copy:"})
        EXPECT_FALSE(keys.perform(selector)) << selector;
}

// Digit n restores the n-th entry from the newest one shown; fewer than two rows restore nothing.
TEST_F(KeyCommandsTest, DigitsCountFromTheNewestShownEntryAndStopRecordingUnlessItIsAlwaysOn)
{
    registries.setAutoRec(false);
    recording.setAutomaticRec(true);
    recording.checkAutoRecStatus();
    keys.numKeyEvent(0); // no entries
    addTexts({QStringLiteral("one")});
    keys.numKeyEvent(0); // a single entry
    EXPECT_EQ(pasteboard.declareCount(), 0);
    EXPECT_FALSE(recording.automaticRec());

    addTexts({QStringLiteral("two"), QStringLiteral("three"), QStringLiteral("four"), QStringLiteral("five")});
    const QStringList expected = {QStringLiteral("five"), QStringLiteral("four"), QStringLiteral("three"),
                                  QStringLiteral("two"),  QStringLiteral("one"),  QStringLiteral("one")};
    for (int n = 0; n <= 9; ++n) {
        keys.numKeyEvent(n);
        EXPECT_EQ(clipboardText(), expected.value(n, QStringLiteral("one"))) << n;
    }
    EXPECT_EQ(pasteboard.declareCount(), 5);

    nsac.setFilterString(QStringLiteral("O")); // one, two, four
    keys.numKeyEvent(1);
    EXPECT_EQ(clipboardText(), QStringLiteral("two"));
    keys.numKeyEvent(3);
    EXPECT_EQ(pasteboard.declareCount(), 6);
    EXPECT_EQ(sounds().count(QStringLiteral("Tink")), 14);
}

TEST_F(KeyCommandsTest, PlainTextKeepsOnlyTheUtf8TextAndLeavesOtherClipboardsAlone)
{
    recording.setAutomaticRec(true);
    const QByteArray png("\x89PNG", 4);
    pasteboard.setState({{QStringLiteral("public.png"), png}});
    tick();
    keys._keyEvent_P();
    EXPECT_EQ(pasteboard.types(), QStringList{QStringLiteral("public.png")});

    pasteboard.setState({{QStringLiteral("public.html"), "<b>bold</b>"}, {plainType, "bold"}, {stringType, "bold"}});
    tick();
    keys.perform("convertUtf8:");
    EXPECT_EQ(pasteboard.types(), QStringList{plainType});
    EXPECT_EQ(clipboardText(), QStringLiteral("bold"));
    keys._keyEvent_C();
    EXPECT_EQ(noticesSent().mid(noticesSent().size() - 2),
              (QStringList{QStringLiteral("Converted to PlainText|Current Pasteboard has been converted to UTF8 "
                                          "PlainText.|RemovePasteboardNotification"),
                           QStringLiteral("Current Pasteboard|bold|RemovePasteboardNotification")}));
    tick(); // not our own write: recorded
    ASSERT_EQ(nsac.arrangedCount(), 3);
    EXPECT_EQ(nsac.arrangedObjects().at(2)->types(), QStringList{plainType});
}

TEST_F(KeyCommandsTest, PhraseMenuHoldsTheDateAndTitledPhrasesOnlyAndARebuildKeepsOneSet)
{
    registries.setFixedPhraseTitle(QStringLiteral("zero"), 0);
    registries.setFixedPhrasContent(QStringLiteral("never"), 0);
    registries.setFixedPhraseTitle(QStringLiteral("Five"), 5);
    registries.setFixedPhraseTitle(QString(""), 2); // empty, not absent
    registries.setFixedPhrasContent(QStringLiteral("untitled"), 7);
    phrases.setupFixedPhraseMenu();
    phrases.setupFixedPhraseMenu();
    QStringList items; // "title|shortcut"
    for (const QAction *item : phrases.mpInsertFixedPhrase()->actions())
        items << item->text() + u'|' + item->shortcut().toString();
    EXPECT_EQ(items, (QStringList{QStringLiteral("date w/time|Ctrl+Alt+Shift+0"),
                                        QStringLiteral("|Ctrl+Alt+Shift+2"), QStringLiteral("Five|Ctrl+Alt+Shift+5")}));
    EXPECT_EQ(registrations.join(u' '), QStringLiteral("29/1a0000/OnAddDate: 19/1a0000/OnFixed_2: 23/1a0000/OnFixed_5: "
                                                       "29/1a0000/OnAddDate: 19/1a0000/OnFixed_2: 23/1a0000/OnFixed_5:"));

    registries.setFixedPhrasContent(QStringLiteral("High five"), 5);
    phrases.mpInsertFixedPhrase()->actions().at(2)->trigger();
    EXPECT_EQ(clipboardText(), QStringLiteral("High five"));
}

TEST_F(KeyCommandsTest, PhraseAndDateGoOnTheClipboardMarkedAsOurOwnAndOnlyAManualCaptureRecordsThem)
{
    phrases.OnFixed(4); // no content: nothing at all
    EXPECT_EQ(pasteboard.declareCount(), 0);
    registries.setFixedPhrasContent(QStringLiteral("née"), 3);
    keys.perform("OnFixed_3:");
    EXPECT_EQ(pasteboard.types(), (QStringList{plainType, ignoreType}));
    EXPECT_EQ(pasteboard.dataForType(plainType), QByteArray("n\xc3\xa9\x65"));
    EXPECT_TRUE(pasteboard.dataForType(ignoreType).isNull());
    tick();
    EXPECT_EQ(nsac.arrangedCount(), 0);

    defaults.setObject(QStringList{QStringLiteral("de-DE"), QStringLiteral("en-US")}, QStringLiteral("AppleLanguages"));
    clock.setDate(QDateTime(QDate(2026, 11, 24), QTime(21, 5, 9)));
    keys.perform("OnAddDate:");
    EXPECT_TRUE(clipboardText().startsWith(QStringLiteral("Dienstag, 24. November 2026 21:05:09"))) << clipboardText().toStdString();
    keys._keyEvent_E();
    ASSERT_EQ(nsac.arrangedCount(), 1);
    EXPECT_EQ(nsac.arrangedObjects().at(0)->datas().value(plainType), clipboardText().toUtf8());
    defaults.setObject(QStringList{QStringLiteral("fr")}, QStringLiteral("AppleLanguages"));
    EXPECT_TRUE(phrases.dateText().startsWith(QStringLiteral("mardi 24 novembre 2026"))) << phrases.dateText().toStdString();

    EXPECT_EQ(noticesSent().filter(QStringLiteral("RemovePasteboardNotification")),
              (QStringList{QStringLiteral("Change to Fixed Text Phrase #3|née|RemovePasteboardNotification"),
                           // The current entry, not the date: this clipboard has the text type alone.
                           QStringLiteral("Change to Date|[ public.utf8-plain-text ]|RemovePasteboardNotification")}));
    EXPECT_EQ(sounds().count(QStringLiteral("Hero")), 2);
}

TEST_F(KeyCommandsTest, ANewFontRedrawsOnlyTheShownEntriesAndACancelledPanelChangesNothing)
{
    addTexts({QStringLiteral("shown"), QStringLiteral("hidden")});
    for (const Entry &entry : nsac.allObjects())
        entry->setImageLater(&fetcher);
    nsac.setFilterString(QStringLiteral("shown"));
    const quint64 shown = nsac.allObjects().at(0)->imageGeneration(), hidden = nsac.allObjects().at(1)->imageGeneration();
    const QFont before = contents::contentsFont();
    phrases.changeFont();
    EXPECT_EQ(contents::contentsFont(), before);

    QFont chosen(QStringLiteral("DejaVu Serif"), 22);
    panels.chooseFontNext(chosen);
    phrases.changeFont();
    EXPECT_EQ(panels.fontsShown(), (QList<QFont>{before, before}));
    EXPECT_EQ(contents::contentsFont(), chosen);
    EXPECT_GT(nsac.allObjects().at(0)->imageGeneration(), shown); // to be drawn again
    EXPECT_EQ(nsac.allObjects().at(1)->imageGeneration(), hidden);
    contents::resetContentsFont();
}

} // namespace
