#include "Layout.h"

#include "Layers.h"

#include <algorithm>
#include <utility>

namespace picture {

namespace {

const int Rounds = 10;
const double PassingWeight = 4; // lines that pass a layer are kept straight at the cost of boxes

// Heights for vertices that stand one below the other, as near to the wanted ones as the room between them allows: the
// weighted squares of what they are off are least (pool adjacent violators).
class Column {
public:
    void Add(double wanted, double weight, double room) { // `room`: to the one above, from middle to middle
        m_offset += m_blocks.empty() ? 0 : room;
        m_offsets.push_back(m_offset);
        m_blocks.push_back({wanted - m_offset, weight, 1});
        while (m_blocks.size() > 1 && m_blocks[m_blocks.size() - 2].mean > m_blocks.back().mean) {
            const Block last = m_blocks.back();
            m_blocks.pop_back();
            Block& block = m_blocks.back();
            block.mean = (block.mean * block.weight + last.mean * last.weight) / (block.weight + last.weight);
            block.weight += last.weight;
            block.count += last.count;
        }
    }

    std::vector<double> Middles() const {
        std::vector<double> middles;
        for (const Block& block : m_blocks) {
            for (std::size_t i = 0; i < block.count; ++i) {
                middles.push_back(block.mean + m_offsets[middles.size()]);
            }
        }
        return middles;
    }

private:
    struct Block {
        double mean;
        double weight;
        std::size_t count;
    };

    std::vector<Block> m_blocks;
    std::vector<double> m_offsets;
    double m_offset = 0;
};

// One connected part of a graph, with a vertex for each layer that a long line passes.
class Component {
public:
    Component(const std::vector<Size>& boxes, const std::vector<Line>& lines, const Spacing& spacing)
        : m_spacing(spacing), m_boxCount(boxes.size()), m_sizes(boxes) {
        const Graph whole = GraphWithoutCircles(boxes.size(), lines);
        m_layers = LayersOf(whole);
        Split(lines);
        m_order = OrderOf(m_graph, m_layers);
        PlaceLayers();
        PlaceMiddles();
    }

    // Where the boxes and lines are, in the order in which they were given.
    Layout Result() const {
        Layout result;
        double top = 0;
        double bottom = 0;
        for (std::size_t vertex = 0; vertex < m_sizes.size(); ++vertex) {
            top = vertex == 0 ? TopOf(vertex) : std::min(top, TopOf(vertex));
            bottom = vertex == 0 ? BottomOf(vertex) : std::max(bottom, BottomOf(vertex));
        }
        for (std::size_t box = 0; box < m_boxCount; ++box) {
            result.corners.push_back({m_lefts[m_layers[box]], TopOf(box) - top});
        }
        for (const std::vector<std::size_t>& way : m_ways) {
            result.routes.push_back(RouteOf(way, top));
        }
        result.size = {m_lefts.back() + m_widths.back(), bottom - top};
        return result;
    }

private:
    double TopOf(std::size_t vertex) const {
        return m_middles[vertex] - m_sizes[vertex].height / 2;
    }
    double BottomOf(std::size_t vertex) const {
        return m_middles[vertex] + m_sizes[vertex].height / 2;
    }
    bool IsPassing(std::size_t vertex) const {
        return vertex >= m_boxCount;
    }

    // Puts a vertex on each line for each layer that it passes.
    void Split(const std::vector<Line>& lines) {
        m_graph.next.resize(m_boxCount);
        m_graph.previous.resize(m_boxCount);
        for (const Line& line : lines) {
            const bool isTurned = m_layers[line.from] > m_layers[line.to];
            const std::size_t first = isTurned ? line.to : line.from;
            const std::size_t last = isTurned ? line.from : line.to;
            std::vector<std::size_t> way = {first};
            for (std::size_t layer = m_layers[first] + 1; layer < m_layers[last]; ++layer) {
                way.push_back(m_sizes.size());
                m_sizes.push_back({0, 0});
                m_layers.push_back(layer);
                m_graph.next.emplace_back();
                m_graph.previous.emplace_back();
            }
            way.push_back(last);
            for (std::size_t i = 0; i + 1 < way.size(); ++i) {
                m_graph.next[way[i]].push_back(way[i + 1]);
                m_graph.previous[way[i + 1]].push_back(way[i]);
            }
            if (isTurned) {
                std::reverse(way.begin(), way.end());
            }
            m_ways.push_back(std::move(way));
        }
    }

