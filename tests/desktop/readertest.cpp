#include "desktop/desktoptest.h"

#include "support/scriptedowner.h"

#include <QElapsedTimer>
#include <QTest>

#include <iostream>

namespace {

using Answer = ScriptedOwner::Answer;

const QString added = QStringLiteral("Add to Table");
const QStringList textTypes{QStringLiteral("public.utf8-plain-text"), QStringLiteral("NSStringPboardType")};
// How long the program lets an owner stay silent, for all its formats.
constexpr int ownerTimeoutMs = 5000;

} // namespace

using ReaderTest = DesktopTest;

// An owner that answers its text and hangs on its other formats gets one allowance of silence for them all: it is
// captured with its text once that is spent, and the next copy is captured at the next tick.
TEST_F(ReaderTest, partlyHungOwnerIsCapturedAfterOneTimeOutAndHoldsUpNothing)
{
    ASSERT_TRUE(startProgram());
    QElapsedTimer clock;
    clock.start();
    ScriptedOwner owner({{"UTF8_STRING", Answer::Data, "answered before the silence"},
                         {"text/html", Answer::Silent},
                         {"text/rtf", Answer::Silent},
                         {"application/x-silent", Answer::Silent}});
    ASSERT_TRUE(owner.isOwner());
    ASSERT_TRUE(QTest::qWaitFor([&] { return !captures().isEmpty(); }, ownerTimeoutMs + twoTicksMs))
        << "not captured one time-out and a tick after the copy";
    std::cout << "partly hung owner captured after " << clock.elapsed() << " ms" << std::endl;
    EXPECT_EQ(captures(), QList<QStringList>{textTypes});
    ASSERT_TRUE(QTest::qWaitFor([&] { return !noticeBodies(added).isEmpty(); }, tickMs));
    EXPECT_EQ(noticeBodies(added), QStringList{"answered before the silence"});

    ScriptedOwner hung({{"UTF8_STRING", Answer::Silent}, {"text/html", Answer::Silent}});
    ASSERT_TRUE(hung.isOwner());
    ASSERT_TRUE(waitForMoreTicks(2, twoTicksMs));
    ASSERT_TRUE(copy("copied after the hung owner"));
    ASSERT_TRUE(waitForCaptures(2)) << "the copy waited for the hung owner";
    EXPECT_EQ(captures().last(), textTypes);
    quitProgram();
}
