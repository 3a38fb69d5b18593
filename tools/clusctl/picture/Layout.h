// Where the boxes and lines of a directed graph go: in layers from left to right, so that lines lead to the right.
#ifndef CLUSCTL_PICTURE_LAYOUT_H
#define CLUSCTL_PICTURE_LAYOUT_H

#include <cstddef>
#include <vector>

namespace picture {

struct Size {
    double width = 0;
    double height = 0;
};

struct Point {
    double x = 0;
    double y = 0;
};

// From a box to one that is to stand further to the right, by their places in the list of boxes.
struct Line {
    std::size_t from = 0;
    std::size_t to = 0;
};

struct Spacing {
    double betweenLayers = 40;
    double betweenBoxes = 14; // above each other
    double betweenLines = 10; // that pass through a layer
    double widest = 1100;     // boxes without lines fill rows up to this width, or that of the rest if it is wider
};

struct Layout {
    std::vector<Point> corners; // the upper left one of each box
    // Of each line, from the right side of a box to the left side of another: points in pairs. Within a pair the line
    // is level and passes a layer between its boxes, from one pair to the next it crosses the gap between two layers. A
    // line that is part of a circle may lead to the left.
    std::vector<std::vector<Point>> routes;
    Size size; // of all of it, from 0, 0 on
};

// Lines from a box to itself, or beyond the list, have no route. Takes time for as many steps as there are boxes and
// lines times layers, and a logarithm.
Layout ArrangeInLayers(const std::vector<Size>& boxes, const std::vector<Line>& lines, const Spacing& spacing);

} // namespace picture

#endif
