#include "platform/fake/fakeworkspace.h"
#include "ui/versiontitleimageview.h"

#include <QApplication>
#include <QMouseEvent>

#include <gtest/gtest.h>

// The view's tag; the press times (ms) and x positions of a series of clicks; how often the page opens.
using Clicks = std::tuple<int, std::vector<std::pair<ulong, int>>, int>;
class TitleClickTest : public ::testing::TestWithParam<Clicks> {};

TEST_P(TitleClickTest, onlyTheSecondClickOfADoubleClickOpensThePage)
{
    const auto &[tag, presses, opened] = GetParam();
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
    EXPECT_EQ(workspace.opened(), QList<QUrl>(opened, QUrl(page)));
}

// One click, a double, a triple, two doubles apart, a double too far apart, the other page, no page.
INSTANTIATE_TEST_SUITE_P(Clicks, TitleClickTest, ::testing::Values(
    Clicks{30000, {{1000, 9}}, 0}, Clicks{30000, {{1000, 9}, {1200, 9}}, 1}, Clicks{30000, {{1000, 9}, {1200, 9}, {1400, 9}}, 1},
    Clicks{30000, {{1000, 9}, {1200, 9}, {9000, 9}, {9200, 9}}, 2}, Clicks{30000, {{1000, 9}, {1200, 90}}, 0},
    Clicks{30001, {{1000, 9}, {1200, 9}}, 1}, Clicks{7, {{1000, 9}, {1200, 9}}, 0}));
