#include "historyfixture.h"

const QString ignoreType = QStringLiteral("quillstash.ignore");

using HistoryActionsTest = HistoryFixture;

TEST_F(HistoryActionsTest, CutStopsRecordingRestoresTheFirst255TypesByteForByteWithTheMarkerOnceAndLastThenRemoves)
{
    const QByteArray binary("\x00\xff\x10 rich", 9);
    const QString rtf = QStringLiteral("public.rtf");
    const QString empty = QStringLiteral("com.example.empty");
    // Captured by hand from our own write: the marker is among its types.
    QStringList types = {rtf, ignoreType, empty, stringType};
    for (int i = 4; i < 300; ++i)
        types.append(QStringLiteral("com.example.t%1").arg(i));
    registries.setAutoRec(false);
    recording.setAutomaticRec(true);
    addEntry(QStringLiteral("keep"));
    addEntry(QStringLiteral("words"), QStringLiteral("1"), types, {{rtf, binary}, {stringType, "words"}});
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
    EXPECT_EQ(sounds(), (QStringList{QStringLiteral("Bottle"), QStringLiteral("Submarine")}));
}

// A double click opens the display string when it is an address, never the stored link.
TEST_F(HistoryActionsTest, DoubleClickOpensAddressesAndRemoveAllLeavesHiddenEntries)
{
    const QString url = QStringLiteral("NSURLPboardType");
    addEntry(QStringLiteral("https://text.example/"));
    addEntry(QStringLiteral("word"));
    addEntry(QStringLiteral("https://link.example/"), QStringLiteral("0"), {url}, {{url, "https://stored.example/"}});
    addEntry(QStringLiteral("https://nodata.example/"), QStringLiteral("0"), {url}, {});
    for (const int row : {0, 1, 2, 3}) {
        nsac.setSelectionIndexes({row});
        actions.onDoubleClickTable();
    }
    EXPECT_EQ(workspace.opened(), (QList<QUrl>{QUrl(QStringLiteral("https://text.example/")),
                                               QUrl(QStringLiteral("https://link.example/"))}));

    nsac.setFilterString(QStringLiteral("EXAMPLE"));
    actions.removeAllObject();
    EXPECT_EQ((QList<qsizetype>{nsac.arrangedCount(), nsac.allObjects().size()}), (QList<qsizetype>{0, 1}));
}
