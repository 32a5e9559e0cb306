#include "historyfixture.h"

namespace {

const QString ignoreType = QStringLiteral("quillstash.ignore");

using HistoryActionsTest = HistoryFixture;

TEST_F(HistoryActionsTest, RestoreWritesTheFirst255TypesByteForByteInOrderWithTheMarkerOnceAndLast)
{
    const QByteArray binary("\x00\xff\x10 rich", 9);
    const QString rtf = QStringLiteral("public.rtf");
    const QString empty = QStringLiteral("com.example.empty");
    // Captured by hand from our own write: the marker is among its types.
    QList<FakePasteboard::Item> state = {{rtf, binary}, {ignoreType, {}}, {empty, {}}, {stringType, "words"}};
    for (int i = 4; i < 300; ++i)
        state.append({QStringLiteral("com.example.t%1").arg(i), QByteArray::number(i)});
    actions.setGeneralPasteboard(addEntry(QStringLiteral("words"), QStringLiteral("0"), state));

    const QStringList declared = pasteboard.types();
    ASSERT_EQ(declared.size(), 256); // 255 of the entry's types and the marker
    EXPECT_EQ(declared.mid(0, 3), (QStringList{rtf, empty, stringType}));
    EXPECT_EQ(declared.indexOf(ignoreType), declared.size() - 1);
    EXPECT_EQ(pasteboard.dataForType(rtf), binary);
    EXPECT_EQ(pasteboard.dataForType(declared.at(254)), QByteArrayLiteral("255"));
    EXPECT_TRUE(pasteboard.dataForType(empty).isNull());
    EXPECT_TRUE(pasteboard.dataForType(ignoreType).isNull());
    EXPECT_EQ(sounds(), QStringList{QStringLiteral("Submarine")});
    ASSERT_EQ(noticeService.sent().size(), 1);
    const auto &notice = noticeService.sent().first();
    EXPECT_EQ((QStringList{notice.title, notice.description, notice.notificationName}),
              (QStringList{QStringLiteral("Change Pasteboard"), QStringLiteral("words"),
                           QStringLiteral("ChangePasteboardNotification")}));
}

TEST_F(HistoryActionsTest, CutStopsRecordingRestoresThenRemovesWithBothNoticesInOrder)
{
    registries.setAutoRec(false);
    recording.setAutomaticRec(true);
    addEntry(QStringLiteral("keep"), QStringLiteral("0"), {{stringType, "keep"}});
    addEntry(QStringLiteral("cut me"), QStringLiteral("1"), {{stringType, "cut me"}});
    addEntry(QStringLiteral("selected too"), QStringLiteral("2"), {{stringType, "too"}});
    nsac.setSelectionIndexes({1, 2});
    actions.cut();

    EXPECT_FALSE(recording.automaticRec());
    EXPECT_EQ(arranged(), (QStringList{QStringLiteral("keep"), QStringLiteral("selected too")}));
    EXPECT_EQ(pasteboard.dataForType(stringType), QByteArrayLiteral("cut me"));
    EXPECT_EQ(noticeService.titles(), (QStringList{QStringLiteral("Change Pasteboard"), QStringLiteral("Remove from Table")}));
    EXPECT_EQ(noticeService.sent().last().description, QStringLiteral("cut me"));
    EXPECT_EQ(noticeService.sent().last().notificationName, QStringLiteral("RemovePasteboardNotification"));
    EXPECT_EQ(sounds(), (QStringList{QStringLiteral("Bottle"), QStringLiteral("Submarine")}));
}

TEST_F(HistoryActionsTest, WithoutSelectionCommandsDoNothingAndRemoveAllLeavesHiddenEntriesSilently)
{
    for (int i = 0; i < 10; ++i)
        addEntry((i < 2 ? QStringLiteral("https://shown.example/%1") : QStringLiteral("hidden %1")).arg(i), QString::number(i));
    actions.cut();
    actions.onDoubleClickTable();
    EXPECT_EQ(pasteboard.declareCount(), 0);
    EXPECT_EQ(nsac.arrangedCount(), 10);
    EXPECT_TRUE(workspace.opened().isEmpty());
    nsac.setFilterString(QStringLiteral("SHOWN"));
    actions.removeAllObject();
    EXPECT_EQ((QList<qsizetype>{nsac.arrangedCount(), nsac.allObjects().size()}), (QList<qsizetype>{0, 8}));
    EXPECT_TRUE(noticeService.sent().isEmpty());
    EXPECT_TRUE(sounds().isEmpty());
}

TEST_F(HistoryActionsTest, DoubleClickOpensTheDisplayStringWhenItIsAnAddress)
{
    const QString url = QStringLiteral("NSURLPboardType");
    const QString shown = QStringLiteral("https://shown.example/");
    const struct { const char *name; FakePasteboard::Item item; QString text; bool opens; } cases[] = {
        {"webAddress", {stringType, "x"}, shown, true},
        {"bareWord", {stringType, "word"}, QStringLiteral("word"), false},
        {"urlTypeOpensDisplayString", {url, "https://stored.example/"}, shown, true},
        {"urlTypeWithoutData", {url, {}}, shown, false},
    };
    for (const auto &c : cases) {
        nsac.removeObjectsAtArrangedObjectIndexes(0, nsac.arrangedCount());
        const qsizetype before = workspace.opened().size();
        addEntry(c.text, QStringLiteral("0"), {c.item});
        nsac.setSelectionIndexes({0});
        actions.onDoubleClickTable();
        EXPECT_EQ(workspace.opened().mid(before), c.opens ? QList<QUrl>{QUrl(shown)} : QList<QUrl>()) << c.name;
    }
}

} // namespace
