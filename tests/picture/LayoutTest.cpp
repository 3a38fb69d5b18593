#include "picture/Layers.h"
#include "picture/Layout.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace picture;

namespace {

const double Tiny = 1e-6;

std::vector<Size> Boxes(std::size_t count) {
    std::vector<Size> boxes;
    for (std::size_t i = 0; i < count; ++i) {
        boxes.push_back({100 + static_cast<double>(i * 37 % 200), 44});
    }
    return boxes;
}

bool Overlap(Point one, Size oneSize, Point other, Size otherSize) {
    return one.x + oneSize.width > other.x + Tiny && other.x + otherSize.width > one.x + Tiny &&
           one.y + oneSize.height > other.y + Tiny && other.y + otherSize.height > one.y + Tiny;
}

// That nothing overlaps, all of it is inside, and lines begin and end at the boxes that they belong to and pass no
// other box.
void ExpectGood(const std::vector<Size>& boxes, const std::vector<Line>& lines, const Layout& layout) {
    ASSERT_EQ(layout.corners.size(), boxes.size());
    ASSERT_EQ(layout.routes.size(), lines.size());
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        EXPECT_GE(layout.corners[i].x, -Tiny);
        EXPECT_GE(layout.corners[i].y, -Tiny);
        EXPECT_LE(layout.corners[i].x + boxes[i].width, layout.size.width + Tiny);
        EXPECT_LE(layout.corners[i].y + boxes[i].height, layout.size.height + Tiny);
        for (std::size_t k = 0; k < i; ++k) {
            EXPECT_FALSE(Overlap(layout.corners[i], boxes[i], layout.corners[k], boxes[k])) << i << " and " << k;
        }
    }
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::vector<Point>& route = layout.routes[i];
        if (lines[i].from == lines[i].to) {
            EXPECT_TRUE(route.empty());
            continue;
        }
        ASSERT_GE(route.size(), 2U);
        ASSERT_EQ(route.size() % 2, 0U);
        EXPECT_NEAR(route.front().y, layout.corners[lines[i].from].y + boxes[lines[i].from].height / 2, Tiny);
        EXPECT_NEAR(route.back().y, layout.corners[lines[i].to].y + boxes[lines[i].to].height / 2, Tiny);
        for (std::size_t k = 1; k + 1 < route.size(); k += 2) { // the level pieces
            EXPECT_NEAR(route[k].y, route[k + 1].y, Tiny);
            for (std::size_t box = 0; box < boxes.size(); ++box) {
                const Point corner = {std::min(route[k].x, route[k + 1].x), route[k].y};
                const Size size = {std::abs(route[k].x - route[k + 1].x), 2 * Tiny};
                EXPECT_FALSE(Overlap(corner, size, layout.corners[box], boxes[box])) << "line " << i << ", box " << box;
            }
        }
    }
}

Layout Arranged(const std::vector<Size>& boxes, const std::vector<Line>& lines) {
    const Layout layout = ArrangeInLayers(boxes, lines, Spacing());
    ExpectGood(boxes, lines, layout);
    return layout;
}

// Lines from earlier boxes to later ones.
std::vector<Line> RandomLines(std::size_t boxes, std::size_t count, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<Line> lines;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t from = random() % (boxes - 1);
        lines.push_back({from, from + 1 + random() % (boxes - from - 1)});
    }
    return lines;
}

} // namespace

TEST(Layout, NothingTakesNoRoom) {
    const Layout layout = Arranged({}, {});
    EXPECT_EQ(layout.size.width, 0);
    EXPECT_EQ(layout.size.height, 0);
}

TEST(Layout, LinesLeadToTheRight) {
    const std::vector<Line> lines = {{0, 1}, {1, 2}, {0, 2}};
    const Layout layout = Arranged(Boxes(3), lines);
    EXPECT_LT(layout.corners[0].x, layout.corners[1].x);
    EXPECT_LT(layout.corners[1].x, layout.corners[2].x);
    EXPECT_EQ(layout.routes[2].size(), 4U); // passes the layer of the box in the middle
}

TEST(Layout, AChainIsStraight) {
    const Layout layout = Arranged(Boxes(4), {{0, 1}, {1, 2}, {2, 3}});
    EXPECT_NEAR(layout.corners[0].y, layout.corners[3].y, Tiny);
}

