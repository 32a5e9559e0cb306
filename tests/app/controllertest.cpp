#include "app/controller.h"
#include "history/captureloop.h"
#include "platform/fake/fakeimagefetcher.h"
#include "platform/fake/fakepanels.h"
#include "platform/fake/fakepasteboard.h"
#include "platform/fake/fakeworkspace.h"
#include "support/recordingrig.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// Sounds ask the preference at the moment they play; the tick drives auto-save. The rig's
// own notices and recording switch stay unused.
TEST(Controller, LaunchRecordsSoundsAsPreferredAndTheTickAutoSaves)
{
    RecordingRig rig;
    FakePasteboard pasteboard;
    FakeWorkspace workspace;
    FakePanels panels;
    FakeImageFetcher fetcher;
    QTemporaryDir dir;
    rig.registries.setSoundEnable(false);
    rig.registries.setAutoSave(true);
    pasteboard.setText(QStringLiteral("copied before launch"));
    Controller controller(PlatformServices{pasteboard, rig.defaults, rig.loginItems, rig.noticeService, rig.soundPlayer,
                                           rig.dock, rig.clock, workspace, panels, &fetcher,
                                           QUrl::fromLocalFile(QStringLiteral("/usr/bin/quillstash"))},
                          rig.registries);
    controller.applicationDidFinishLaunching();
    EXPECT_EQ(controller.statusString(), QStringLiteral("Idle"));
    controller.document().setMyPath(dir.filePath(QStringLiteral("auto.qs_backup")));

    controller.MainTimer();
    controller.eventTimer().waitForIdle();
    EXPECT_TRUE(rig.soundPlayer.played().isEmpty());
    rig.registries.setSoundEnable(true);
    pasteboard.setText(QStringLiteral("second"));
    controller.MainTimer();
    controller.eventTimer().waitForIdle();
    EXPECT_EQ(rig.soundPlayer.played(), QStringList{QStringLiteral("Pop")});
    EXPECT_FALSE(controller.IsClean());

    for (int tick = 2; tick < 101; ++tick)
        controller.MainTimer();
    EXPECT_TRUE(QFile::exists(controller.document().myPath()));
}

} // namespace
