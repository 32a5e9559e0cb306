#include "historyfixture.h"

namespace {

const QString ignoreType = QStringLiteral("quillstash.ignore");

using HistoryActionsTest = HistoryFixture;

TEST_F(HistoryActionsTest, CutStopsRecordingRestoresTheFirst255TypesByteForByteWithTheMarkerOnceAndLastThenRemoves)
{
    const QByteArray binary("\x00\xff\x10 rich", 9);
    const QString rtf = QStringLiteral("public.rtf");
    const QString empty = QStringLiteral("com.example.empty");
    // Captured by hand from our own write: the marker is among its types.
    QList<FakePasteboard::Item> state = {{rtf, binary}, {ignoreType, {}}, {empty, {}}, {stringType, "words"}};
    for (int i = 4; i < 300; ++i)
        state.append({QStringLiteral("com.example.t%1").arg(i), QByteArray::number(i)});
    registries.setAutoRec(false);
    recording.setAutomaticRec(true);
    addEntry(QStringLiteral("keep"));
    addEntry(QStringLiteral("words"), QStringLiteral("1"), state);
    addEntry(QStringLiteral("selected too"));
    nsac.setSelectionIndexes({1, 2});
    actions.cut();

    EXPECT_FALSE(recording.automaticRec());
    EXPECT_EQ(arranged(), (QStringList{QStringLiteral("keep"), QStringLiteral("selected too")}));
    const QStringList declared = pasteboard.types();
    ASSERT_EQ(declared.size(), 256); // 255 of the entry's types and the marker
    EXPECT_EQ(declared.mid(0, 3), (QStringList{rtf, empty, stringType}));
    EXPECT_EQ(declared.indexOf(ignoreType), declared.size() - 1);
    EXPECT_EQ(pasteboard.dataForType(rtf), binary);
    EXPECT_EQ(pasteboard.dataForType(declared.at(254)), QByteArrayLiteral("255"));
    EXPECT_TRUE(pasteboard.dataForType(empty).isNull());
    EXPECT_TRUE(pasteboard.dataForType(ignoreType).isNull());
    EXPECT_EQ(noticesSent(), (QStringList{QStringLiteral("Change Pasteboard|words|ChangePasteboardNotification"),
                                          QStringLiteral("Remove from Table|words|RemovePasteboardNotification")}));
    EXPECT_EQ(sounds(), (QStringList{QStringLiteral("Bottle"), QStringLiteral("Submarine")}));
}

// A double click opens the display string when it is an address, never the stored link.
TEST_F(HistoryActionsTest, DoubleClickOpensAddressesWithoutSelectionCommandsDoNothingAndRemoveAllLeavesHiddenEntries)
{
    const QString url = QStringLiteral("NSURLPboardType");
    addEntry(QStringLiteral("https://text.example/"));
    addEntry(QStringLiteral("word"));
    addEntry(QStringLiteral("https://link.example/"), QStringLiteral("0"), {{url, "https://stored.example/"}});
    addEntry(QStringLiteral("https://nodata.example/"), QStringLiteral("0"), {{url, {}}});
    actions.cut();
    actions.onDoubleClickTable();
    EXPECT_EQ(pasteboard.declareCount(), 0);
    EXPECT_EQ(nsac.arrangedCount(), 4);
    EXPECT_TRUE(workspace.opened().isEmpty());
    for (const int row : {0, 1, 2, 3}) {
        nsac.setSelectionIndexes({row});
        actions.onDoubleClickTable();
    }
    EXPECT_EQ(workspace.opened(), (QList<QUrl>{QUrl(QStringLiteral("https://text.example/")),
                                               QUrl(QStringLiteral("https://link.example/"))}));

    nsac.setFilterString(QStringLiteral("EXAMPLE"));
    actions.removeAllObject();
    EXPECT_EQ((QList<qsizetype>{nsac.arrangedCount(), nsac.allObjects().size()}), (QList<qsizetype>{0, 1}));
    EXPECT_TRUE(noticeService.sent().isEmpty());
    EXPECT_TRUE(sounds().isEmpty());
}

} // namespace
