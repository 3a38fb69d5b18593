// The steps of a layered layout that know of no sizes: which layer each vertex belongs to, and in which order they
// stand there.
#ifndef CLUSCTL_PICTURE_LAYERS_H
#define CLUSCTL_PICTURE_LAYERS_H

#include "Layout.h"

#include <cstddef>
#include <vector>

namespace picture {

// The lines by what leads where. A line that closes a circle is turned round.
struct Graph {
    std::vector<std::vector<std::size_t>> next;     // of each vertex: where its lines lead
    std::vector<std::vector<std::size_t>> previous; // and where lines to it come from
};

Graph GraphWithoutCircles(std::size_t vertices, const std::vector<Line>& lines);

// The layer of each vertex, from 0 on: behind all that lead to it, by the longest way. What nothing leads to stands
// right before the first that it leads to.
std::vector<std::size_t> LayersOf(const Graph& graph);

typedef std::vector<std::vector<std::size_t>> Order; // of each layer: its vertices from top to bottom

// Orders the vertices so that few lines cross, all of which lead from a layer to the next one.
Order OrderOf(const Graph& graph, const std::vector<std::size_t>& layers);

// How many pairs of lines cross.
std::size_t CountCrossings(const Graph& graph, const Order& order);

} // namespace picture

#endif
