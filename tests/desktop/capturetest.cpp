#include "desktop/desktoptest.h"

#include <QSettings>

using CaptureTest = DesktopTest;

// Started with recording off and no notice server, the program records nothing, says once it has no notices, and,
// having nothing unsaved, quits without asking.
TEST_F(CaptureTest, copiesWhileRecordingIsOffAtStartAreNotRecordedAndACleanProgramQuitsAtOnce)
{
    QSettings settings(m_home.filePath(QStringLiteral(".config/Quillstash/Quillstash.conf")), QSettings::IniFormat);
    settings.setValue("recatstartup", false);
    settings.sync();
    m_notices.reset();
    ASSERT_TRUE(startProgram());
    ASSERT_TRUE(copy("copied while not recording"));
    ASSERT_TRUE(waitForMoreTicks(3, 4 * tickMs));
    EXPECT_TRUE(captures().isEmpty());
    EXPECT_FALSE(quitAsks());
    quitProgram({QStringLiteral("Could not load Growl.framework")}, false);
}
