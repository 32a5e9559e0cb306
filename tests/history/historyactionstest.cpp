#include "history/historyactions.h"

#include "historyfixture.h"

#include <gtest/gtest.h>

namespace {

const QString stringType = QStringLiteral("NSStringPboardType");
const QString plainType = QStringLiteral("public.utf8-plain-text");
const QString ignoreType = QStringLiteral("quillstash.ignore");

class HistoryActionsTest : public HistoryFixture
{
protected:
    Entry entryOf(const QList<FakePasteboard::Item> &state, const QString &text)
    {
        auto entry = std::make_shared<contents>();
        entry->setIndexCount(QString::number(nsac.allObjects().size()));
        entry->setContent(text);
        QStringList types;
        contents::Datas datas;
        for (const FakePasteboard::Item &item : state) {
            types.append(item.type);
            if (!item.data.isNull())
                datas.insert(item.type, item.data);
        }
        entry->setMainType(types.value(0));
        entry->setTypes(types);
        entry->setDatas(datas);
        nsac.addObject(entry);
        return entry;
    }
};

TEST_F(HistoryActionsTest, RestoreWritesEveryTypeByteForBytePlusTheMarker)
{
    const QByteArray binary("\x00\xff\x10 rich", 9);
    const Entry entry = entryOf({{QStringLiteral("public.rtf"), binary},
                                 {plainType, "words"},
                                 {QStringLiteral("com.example.empty"), {}},
                                 {stringType, "words"}},
                                QStringLiteral("words"));
    const int before = pasteboard.changeCount();
    actions->setGeneralPasteboard(entry);

    EXPECT_EQ(pasteboard.changeCount(), before + 1);
    EXPECT_EQ(pasteboard.types(), (QStringList{QStringLiteral("public.rtf"), plainType,
                                               QStringLiteral("com.example.empty"), stringType, ignoreType}));
    EXPECT_EQ(pasteboard.dataForType(QStringLiteral("public.rtf")), binary);
    EXPECT_EQ(pasteboard.dataForType(stringType), QByteArrayLiteral("words"));
    EXPECT_TRUE(pasteboard.dataForType(QStringLiteral("com.example.empty")).isNull());
    EXPECT_TRUE(pasteboard.dataForType(ignoreType).isNull());
    EXPECT_EQ(sounds(), QStringList{QStringLiteral("Submarine")});
    ASSERT_EQ(noticeService.sent().size(), 1);
    EXPECT_EQ(noticeService.sent().first().title, QStringLiteral("Change Pasteboard"));
    EXPECT_EQ(noticeService.sent().first().description, QStringLiteral("words"));
    EXPECT_EQ(noticeService.sent().first().notificationName, QStringLiteral("ChangePasteboardNotification"));
}

TEST_F(HistoryActionsTest, RestoreDeclaresAtMost256TypesWithTheMarkerLast)
{
    QList<FakePasteboard::Item> state;
    for (int i = 0; i < 300; ++i)
        state.append({QStringLiteral("com.example.t%1").arg(i), QByteArray::number(i)});
    actions->setGeneralPasteboard(entryOf(state, QStringLiteral("many")));

    const QStringList declared = pasteboard.types();
    ASSERT_EQ(declared.size(), HistoryActions::maxRestoredTypes);
    EXPECT_EQ(declared.last(), ignoreType);
    EXPECT_EQ(declared.at(254), QStringLiteral("com.example.t254"));
    EXPECT_EQ(pasteboard.dataForType(QStringLiteral("com.example.t254")), QByteArrayLiteral("254"));
}

TEST_F(HistoryActionsTest, RestoredStateIsNotCapturedButPasteTakesIt)
{
    registries->setAutoRec(true);
    recording->setAutomaticRec(true);
    copyText(QStringLiteral("original"));
    tick();
    select(0);
    actions->changePasteBoard();
    EXPECT_TRUE(recording->automaticRec());
    tick();
    EXPECT_EQ(nsac.arrangedCount(), 1);

    actions->paste();
    ASSERT_EQ(nsac.arrangedCount(), 2);
    EXPECT_EQ(nsac.arrangedObjects().last()->types().last(), ignoreType);
    EXPECT_EQ(nsac.arrangedObjects().last()->content(), QStringLiteral("original"));
    EXPECT_FALSE(capture->manualAdd());
}

TEST_F(HistoryActionsTest, RestoreStopsRecordingUnlessAutoRecIsOn)
{
    registries->setAutoRec(false);
    recording->setAutomaticRec(true);
    copyText(QStringLiteral("x"));
    tick();
    select(0);
    actions->copy();
    EXPECT_FALSE(recording->automaticRec());
    EXPECT_EQ(pasteboard.types().last(), ignoreType);
}

TEST_F(HistoryActionsTest, CutRestoresThenRemovesWithBothNoticesInOrder)
{
    entryOf({{stringType, "keep"}}, QStringLiteral("keep"));
    entryOf({{stringType, "cut me"}}, QStringLiteral("cut me"));
    select(1);
    actions->cut();

    EXPECT_EQ(allContents(), QStringList{QStringLiteral("keep")});
    EXPECT_EQ(pasteboard.dataForType(stringType), QByteArrayLiteral("cut me"));
    EXPECT_EQ(noticeService.titles(), (QStringList{QStringLiteral("Change Pasteboard"), QStringLiteral("Remove from Table")}));
    EXPECT_EQ(noticeService.sent().last().description, QStringLiteral("cut me"));
    EXPECT_EQ(noticeService.sent().last().notificationName, QStringLiteral("RemovePasteboardNotification"));
    QStringList played = sounds();
    played.sort();
    EXPECT_EQ(played, (QStringList{QStringLiteral("Bottle"), QStringLiteral("Submarine")}));
}

TEST_F(HistoryActionsTest, CommandsWithoutSelectionDoNothing)
{
    entryOf({{stringType, "x"}}, QStringLiteral("x"));
    actions->changePasteBoard();
    actions->cut();
    actions->removeObject();
    actions->onDoubleClickTable();
    EXPECT_EQ(pasteboard.declareCount(), 0);
    EXPECT_EQ(nsac.arrangedCount(), 1);
    EXPECT_TRUE(noticeService.sent().isEmpty());
    EXPECT_TRUE(workspace.opened().isEmpty());
    EXPECT_TRUE(sounds().isEmpty());
}

TEST_F(HistoryActionsTest, RemoveAllUnderAFilterLeavesHiddenEntriesSilently)
{
    for (int i = 0; i < 10; ++i)
        entryOf({{stringType, "x"}}, i < 2 ? QStringLiteral("shown %1").arg(i) : QStringLiteral("hidden %1").arg(i));
    nsac.setFilterString(QStringLiteral("SHOWN"));
    ASSERT_EQ(nsac.arrangedCount(), 2);
    actions->removeAllObject();
    EXPECT_EQ(nsac.arrangedCount(), 0);
    EXPECT_EQ(nsac.allObjects().size(), 8);
    EXPECT_TRUE(noticeService.sent().isEmpty());
    EXPECT_TRUE(sounds().isEmpty());
}

struct OpenCase
{
    const char *name;
    QList<FakePasteboard::Item> state;
    QString text;
    QString opened; // empty: nothing opened
};

class DoubleClick : public HistoryActionsTest, public ::testing::WithParamInterface<OpenCase>
{
};

TEST_P(DoubleClick, OpensTheDisplayStringWhenItIsAnAddress)
{
    const OpenCase c = GetParam();
    entryOf(c.state, c.text);
    select(0);
    actions->onDoubleClickTable();
    if (c.opened.isEmpty())
        EXPECT_TRUE(workspace.opened().isEmpty());
    else
        EXPECT_EQ(workspace.opened(), QList<QUrl>{QUrl(c.opened)});
}

INSTANTIATE_TEST_SUITE_P(
    Table, DoubleClick,
    ::testing::Values(
        OpenCase{"webAddress", {{stringType, "https://example.org/a"}}, QStringLiteral("https://example.org/a"),
                 QStringLiteral("https://example.org/a")},
        OpenCase{"plainWords", {{stringType, "two words"}}, QStringLiteral("two words"), {}},
        OpenCase{"bareWord", {{stringType, "word"}}, QStringLiteral("word"), {}},
        OpenCase{"image", {{QStringLiteral("public.tiff"), "II*"}}, QStringLiteral("[ public.tiff ]"), {}},
        OpenCase{"urlTypeOpensDisplayString",
                 {{QStringLiteral("NSURLPboardType"), "https://stored.example/"}},
                 QStringLiteral("https://shown.example/"), QStringLiteral("https://shown.example/")},
        OpenCase{"urlTypeWithoutData", {{QStringLiteral("NSURLPboardType"), {}}},
                 QStringLiteral("https://shown.example/"), {}}),
    [](const ::testing::TestParamInfo<OpenCase> &info) { return std::string(info.param.name); });

} // namespace