TEST(Layout, ABoxThatNothingLeadsToStandsRightBeforeItsFirst) {
    const Layout layout = Arranged(Boxes(4), {{0, 1}, {1, 2}, {3, 2}});
    EXPECT_NEAR(layout.corners[3].x, layout.corners[1].x, Tiny);
}

TEST(Layout, SingleBoxesFillRows) {
    const Layout layout = Arranged(Boxes(300), {});
    EXPECT_LE(layout.size.width, Spacing().widest);
    EXPECT_LE(layout.size.height, 300 * 60 / 3);
}

TEST(Layout, CirclesAreDrawn) {
    Arranged(Boxes(3), {{0, 1}, {1, 2}, {2, 0}});
    Arranged(Boxes(2), {{0, 1}, {1, 0}, {1, 1}});
}

TEST(Layout, LinesBeyondTheListHaveNoRoute) {
    const Layout layout = ArrangeInLayers(Boxes(1), {{0, 1}, {7, 0}}, Spacing());
    EXPECT_TRUE(layout.routes[0].empty());
    EXPECT_TRUE(layout.routes[1].empty());
}

TEST(Layout, AnyGraphIsGood) {
    for (unsigned seed = 0; seed < 60; ++seed) {
        const std::size_t boxes = 2 + seed % 30;
        SCOPED_TRACE(seed);
        Arranged(Boxes(boxes), RandomLines(boxes, seed * 7 % 50, seed));
    }
}

TEST(Layout, ThreeHundredResourcesAreGood) {
    Arranged(Boxes(300), RandomLines(300, 450, 1));
}

TEST(Layout, TheSameGraphIsTheSamePicture) {
    const Layout one = ArrangeInLayers(Boxes(50), RandomLines(50, 80, 5), Spacing());
    const Layout other = ArrangeInLayers(Boxes(50), RandomLines(50, 80, 5), Spacing());
    for (std::size_t i = 0; i < one.corners.size(); ++i) {
        EXPECT_EQ(one.corners[i].x, other.corners[i].x);
        EXPECT_EQ(one.corners[i].y, other.corners[i].y);
    }
}

TEST(Layers, AreTheLongestWaysFromWhatNothingLeadsTo) {
    const Graph graph = GraphWithoutCircles(4, {{0, 1}, {1, 2}, {0, 2}, {2, 3}});
    EXPECT_EQ(LayersOf(graph), (std::vector<std::size_t>{0, 1, 2, 3}));
}

TEST(Layers, CrossingsAreCounted) {
    const Graph graph = GraphWithoutCircles(4, {{0, 3}, {1, 2}});
    EXPECT_EQ(CountCrossings(graph, {{0, 1}, {2, 3}}), 1U);
    EXPECT_EQ(CountCrossings(graph, {{0, 1}, {3, 2}}), 0U);
    const Graph full = GraphWithoutCircles(4, {{0, 2}, {0, 3}, {1, 2}, {1, 3}});
    EXPECT_EQ(CountCrossings(full, {{0, 1}, {2, 3}}), 1U);
}

TEST(Layers, AnOrderWithoutCrossingsIsFound) {
    // Three pairs whose ends are given in the opposite order.
    const Graph graph = GraphWithoutCircles(6, {{0, 5}, {1, 4}, {2, 3}});
    EXPECT_EQ(CountCrossings(graph, OrderOf(graph, LayersOf(graph))), 0U);
}

TEST(Layers, OrderingHasFewerCrossingsThanTheOrderGiven) {
    // Two layers: of 20 each, three lines of each at random.
    std::mt19937 random(3);
    std::vector<Line> lines;
    for (std::size_t i = 0; i < 60; ++i) {
        lines.push_back({i % 20, 20 + random() % 20});
    }
    const Graph graph = GraphWithoutCircles(40, lines);
    Order given(2);
    for (std::size_t i = 0; i < 40; ++i) {
        given[i / 20].push_back(i);
    }
    EXPECT_LT(CountCrossings(graph, OrderOf(graph, LayersOf(graph))), CountCrossings(graph, given) * 3 / 4);
}
