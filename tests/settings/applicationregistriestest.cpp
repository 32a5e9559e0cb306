#include "platform/fake/fakeloginitems.h"
#include "platform/fake/fakeuserdefaults.h"
#include "settings/applicationregistries.h"

#include <gtest/gtest.h>

#include <optional>

const QUrl app = QUrl::fromLocalFile(QStringLiteral("/usr/bin/quillstash"));
const QUrl other = QUrl::fromLocalFile(QStringLiteral("/usr/bin/other"));

// A stored 0, false or other kind of value reads as the typed answer (the defaults are written in the desktop tests).
// Written in key order: autolaunch, autorec, autoremove, autosave, iconbounce, limitnumber, recatstartup, soundenable.
TEST(ApplicationRegistries, EachSettingIsReadAsStoredOrAsItsDefaultAndWrittenBack)
{
    const struct { const char *key; QVariant stored; QList<qint64> written; } rows[] = {
        {"autosave", true, {0, 1, 1, 1, 1, 60, 1, 1}}, {"autoremove", "false", {0, 1, 0, 0, 1, 60, 1, 1}},
        {"limitnumber", 0, {0, 1, 1, 0, 1, 0, 1, 1}}, {"soundenable", "maybe", {0, 1, 1, 0, 1, 60, 1, 0}},
        {"iconbounce", false, {0, 1, 1, 0, 0, 60, 1, 1}}, {"autorec", 0, {0, 0, 1, 0, 1, 60, 1, 1}},
        {"recatstartup", QStringList{"YES"}, {0, 1, 1, 0, 1, 60, 0, 1}},
    };
    FakeLoginItems loginItems;
    for (const auto &row : rows) {
        FakeUserDefaults stored;
        stored.setObject(row.stored, row.key);
        ApplicationRegistries(stored, loginItems, app).writeRegistry();
        QList<qint64> written;
        for (const QVariant &value : stored.values())
            written.append(value.toLongLong());
        EXPECT_EQ(written, row.written) << row.key;
    }
}

// A cleared phrase is not written: its stored text comes back; slots run from 1 to 9. The login item is added at the
// top, once; switched off, ours goes and the rest of ours at the next launch. An unreadable list is left alone.
TEST(ApplicationRegistries, PhrasesAndTheLoginItemCarryOverToTheNextLaunch)
{
    FakeUserDefaults defaults;
    FakeLoginItems loginItems;
    loginItems.append(other);
    defaults.setObject(true, "autolaunch");
    defaults.setObject("Greeting", "phrase_title3");
    defaults.setObject(42, "phrase_content3");
    std::optional<ApplicationRegistries> store(std::in_place, defaults, loginItems, app);
    EXPECT_EQ(loginItems.urls(), (QList<QUrl>{app, other}));
    store->setFixedPhraseTitle(QString(), 3);
    store->setFixedPhraseTitle("never stored", 0);
    store->setFixedPhrasContent("content nine", 9);
    store->setAutoLaunch(true);
    loginItems.append(app);
    store->setAutoLaunch(false);
    EXPECT_EQ(loginItems.urls(), (QList<QUrl>{other, app}));
    store->writeRegistry();
    EXPECT_FALSE(defaults.objectForKey("phrase_title0").isValid());

    store.emplace(defaults, loginItems, app);
    EXPECT_EQ(loginItems.urls(), QList<QUrl>{other});
    EXPECT_EQ((QStringList{store->fixedPhraseTitle(3), store->fixedPhraseContent(3), store->fixedPhraseContent(9)}),
              (QStringList{"Greeting", "42", "content nine"}));
    loginItems.setAvailable(false);
    store->setAutoLaunch(true);
    loginItems.setAvailable(true);
    EXPECT_EQ(loginItems.urls(), QList<QUrl>{other});
}