    void PlaceLayers() {
        double left = 0;
        for (const auto& layer : m_order) {
            double width = 0;
            for (const std::size_t vertex : layer) {
                width = std::max(width, m_sizes[vertex].width);
            }
            m_lefts.push_back(left);
            m_widths.push_back(width);
            left += width + m_spacing.betweenLayers;
        }
    }

    double RoomBetween(std::size_t above, std::size_t below) const {
        const bool arePassing = IsPassing(above) && IsPassing(below);
        return m_sizes[above].height / 2 + m_sizes[below].height / 2 +
               (arePassing ? m_spacing.betweenLines : m_spacing.betweenBoxes);
    }

    void PlaceMiddles() {
        m_middles.assign(m_sizes.size(), 0);
        for (const auto& layer : m_order) {
            for (std::size_t i = 1; i < layer.size(); ++i) {
                m_middles[layer[i]] = m_middles[layer[i - 1]] + RoomBetween(layer[i - 1], layer[i]);
            }
        }
        for (int round = 0; round < Rounds; ++round) {
            for (std::size_t i = 0; i < m_order.size(); ++i) {
                PlaceLayer(m_order[round % 2 == 0 ? i : m_order.size() - 1 - i], round);
            }
        }
    }

    // In the last rounds the neighbours on both sides count.
    void PlaceLayer(const std::vector<std::size_t>& layer, int round) {
        const bool looksBack = round % 2 == 0 || round >= Rounds - 2;
        const bool looksAhead = round % 2 != 0 || round >= Rounds - 2;
        Column column;
        for (std::size_t i = 0; i < layer.size(); ++i) {
            double sum = 0;
            double count = 0;
            for (const auto* const neighbours :
                 {looksBack ? &m_graph.previous[layer[i]] : nullptr, looksAhead ? &m_graph.next[layer[i]] : nullptr}) {
                for (std::size_t k = 0; neighbours != nullptr && k < neighbours->size(); ++k) {
                    sum += m_middles[(*neighbours)[k]];
                    ++count;
                }
            }
            const double wanted = count == 0 ? m_middles[layer[i]] : sum / count;
            const double weight = count == 0 ? 0.1 : IsPassing(layer[i]) ? PassingWeight : 1;
            column.Add(wanted, weight, i == 0 ? 0 : RoomBetween(layer[i - 1], layer[i]));
        }
        const std::vector<double> middles = column.Middles();
        for (std::size_t i = 0; i < layer.size(); ++i) {
            m_middles[layer[i]] = middles[i];
        }
    }

    std::vector<Point> RouteOf(const std::vector<std::size_t>& way, double top) const {
        const bool leadsRight = m_layers[way.front()] < m_layers[way.back()];
        std::vector<Point> route;
        for (std::size_t i = 0; i < way.size(); ++i) {
            const std::size_t vertex = way[i];
            const double y = m_middles[vertex] - top;
            const double left = m_lefts[m_layers[vertex]];
            const double right = left + (IsPassing(vertex) ? m_widths[m_layers[vertex]] : m_sizes[vertex].width);
            if (i != 0) {
                route.push_back({leadsRight ? left : right, y});
            }
            if (i + 1 != way.size()) {
                route.push_back({leadsRight ? right : left, y});
            }
        }
        return route;
    }

    const Spacing m_spacing;
    const std::size_t m_boxCount;
    std::vector<Size> m_sizes; // of the boxes, then of what passes
    std::vector<std::size_t> m_layers;
    Graph m_graph;
    std::vector<std::vector<std::size_t>> m_ways; // of each line
    Order m_order;
    std::vector<double> m_lefts;
    std::vector<double> m_widths;
    std::vector<double> m_middles;
};

// The connected parts, as lists of boxes; those of one box last.
std::vector<std::vector<std::size_t>> PartsOf(std::size_t boxes, const std::vector<Line>& lines) {
    std::vector<std::size_t> roots(boxes);
    for (std::size_t i = 0; i < boxes; ++i) {
        roots[i] = i;
    }
    const auto rootOf = [&roots](std::size_t box) {
        while (roots[box] != box) {
            box = roots[box] = roots[roots[box]];
        }
        return box;
    };
    for (const Line& line : lines) {
        const std::size_t one = rootOf(line.from);
        const std::size_t other = rootOf(line.to);
        roots[std::max(one, other)] = std::min(one, other);
    }
    std::vector<std::vector<std::size_t>> parts(boxes);
    for (std::size_t i = 0; i < boxes; ++i) {
        parts[rootOf(i)].push_back(i);
    }
    parts.erase(std::remove_if(parts.begin(), parts.end(), [](const auto& part) { return part.empty(); }), parts.end());
    std::stable_partition(parts.begin(), parts.end(), [](const auto& part) { return part.size() > 1; });
    return parts;
}

// Puts the parts one below the other, single boxes into rows.
class Stack {
public:
    Stack(const std::vector<Size>& boxes, const std::vector<Line>& lines, const Spacing& spacing)
        : m_boxes(boxes), m_lines(lines), m_spacing(spacing), m_places(boxes.size(), 0), m_linesFrom(boxes.size()) {
        m_result.corners.resize(boxes.size());
        m_result.routes.resize(lines.size());
        for (std::size_t i = 0; i < lines.size(); ++i) {
            m_linesFrom[lines[i].from].push_back(i);
        }
    }

