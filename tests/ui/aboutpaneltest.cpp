#include "platform/fake/fakeworkspace.h"
#include "ui/versionbox.h"
#include "ui/versiontitleimageview.h"
#include "ui/viewwithtag.h"

#include <QApplication>
#include <QLabel>
#include <QMouseEvent>

#include <gtest/gtest.h>

// Clicks: one, a double, a triple, two doubles far apart in time, a double far apart on screen, other tags.
TEST(AboutPanel, TitleOpensItsPageOnTheSecondClickOfADoubleClickAndTheNameLineCarriesTheBuildWidth)
{
    const struct { int tag; std::vector<std::pair<ulong, int>> presses; int opened; } rows[] = { // press time (ms), x
        {30000, {{1000, 9}}, 0}, {30000, {{1000, 9}, {1200, 9}}, 1}, {30000, {{1000, 9}, {1200, 9}, {1400, 9}}, 1},
        {30000, {{1000, 9}, {1200, 9}, {9000, 9}, {9200, 9}}, 2}, {30000, {{1000, 9}, {1200, 90}}, 0},
        {30001, {{1000, 9}, {1200, 9}}, 1}, {7, {{1000, 9}, {1200, 9}}, 0}};
    for (const auto &[tag, presses, opened] : rows) {
        FakeWorkspace workspace;
        VersionTitleImageView view(workspace);
        view.setProperty("tag", tag);
        for (auto [time, x] : presses) {
            for (auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
                const bool down = type == QEvent::MouseButtonPress;
                QMouseEvent event(type, QPointF(x, 9), QPointF(x, 9), Qt::LeftButton, down ? Qt::LeftButton : Qt::NoButton, {});
                event.setTimestamp(down ? time : time + 50);
                QApplication::sendEvent(&view, &event);
            }
        }
        const char *page = tag == 30001 ? "https://sparkle-project.org/" : "https://quillstash.org/";
        EXPECT_EQ(workspace.opened(), QList<QUrl>(opened, QUrl(page))) << tag << " " << presses.size();
    }
    VersionBox box;
    EXPECT_EQ(qobject_cast<QLabel *>(viewWithTag(&box, 1))->text(), QCoreApplication::applicationName() + QStringLiteral(" (64bit)"));
}
