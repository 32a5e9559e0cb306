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

TEST_F(KeyCommandsTest, SeventeenCtrlAltKeysAreRegisteredInTheirOrder)
{
    keys.registerCommands(registrar);
    EXPECT_EQ(registrations.join(u' '),
              QStringLiteral("3/180000/_keyEvent_F 5/180000/_keyEvent_G 14/180000/_keyEvent_E 0/180000/_keyEvent_A "
                             "1/180000/_keyEvent_S 8/180000/_keyEvent_C 35/180000/_keyEvent_P 18/180000/_keyEvent_1 "
                             "19/180000/_keyEvent_2 20/180000/_keyEvent_3 21/180000/_keyEvent_4 23/180000/_keyEvent_5 "
                             "22/180000/_keyEvent_6 26/180000/_keyEvent_7 28/180000/_keyEvent_8 25/180000/_keyEvent_9 "
                             "29/180000/_keyEvent_0"));
}

// The desktop tests press the digits over five rows and within a search; here the short lists and the side effects.
TEST_F(KeyCommandsTest, DigitsNeedTwoRowsAndStopRecordingUnlessAlwaysOnAndPlainTextLeavesPicturesAlone)
{
    registries.setAutoRec(false);
    recording.setAutomaticRec(true);
    recording.checkAutoRecStatus();
    keys.numKeyEvent(0); // no entries
    addTexts({QStringLiteral("one")});
    keys.perform("optcmd_0:"); // a single entry
    EXPECT_EQ(pasteboard.declareCount(), 0);
    EXPECT_FALSE(recording.automaticRec());
    addTexts({QStringLiteral("two")});
    keys.numKeyEvent(1);
    EXPECT_EQ(clipboardText(), QStringLiteral("one"));
    EXPECT_EQ(sounds().count(QStringLiteral("Tink")), 3);

    // The desktop tests reduce styled text; here a picture stays, and the plain text, not marked as ours, is recorded.
    recording.setAutomaticRec(true);
    pasteboard.setState({{QStringLiteral("public.png"), "\x89PNG"}});
    tick();
    keys._keyEvent_P();
    EXPECT_EQ(pasteboard.types(), QStringList{QStringLiteral("public.png")});
    pasteboard.setState({{QStringLiteral("public.html"), "<b>bold</b>"}, {plainType, "bold"}, {stringType, "bold"}});
    tick();
    keys.perform("convertUtf8:");
    tick();
    ASSERT_EQ(nsac.arrangedCount(), 5);
    EXPECT_EQ(nsac.arrangedObjects().at(4)->types(), QStringList{plainType});
}

// The desktop tests press a phrase's and the date's keys; here the menu, an empty phrase, and the date's language.
TEST_F(KeyCommandsTest, PhraseMenuHoldsTheDateAndTitledPhrasesOnlyAndPhrasesAndDateGoOnTheClipboardMarkedAsOurOwn)
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
    EXPECT_EQ(items.join(u' '), QStringLiteral("date w/time|Ctrl+Alt+Shift+0 |Ctrl+Alt+Shift+2 Five|Ctrl+Alt+Shift+5"));
    EXPECT_EQ(registrations.join(u' '), QStringLiteral("29/1a0000/OnAddDate: 19/1a0000/OnFixed_2: 23/1a0000/OnFixed_5: "
                                                       "29/1a0000/OnAddDate: 19/1a0000/OnFixed_2: 23/1a0000/OnFixed_5:"));

    phrases.OnFixed(2); // no content: nothing at all
    EXPECT_EQ(pasteboard.declareCount(), 0);
    registries.setFixedPhrasContent(QStringLiteral("née"), 5);
    phrases.mpInsertFixedPhrase()->actions().at(2)->trigger();
    EXPECT_EQ(pasteboard.types(), (QStringList{plainType, ignoreType}));
    EXPECT_EQ(pasteboard.dataForType(plainType), QByteArray("n\xc3\xa9\x65"));
    EXPECT_TRUE(pasteboard.dataForType(ignoreType).isNull());

    defaults.setObject(QStringList{QStringLiteral("de-DE"), QStringLiteral("en-US")}, QStringLiteral("AppleLanguages"));
    clock.setDate(QDateTime(QDate(2026, 11, 24), QTime(21, 5, 9)));
    keys.perform("OnAddDate:");
    EXPECT_TRUE(clipboardText().startsWith(QStringLiteral("Dienstag, 24. November 2026 21:05:09"))) << clipboardText().toStdString();
    defaults.setObject(QStringList{QStringLiteral("fr")}, QStringLiteral("AppleLanguages"));
    EXPECT_TRUE(phrases.dateText().startsWith(QStringLiteral("mardi 24 novembre 2026"))) << phrases.dateText().toStdString();
    EXPECT_EQ(sounds().count(QStringLiteral("Hero")), 2);
}

TEST_F(KeyCommandsTest, ANewFontRedrawsTheEntriesAndACancelledPanelChangesNothing)
{
    addTexts({QStringLiteral("shown")});
    const quint64 shown = nsac.allObjects().at(0)->imageGeneration();
    const QFont before = contents::contentsFont();
    phrases.changeFont();
    EXPECT_EQ(contents::contentsFont(), before);

    panels.chooseFontNext(QFont(QStringLiteral("DejaVu Serif"), 22));
    phrases.changeFont();
    EXPECT_EQ(contents::contentsFont(), QFont(QStringLiteral("DejaVu Serif"), 22));
    EXPECT_GT(nsac.allObjects().at(0)->imageGeneration(), shown); // to be drawn again
    contents::resetContentsFont();
}

} // namespace