    void AddPart(const std::vector<std::size_t>& part) {
        std::vector<Size> sizes;
        for (const std::size_t box : part) {
            m_places[box] = sizes.size();
            sizes.push_back(m_boxes[box]);
        }
        std::vector<Line> lines;
        std::vector<std::size_t> numbers;
        for (const std::size_t box : part) {
            for (const std::size_t number : m_linesFrom[box]) {
                lines.push_back({m_places[box], m_places[m_lines[number].to]});
                numbers.push_back(number);
            }
        }
        const Layout layout = Component(sizes, lines, m_spacing).Result();
        const double top = m_bottom == 0 ? 0 : m_bottom + 2 * m_spacing.betweenBoxes;
        for (std::size_t i = 0; i < part.size(); ++i) {
            m_result.corners[part[i]] = {layout.corners[i].x, layout.corners[i].y + top};
        }
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            std::vector<Point> route = layout.routes[i];
            for (Point& point : route) {
                point.y += top;
            }
            m_result.routes[numbers[i]] = std::move(route);
        }
        m_bottom = top + layout.size.height;
        m_width = std::max(m_width, layout.size.width);
    }

    void AddSingles(const std::vector<std::size_t>& singles) {
        double widest = 0;
        for (const std::size_t box : singles) {
            widest = std::max(widest, m_boxes[box].width);
        }
        const double room = std::max(m_width, m_spacing.widest);
        double left = 0;
        double top = m_bottom == 0 ? 0 : m_bottom + 2 * m_spacing.betweenBoxes;
        for (const std::size_t box : singles) {
            if (left > 0 && left + widest > room) {
                left = 0;
                top = m_bottom + m_spacing.betweenBoxes;
            }
            m_result.corners[box] = {left, top};
            m_width = std::max(m_width, left + m_boxes[box].width);
            m_bottom = std::max(m_bottom, top + m_boxes[box].height);
            left += widest + m_spacing.betweenBoxes;
        }
    }

    Layout Result() {
        m_result.size = {m_width, m_bottom};
        return std::move(m_result);
    }

private:
    const std::vector<Size>& m_boxes;
    const std::vector<Line>& m_lines;
    const Spacing& m_spacing;
    std::vector<std::size_t> m_places; // of each box in its part
    std::vector<std::vector<std::size_t>> m_linesFrom;
    Layout m_result;
    double m_width = 0;
    double m_bottom = 0;
};

} // namespace

Layout ArrangeInLayers(const std::vector<Size>& boxes, const std::vector<Line>& lines, const Spacing& spacing) {
    std::vector<Line> drawn;
    std::vector<std::size_t> numbers;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].from != lines[i].to && lines[i].from < boxes.size() && lines[i].to < boxes.size()) {
            drawn.push_back(lines[i]);
            numbers.push_back(i);
        }
    }
    Stack stack(boxes, drawn, spacing);
    std::vector<std::size_t> singles;
    for (const std::vector<std::size_t>& part : PartsOf(boxes.size(), drawn)) {
        if (part.size() > 1) {
            stack.AddPart(part);
        } else {
            singles.push_back(part.front());
        }
    }
    stack.AddSingles(singles);
    Layout layout = stack.Result();
    std::vector<std::vector<Point>> routes(lines.size());
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        routes[numbers[i]] = std::move(layout.routes[i]);
    }
    layout.routes = std::move(routes);
    return layout;
}

} // namespace picture
