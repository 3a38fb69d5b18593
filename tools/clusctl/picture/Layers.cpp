#include "Layers.h"

#include <algorithm>
#include <utility>

namespace picture {

namespace {

const int Sweeps = 12;

// Finds the lines that close a circle: those that lead back to a vertex on the way from which they were found.
class Circles {
public:
    explicit Circles(const std::vector<std::vector<std::size_t>>& next)
        : m_next(next), m_marks(next.size(), Mark::New) {
    }

    // Calls `found(from, to)` for each line from a vertex or one that is reached from it.
    template <typename Found> void Walk(std::size_t root, const Found& found) {
        if (m_marks[root] != Mark::New) {
            return;
        }
        std::vector<std::pair<std::size_t, std::size_t>> way = {{root, 0}}; // vertex, next of its lines
        m_marks[root] = Mark::OnTheWay;
        while (!way.empty()) {
            const std::size_t vertex = way.back().first;
            if (way.back().second == m_next[vertex].size()) {
                m_marks[vertex] = Mark::Done;
                way.pop_back();
                continue;
            }
            const std::size_t to = m_next[vertex][way.back().second++];
            found(vertex, to, m_marks[to] == Mark::OnTheWay);
            if (m_marks[to] == Mark::New) {
                m_marks[to] = Mark::OnTheWay;
                way.emplace_back(to, 0);
            }
        }
    }

private:
    enum class Mark {
        New,
        OnTheWay,
        Done
    };

    const std::vector<std::vector<std::size_t>>& m_next;
    std::vector<Mark> m_marks;
};

// Counts, for numbers that come one after the other, how many that came before are greater.
class Inversions {
public:
    explicit Inversions(std::size_t size) : m_sums(size + 1, 0) {
    }

    std::size_t CountAndAdd(std::size_t number) {
        std::size_t upTo = 0;
        for (std::size_t i = number + 1; i > 0; i &= i - 1) {
            upTo += m_sums[i];
        }
        for (std::size_t i = number + 1; i < m_sums.size(); i += i & (~i + 1)) {
            ++m_sums[i];
        }
        return m_count++ - upTo;
    }

private:
    std::vector<std::size_t> m_sums; // a Fenwick tree
    std::size_t m_count = 0;
};

std::vector<std::size_t> PlacesOf(const Order& order, std::size_t vertices) {
    std::vector<std::size_t> places(vertices, 0);
    for (const auto& layer : order) {
        for (std::size_t i = 0; i < layer.size(); ++i) {
            places[layer[i]] = i;
        }
    }
    return places;
}

// Sorts a layer by the mean place of each vertex's neighbours in the layer before; what has none keeps its place.
void SortByNeighbours(const std::vector<std::vector<std::size_t>>& neighbours, std::vector<std::size_t>& layer,
                      std::vector<std::size_t>& places) {
    std::vector<std::pair<double, std::size_t>> wanted;
    for (const std::size_t vertex : layer) {
        double sum = 0;
        for (const std::size_t neighbour : neighbours[vertex]) {
            sum += static_cast<double>(places[neighbour]);
        }
        const std::size_t count = neighbours[vertex].size();
        wanted.emplace_back(count == 0 ? static_cast<double>(places[vertex]) : sum / static_cast<double>(count),
                            vertex);
    }
    std::stable_sort(wanted.begin(), wanted.end(),
                     [](const auto& one, const auto& other) { return one.first < other.first; });
    for (std::size_t i = 0; i < layer.size(); ++i) {
        layer[i] = wanted[i].second;
        places[layer[i]] = i;
    }
}

} // namespace

Graph GraphWithoutCircles(std::size_t vertices, const std::vector<Line>& lines) {
    std::vector<std::vector<std::size_t>> next(vertices);
    for (const Line& line : lines) {
        next[line.from].push_back(line.to);
    }
    Graph graph;
    graph.next.resize(vertices);
    graph.previous.resize(vertices);
    Circles circles(next);
    for (std::size_t vertex = 0; vertex < vertices; ++vertex) {
        circles.Walk(vertex, [&graph](std::size_t from, std::size_t to, bool isBack) {
            graph.next[isBack ? to : from].push_back(isBack ? from : to);
            graph.previous[isBack ? from : to].push_back(isBack ? to : from);
        });
    }
    return graph;
}

std::vector<std::size_t> LayersOf(const Graph& graph) {
    const std::size_t vertices = graph.next.size();
    std::vector<std::size_t> layers(vertices, 0);
    std::vector<std::size_t> missing(vertices);
    std::vector<std::size_t> ready;
    for (std::size_t vertex = 0; vertex < vertices; ++vertex) {
        missing[vertex] = graph.previous[vertex].size();
        if (missing[vertex] == 0) {
            ready.push_back(vertex);
        }
    }
    for (std::size_t i = 0; i < ready.size(); ++i) {
        for (const std::size_t to : graph.next[ready[i]]) {
            layers[to] = std::max(layers[to], layers[ready[i]] + 1);
            if (--missing[to] == 0) {
                ready.push_back(to);
            }
        }
    }
    for (std::size_t vertex = 0; vertex < vertices; ++vertex) {
        const std::vector<std::size_t>& next = graph.next[vertex];
        if (graph.previous[vertex].empty() && !next.empty()) {
            const auto first =
                std::min_element(next.begin(), next.end(),
                                 [&layers](std::size_t one, std::size_t other) { return layers[one] < layers[other]; });
            layers[vertex] = layers[*first] - 1;
        }
    }
    return layers;
}

std::size_t CountCrossings(const Graph& graph, const Order& order) {
    const std::vector<std::size_t> places = PlacesOf(order, graph.next.size());
    std::size_t crossings = 0;
    for (std::size_t i = 0; i + 1 < order.size(); ++i) {
        Inversions inversions(order[i + 1].size());
        for (const std::size_t vertex : order[i]) {
            std::vector<std::size_t> ends;
            for (const std::size_t to : graph.next[vertex]) {
                ends.push_back(places[to]);
            }
            std::sort(ends.begin(), ends.end());
            for (const std::size_t end : ends) {
                crossings += inversions.CountAndAdd(end);
            }
        }
    }
    return crossings;
}

Order OrderOf(const Graph& graph, const std::vector<std::size_t>& layers) {
    Order order(layers.empty() ? 0 : *std::max_element(layers.begin(), layers.end()) + 1);
    for (std::size_t vertex = 0; vertex < layers.size(); ++vertex) {
        order[layers[vertex]].push_back(vertex);
    }
    std::vector<std::size_t> places = PlacesOf(order, layers.size());
    Order best = order;
    std::size_t fewest = CountCrossings(graph, order);
    for (int sweep = 0; sweep < Sweeps && fewest != 0; ++sweep) {
        if (sweep % 2 == 0) {
            for (std::size_t i = 1; i < order.size(); ++i) {
                SortByNeighbours(graph.previous, order[i], places);
            }
        } else {
            for (std::size_t i = order.size() - 1; i-- > 0;) {
                SortByNeighbours(graph.next, order[i], places);
            }
        }
        const std::size_t crossings = CountCrossings(graph, order);
        if (crossings < fewest) {
            fewest = crossings;
            best = order;
        }
    }
    return best;
}

} // namespace picture
