#include "platform/fake/fakeloginitems.h"
#include "platform/fake/fakeuserdefaults.h"
#include "settings/applicationregistries.h"

#include <gtest/gtest.h>

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

TEST_F(ApplicationRegistriesTest, freshUserGetsTheDefaultsAndIsTakenOffTheLoginItems)
{
    loginItems.append(other);
    loginItems.append(app);
    const auto store = create();

    EXPECT_FALSE(store->isAutoSave());
    EXPECT_TRUE(store->isAutoRemove());
    EXPECT_EQ(store->limitNumber(), 60);
    EXPECT_TRUE(store->isSoundEnable());
    EXPECT_FALSE(store->isAutoLaunch());
    EXPECT_TRUE(store->isIconBounce());
    EXPECT_TRUE(store->isAutoRec());
    EXPECT_TRUE(store->isRecAtStartup());
    for (int n = 0; n < ApplicationRegistries::phraseSlots; ++n) {
        EXPECT_TRUE(store->fixedPhraseTitle(n).isNull()) << n;
        EXPECT_TRUE(store->fixedPhraseContent(n).isNull()) << n;
    }
    EXPECT_EQ(loginItems.urls(), QList<QUrl>{other});
    EXPECT_EQ(ApplicationRegistries::registries(), store.get());
}

struct TypedReadCase
{
    const char *name;
    const char *key;
    QVariant stored;
    qint64 expected; // booleans as 0/1
};

class TypedReadTest : public ApplicationRegistriesTest, public ::testing::WithParamInterface<TypedReadCase>
{
};

// A present value of the wrong kind reads as the typed answer, not the default.
TEST_P(TypedReadTest, presentValueWinsOverTheDefault)
{
    const TypedReadCase c = GetParam();
    defaults.setObject(c.stored, QString::fromLatin1(c.key));
    const auto store = create();
    const QString key = QString::fromLatin1(c.key);
    const qint64 got = key == QLatin1String("limitnumber") ? store->limitNumber()
                       : key == QLatin1String("autoremove") ? store->isAutoRemove()
                       : key == QLatin1String("soundenable") ? store->isSoundEnable()
                                                             : store->isRecAtStartup();
    EXPECT_EQ(got, c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, TypedReadTest,
    ::testing::Values(TypedReadCase{"limitAsText", "limitnumber", QStringLiteral("abc"), 0},
                      TypedReadCase{"limitAsNumberText", "limitnumber", QStringLiteral("25"), 25},
                      TypedReadCase{"limitNegative", "limitnumber", -3, -3},
                      TypedReadCase{"limitZero", "limitnumber", 0, 0},
                      TypedReadCase{"boolAsFalseText", "autoremove", QStringLiteral("false"), 0},
                      TypedReadCase{"boolAsGarbage", "soundenable", QStringLiteral("maybe"), 0},
                      TypedReadCase{"boolAsList", "recatstartup", QStringList{QStringLiteral("YES")}, 0},
                      TypedReadCase{"boolAsYes", "autoremove", QStringLiteral("YES"), 1}),
    [](const auto &info) { return std::string(info.param.name); });

TEST_F(ApplicationRegistriesTest, onlyPhraseSlotsOneToNineAreReadAndWritten)
{
    defaults.setObject(QStringLiteral("zero"), QStringLiteral("phrase_title0"));
    defaults.setObject(QStringLiteral("ten"), QStringLiteral("phrase_title10"));
    defaults.setObject(QStringLiteral("first"), QStringLiteral("phrase_title1"));
    defaults.setObject(QStringLiteral("ninth body"), QStringLiteral("phrase_content9"));
    defaults.setObject(42, QStringLiteral("phrase_content2"));
    const auto store = create();

    EXPECT_TRUE(store->fixedPhraseTitle(0).isNull());
    EXPECT_EQ(store->fixedPhraseTitle(1), QStringLiteral("first"));
    EXPECT_EQ(store->fixedPhraseContent(9), QStringLiteral("ninth body"));
    EXPECT_EQ(store->fixedPhraseContent(2), QStringLiteral("42"));

    store->setFixedPhraseTitle(QStringLiteral("never stored"), 0);
    store->writeRegistry();
    EXPECT_EQ(defaults.objectForKey(QStringLiteral("phrase_title0")), QVariant(QStringLiteral("zero")));
    EXPECT_FALSE(defaults.values().contains(QStringLiteral("phrase_content0")));
}

TEST_F(ApplicationRegistriesTest, clearedPhraseKeepsItsStoredTextAndComesBack)
{
    defaults.setObject(QStringLiteral("Greeting"), QStringLiteral("phrase_title3"));
    defaults.setObject(QStringLiteral("Hello"), QStringLiteral("phrase_content3"));
    auto store = create();
    store->setFixedPhraseTitle(QString(), 3);
    store->setFixedPhrasContent(QString(), 3);
    store->writeRegistry();
    store.reset();

    const auto relaunched = create();
    EXPECT_EQ(relaunched->fixedPhraseTitle(3), QStringLiteral("Greeting"));
    EXPECT_EQ(relaunched->fixedPhraseContent(3), QStringLiteral("Hello"));
}

TEST_F(ApplicationRegistriesTest, writeThenReadRoundTripsEverySetting)
{
    auto store = create();
    store->setAutoSave(true);
    store->setAutoRemove(false);
    store->setLimitNumber(7);
    store->setSoundEnable(false);
    store->setIconBounce(false);
    store->setAutoRec(false);
    store->setRecAtStartup(false);
    store->setFixedPhraseTitle(QStringLiteral("t5"), 5);
    store->setFixedPhrasContent(QStringLiteral("c5"), 5);
    store->writeRegistry();
    store.reset();

    const auto again = create();
    EXPECT_TRUE(again->isAutoSave());
    EXPECT_FALSE(again->isAutoRemove());
    EXPECT_EQ(again->limitNumber(), 7);
    EXPECT_FALSE(again->isSoundEnable());
    EXPECT_FALSE(again->isIconBounce());
    EXPECT_FALSE(again->isAutoRec());
    EXPECT_FALSE(again->isRecAtStartup());
    EXPECT_EQ(again->fixedPhraseTitle(5), QStringLiteral("t5"));
    EXPECT_EQ(again->fixedPhraseContent(5), QStringLiteral("c5"));
}

TEST_F(ApplicationRegistriesTest, loginItemFollowsTheSettingWithoutDuplicates)
{
    defaults.setObject(true, QStringLiteral("autolaunch"));
    loginItems.append(other);
    auto store = create();
    EXPECT_EQ(loginItems.urls(), (QList<QUrl>{app, other})); // added at the top

    store->setAutoLaunch(true);
    EXPECT_EQ(loginItems.urls(), (QList<QUrl>{app, other}));

    loginItems.append(app);
    store->setAutoLaunch(false);
    // Only the first match goes; the lower copy stays.
    EXPECT_EQ(loginItems.urls(), (QList<QUrl>{other, app}));
    EXPECT_TRUE(ApplicationRegistries::willStartAtLogin(loginItems, app));
    EXPECT_FALSE(ApplicationRegistries::willStartAtLogin(loginItems, QUrl::fromLocalFile(QStringLiteral("/x"))));
}

TEST_F(ApplicationRegistriesTest, unreadableLoginItemsKeepTheSettingAndChangeNothing)
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
