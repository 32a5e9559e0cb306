#include "platform/fake/fakeloginitems.h"
#include "platform/fake/fakeuserdefaults.h"
#include "settings/applicationregistries.h"
#include "ui/fixedphrasebox.h"
#include "ui/preferenceswindow.h"

#include <QCheckBox>
#include <QSignalSpy>
#include <QTimer>

#include <gtest/gtest.h>

class PreferencesWindowTest : public ::testing::Test
{
protected:
    QObject *child(const char *name) { return window.findChild<QObject *>(QString::fromLatin1(name)); }
    QString text(const char *name) { return child(name)->property("text").toString(); }
    void click(const char *button, int times = 1) // each click followed by the redraw the user sees
    {
        for (int i = 0; i < times; ++i, window.grab())
            qobject_cast<QAbstractButton *>(child(button))->click();
    }
    // Opens the window as the preferences command does; `whileOpen` runs in the drawn, modal window.
    void open(const std::function<void()> &whileOpen)
    {
        QTimer::singleShot(0, &window, [&] { window.grab(); whileOpen(); });
        window.orderFront();
    }

    const QUrl app = QUrl::fromLocalFile(QStringLiteral("/usr/bin/quillstash"));
    FakeUserDefaults defaults;
    FakeLoginItems loginItems;
    ApplicationRegistries registries{defaults, loginItems, app};
    bool fresh = (FixedPhraseBox::postIndex = -1, true);
    PreferencesWindow window{registries};
};

TEST_F(PreferencesWindowTest, applyWritesEveryControlAndCancelAfterItUndoesNothing)
{
    QSignalSpy rebuilds(&window, &PreferencesWindow::phraseMenuRebuildDue);
    open([&] {
        for (const char *name : {"mautosaveButton", "mautoremoveButton", "mautosoundButton", "mautolaunchButton",
                                 "mBounceButton", "mAutoRecStartButton", "mRecAtStartupButton"})
            click(name);
        qobject_cast<QCheckBox *>(child("mBounceButton"))->setCheckState(Qt::PartiallyChecked); // counts as off
        child("mnumSlider")->setProperty("value", 250);
        click("applyButton");
        EXPECT_TRUE(window.isVisible());
        click("cancelButton");
    });
    const auto &r = registries;
    EXPECT_EQ(QList<qint64>({r.isAutoSave(), r.isAutoRemove(), r.isSoundEnable(), r.isAutoLaunch(), r.isIconBounce(),
                             r.isAutoRec(), r.isRecAtStartup(), r.limitNumber(), rebuilds.count(), loginItems.urls().size()}),
              QList<qint64>({1, 0, 0, 1, 0, 0, 0, 250, 1, 1}));
}

TEST_F(PreferencesWindowTest, phraseStepsStopAtOneAndNineAndCancelledTextStaysForOkToStore)
{
    registries.setFixedPhraseTitle(QStringLiteral("nine"), 9);
    registries.setFixedPhraseTitle(QStringLiteral("old"), 2);
    registries.setFixedPhrasContent(QStringLiteral("old text"), 2);
    registries.setAutoLaunch(true);
    loginItems.remove(loginItems.snapshot()->first()); // removed in the desktop's session settings
    open([&] {
        click("leftButton");
        click("rightButton", 9);
        EXPECT_EQ(text("numberFP") + text("titleFP"), "Ctrl+Alt+Shift+9nine");
        click("leftButton", 7);
        child("titleFP")->setProperty("text", QStringLiteral("Sig"));
        child("contentFP")->setProperty("plainText", QString());
        click("cancelButton");
    });
    EXPECT_EQ(registries.fixedPhraseTitle(2) + QString::number(loginItems.urls().size()), "old0"); // Cancel undid nothing
    open([&] {
        EXPECT_EQ(text("numberFP") + text("titleFP"), "Ctrl+Alt+Shift+2Sig");
        click("okButton");
    });
    EXPECT_TRUE(registries.fixedPhraseTitle(2) == "Sig" && registries.fixedPhraseContent(2).isNull());
    EXPECT_EQ(loginItems.urls(), QList<QUrl>{app}); // OK with the box unchanged puts the login item back
}
