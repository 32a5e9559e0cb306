#include "windowfixture.h"

#include "ui/customtableview.h"

#include <QCloseEvent>
#include <QFrame>
#include <QGraphicsOpacityEffect>
#include <QLabel>
#include <QPropertyAnimation>
#include <QToolBar>
#include <QtTest/qtestspontaneevent.h>

namespace {

using WindowCtrlTest = WindowFixture;

struct Frame { QRect frame; bool remembered; };
class CompactTest : public WindowFixture, public ::testing::WithParamInterface<Frame> {};

// The desktop tests compact the full window; only a frame wider than 250 and higher than 160 becomes the one
// uncompact returns to, compacting twice keeps it, and uncompact returns there even after a move.
TEST_P(CompactTest, RemembersOnlyAFrameLargerThanTheCompactOne)
{
    window.setGeometry(GetParam().frame);
    ctrl.compact();
    ctrl.compact();
    const QRect full = GetParam().remembered ? GetParam().frame : QRect(100, 50, 800, 600);
    EXPECT_EQ(window.geometry(), QRect(full.topLeft(), QSize(250, 160)));
    EXPECT_TRUE(child<QToolBar>("toolbar")->isHidden());
    window.move(400, 300);
    ctrl.uncompact();
    EXPECT_EQ(window.geometry(), full);
    EXPECT_FALSE(child<QToolBar>("toolbar")->isHidden());
}

INSTANTIATE_TEST_SUITE_P(Frames, CompactTest,
                         ::testing::Values(Frame{QRect(200, 80, 250, 400), false}, Frame{QRect(200, 80, 600, 160), false},
                                           Frame{QRect(200, 80, 251, 161), true}));

// The desktop tests click rows below the box at full size; compacted, the box sits over the band and the table goes.
TEST_F(WindowCtrlTest, CompactContentViewHoldsTheBoxOverTheBandAndNoTable)
{
    window.show();
    window.centralWidget()->resize(250, 136);
    EXPECT_EQ(child<QFrame>("mpBox")->geometry(), QRect(4, 0, 242, 112));
    EXPECT_EQ(child<QWidget>("statusBand")->geometry(), QRect(0, 106, 250, 30));
    EXPECT_FALSE(window.mpScrollView()->isVisible());
    EXPECT_FALSE(child<QWidget>("typesColumn")->isVisible());
}

QGraphicsOpacityEffect *opacity(QWidget *view)
{
    return qobject_cast<QGraphicsOpacityEffect *>(view->graphicsEffect());
}

// oldContent is shared by every window, so each text here is used by this test only.
TEST_F(WindowCtrlTest, PreviewChangesOnlyWithTheTextAndANewTextRestartsTheFade)
{
    QLabel *image = child<QLabel>("mpCurrentImageView");
    const auto fades = ctrl.findChildren<QPropertyAnimation *>();
    ASSERT_EQ(fades.size(), 2);

    const Entry red = pictureEntry(QStringLiteral("preview test: red"), Qt::red);
    const Entry green = pictureEntry(QStringLiteral("preview test: green"), Qt::green);
    const auto shows = [image](const Entry &entry) { return image->pixmap().toImage() == entry->image(); };
    ctrl.setContents(red);
    EXPECT_TRUE(shows(red));
    for (QPropertyAnimation *fade : fades) {
        EXPECT_EQ(fade->state(), QAbstractAnimation::Running);
        fade->setCurrentTime(fade->duration());
    }
    EXPECT_DOUBLE_EQ(opacity(image)->opacity(), 0.7);

    ctrl.setContents(pictureEntry(QStringLiteral("preview test: red"), Qt::blue));
    EXPECT_TRUE(shows(red));
    EXPECT_DOUBLE_EQ(opacity(image)->opacity(), 0.7);

    ctrl.setContents(green);
    EXPECT_TRUE(shows(green));
    EXPECT_DOUBLE_EQ(opacity(image)->opacity(), 1.0);
    EXPECT_EQ(fades.first()->state(), QAbstractAnimation::Running);
}

// Qt 6 quits by closing every window: only the window manager's close may be refused.
TEST_F(WindowCtrlTest, WindowManagersCloseHidesButTheProgramsOwnCloseCloses)
{
    ctrl.open();
    QCloseEvent byWindowManager;
    QSpontaneKeyEvent::setSpontaneous(&byWindowManager);
    // As the window system delivers it (sendEvent() would clear the spontaneous mark).
    QObject *filter = &ctrl;
    EXPECT_TRUE(filter->eventFilter(&window, &byWindowManager));
    EXPECT_FALSE(byWindowManager.isAccepted());
    EXPECT_FALSE(window.isVisible());

    ctrl.open();
    EXPECT_TRUE(window.close());
}

} // namespace
