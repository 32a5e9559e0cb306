#include "platform/fake/fakeloginitems.h"
#include "platform/fake/fakeuserdefaults.h"
#include "settings/applicationregistries.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>

namespace {

const QUrl app = QUrl::fromLocalFile(QStringLiteral("/usr/bin/quillstash"));
const QUrl other = QUrl::fromLocalFile(QStringLiteral("/usr/bin/other"));

class ApplicationRegistriesTest : public ::testing::Test
{
protected:
    std::unique_ptr<ApplicationRegistries> create()
    {
        return std::make_unique<ApplicationRegistries>(defaults, loginItems, app);
    }

    FakeUserDefaults defaults;
    FakeLoginItems loginItems;
};

// Absent, a setting has its default; present, even as another kind of value,
// it reads as the typed answer (booleans as 0 or 1).
TEST_F(ApplicationRegistriesTest, EachSettingReadsItsStoredValueOrItsDefault)
{
    const std::map<QString, std::function<qint64(const ApplicationRegistries &)>> read{
        {"autosave", &ApplicationRegistries::isAutoSave},       {"autoremove", &ApplicationRegistries::isAutoRemove},
        {"limitnumber", &ApplicationRegistries::limitNumber},   {"soundenable", &ApplicationRegistries::isSoundEnable},
        {"autolaunch", &ApplicationRegistries::isAutoLaunch},   {"iconbounce", &ApplicationRegistries::isIconBounce},
        {"autorec", &ApplicationRegistries::isAutoRec},         {"recatstartup", &ApplicationRegistries::isRecAtStartup},
    };
    const struct { const char *key; QVariant stored; qint64 expected; } rows[] = {
        {"autosave", {}, 0}, {"autoremove", {}, 1}, {"limitnumber", {}, 60}, {"soundenable", {}, 1},
        {"autolaunch", {}, 0}, {"iconbounce", {}, 1}, {"autorec", {}, 1}, {"recatstartup", {}, 1},
        {"limitnumber", "abc", 0}, {"limitnumber", "25", 25}, {"limitnumber", -3, -3}, {"limitnumber", 0, 0},
        {"autoremove", "false", 0}, {"soundenable", "maybe", 0}, {"recatstartup", QStringList{"YES"}, 0},
        {"autoremove", "YES", 1}, {"autosave", true, 1}, {"iconbounce", false, 0}, {"autorec", 0, 0},
    };
    for (const auto &row : rows) {
        FakeUserDefaults stored;
        if (row.stored.isValid())
            stored.setObject(row.stored, row.key);
        const ApplicationRegistries store(stored, loginItems, app);
        EXPECT_EQ(read.at(row.key)(store), row.expected) << row.key << " " << row.stored.toString().toStdString();
        EXPECT_TRUE(store.fixedPhraseTitle(1).isNull() && store.fixedPhraseContent(9).isNull());
    }
}

// A cleared phrase is not written: its stored text comes back at the next launch.
TEST_F(ApplicationRegistriesTest, OnlyPhraseSlotsOneToNineAreReadAndWrittenAndClearedOnesKeepTheirText)
{
    defaults.setObject("zero", "phrase_title0");
    defaults.setObject("ten", "phrase_title10");
    defaults.setObject("first", "phrase_title1");
    defaults.setObject("ninth body", "phrase_content9");
    defaults.setObject(42, "phrase_content2");
    defaults.setObject("Greeting", "phrase_title3");
    defaults.setObject("Hello", "phrase_content3");
    auto store = create();
    EXPECT_TRUE(store->fixedPhraseTitle(0).isNull());
    EXPECT_EQ((QStringList{store->fixedPhraseTitle(1), store->fixedPhraseContent(9), store->fixedPhraseContent(2)}),
              (QStringList{"first", "ninth body", "42"}));

    store->setFixedPhraseTitle("never stored", 0);
    store->setFixedPhraseTitle(QString(), 3);
    store->setFixedPhrasContent(QString(), 3);
    const QStringList keys{"phrase_title1", "phrase_content1", "phrase_title9", "phrase_content9"};
    const QStringList texts{"title one", "content one", "title nine", "content nine"};
    store->setFixedPhraseTitle(texts[0], 1);
    store->setFixedPhrasContent(texts[1], 1);
    store->setFixedPhraseTitle(texts[2], 9);
    store->setFixedPhrasContent(texts[3], 9);
    store->writeRegistry();
    EXPECT_EQ(defaults.objectForKey("phrase_title0"), QVariant("zero"));
    EXPECT_FALSE(defaults.values().contains("phrase_content0"));
    for (qsizetype i = 0; i < keys.size(); ++i)
        EXPECT_EQ(defaults.objectForKey(keys[i]), QVariant(texts[i])) << keys[i].toStdString();
    store.reset();
    store = create();
    EXPECT_EQ((QStringList{store->fixedPhraseTitle(1), store->fixedPhraseContent(1), store->fixedPhraseTitle(9),
                           store->fixedPhraseContent(9), store->fixedPhraseTitle(3), store->fixedPhraseContent(3)}),
              (texts + QStringList{"Greeting", "Hello"}));
}

TEST_F(ApplicationRegistriesTest, WriteThenReadRoundTripsEverySetting)
{
    auto store = create();
    store->setAutoSave(true);
    store->setAutoRemove(false);
    store->setLimitNumber(7);
    store->setSoundEnable(false);
    store->setIconBounce(false);
    store->setAutoRec(false);
    store->setRecAtStartup(false);
    store->writeRegistry();
    store.reset();
    store = create();
    EXPECT_EQ((QList<qint64>{store->isAutoSave(), store->isAutoRemove(), store->limitNumber(), store->isSoundEnable(),
                             store->isIconBounce(), store->isAutoRec(), store->isRecAtStartup()}),
              (QList<qint64>{1, 0, 7, 0, 0, 0, 0}));
}

TEST_F(ApplicationRegistriesTest, LoginItemFollowsTheSettingWithoutDuplicates)
{
    loginItems.append(other);
    loginItems.append(app);
    auto store = create(); // off for a fresh user: taken off the login items
    EXPECT_EQ(loginItems.urls(), QList<QUrl>{other});
    EXPECT_EQ(ApplicationRegistries::registries(), store.get());

    store->setAutoLaunch(true);
    store->setAutoLaunch(true);
    EXPECT_EQ(loginItems.urls(), (QList<QUrl>{app, other})); // added at the top, once
    loginItems.append(app);
    store->setAutoLaunch(false);
    // Only the first match goes; the lower copy stays.
    EXPECT_EQ(loginItems.urls(), (QList<QUrl>{other, app}));
    EXPECT_TRUE(ApplicationRegistries::willStartAtLogin(loginItems, app));
    EXPECT_FALSE(ApplicationRegistries::willStartAtLogin(loginItems, QUrl::fromLocalFile("/x")));
    defaults.setObject(true, "autolaunch");
    loginItems.remove(loginItems.snapshot()->last());
    store = create();
    EXPECT_EQ(loginItems.urls(), (QList<QUrl>{app, other}));
}

TEST_F(ApplicationRegistriesTest, UnreadableLoginItemsKeepTheSettingAndChangeNothing)
{
    loginItems.append(app);
    loginItems.setAvailable(false);
    const auto store = create();
    store->setAutoLaunch(true);
    EXPECT_TRUE(store->isAutoLaunch());
    loginItems.setAvailable(true);
    EXPECT_EQ(loginItems.urls(), QList<QUrl>{app});
    EXPECT_FALSE(ApplicationRegistries::willStartAtLogin(FakeLoginItems{}, app));
}

} // namespace
