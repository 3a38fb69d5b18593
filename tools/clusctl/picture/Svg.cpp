#include "Svg.h"

#include "Layout.h"
#include "TextWidth.h"
#include "Xml.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace picture {

namespace {

const double NameSize = 13;
const double DetailSize = 11;
const double TitleSize = 15;
const double NameLine = 16; // from line to line
const double DetailLine = 14;
const double BoxPadding = 12;
const double NarrowestBox = 120;
const double WidestLine = 206; // a group of common depth is then as wide as a sheet of paper
const double Bold = 1.06;      // times as wide as plain
const double WidestTitle = 700;
const double FramePadding = 18;
const double FrameTitle = 34; // the room above the boxes of a frame
const double BetweenFrames = 20;
const double Margin = 8;
const double LeastScale = 0.75; // on a page; what is wider is scrolled there
const double Dot = 4;           // radius
const double BesideDot = 3 * Dot;
const double Arrow = 7;

const char Style[] =
    ".cp{font-family:'Segoe UI',Roboto,'DejaVu Sans',Arial,sans-serif}"
    ".cp-back{fill:#ffffff}.cp-frame{fill:#f6f8fa;stroke:#c9d1d9}.cp-title{font-size:15px;font-weight:600;fill:#1f2328}"
    ".cp-empty,.cp-detail{font-size:11px;fill:#57606a}.cp-name{font-size:13px;fill:#1f2328}"
    ".cp-box{fill:#ffffff;stroke:#8c959f}.cp-product .cp-box{fill:#cfe3ff;stroke:#0b57d0;stroke-width:3}"
    ".cp-product .cp-name{font-weight:600}.cp-base .cp-box{fill:#eaf2ff;stroke:#0b57d0}"
    ".cp-foreign .cp-box{fill:none;stroke-dasharray:5 4}.cp-failed .cp-box{stroke:#b3261e}"
    ".cp-line{fill:none;stroke:#8c959f;stroke-width:1.3}.cp-line-product{stroke:#0b57d0;stroke-width:1.8}"
    ".cp-head{fill:#8c959f}.cp-head-product{fill:#0b57d0}"
    ".cp-online .cp-dot{fill:#1a7f37}.cp-offline .cp-dot,.cp-unknown .cp-dot{fill:#8c959f}"
    ".cp-pending .cp-dot,.cp-partly .cp-dot{fill:#bf8700}.cp-failed .cp-dot{fill:#b3261e}"
    "@media screen and (prefers-color-scheme:dark){"
    ".cp-back{fill:#0d1117}.cp-frame{fill:#161b22;stroke:#30363d}.cp-title,.cp-name{fill:#e6edf3}"
    ".cp-empty,.cp-detail{fill:#9da7b1}.cp-box{fill:#0d1117;stroke:#6e7681}"
    ".cp-product .cp-box{fill:#0c2d6b;stroke:#6cb0ff}.cp-base .cp-box{fill:#10213d;stroke:#6cb0ff}"
    ".cp-failed .cp-box{stroke:#ff7b72}.cp-line{stroke:#6e7681}.cp-line-product{stroke:#6cb0ff}"
    ".cp-head{fill:#6e7681}.cp-head-product{fill:#6cb0ff}.cp-online .cp-dot{fill:#3fb950}"
    ".cp-pending .cp-dot,.cp-partly .cp-dot{fill:#d29922}.cp-failed .cp-dot{fill:#ff7b72}}";

// How wide a character of a sans-serif font is at most, in parts of the font's size: the reader's font is not known.
double EmsOf(char32_t character) {
    const std::size_t cells = CellsOf(character);
    if (cells != 1) {
        return 1.05 * static_cast<double>(cells) / 2;
    }
    static const std::u32string narrow = U" .,:;'|!()[]ijlftrI-/\\`";
    static const std::u32string wide = U"MWmw@%";
    if (narrow.find(character) != std::u32string::npos) {
        return 0.44;
    }
    if (wide.find(character) != std::u32string::npos) {
        return 1.03;
    }
    const bool isCapital = character >= U'A' && character <= U'Z';
    return isCapital ? 0.8 : character < 0x80 ? 0.66 : 0.9;
}

double WidthOf(const std::string& text, double size) {
    double ems = 0;
    for (std::size_t position = 0; position < text.size();) {
        ems += EmsOf(NextCharacter(text, position));
    }
    return ems * size;
}

const std::size_t FewestCells = 9; // however little room there is

// The text, or as much of its beginning and its end as there is room for.
std::string Fitted(const std::string& text, double size, double room) {
    std::size_t tooMany = CellsOf(text);
    if (tooMany <= FewestCells || WidthOf(text, size) <= room) {
        return text;
    }
    // The fewer cells, the narrower; halving finds how many, where a name of thousands would be looked at thousands of
    // times.
    std::size_t cells = FewestCells;
    while (tooMany - cells > 1) {
        const std::size_t middle = cells + (tooMany - cells) / 2;
        (WidthOf(ShortenedToCells(text, middle), size) > room ? tooMany : cells) = middle;
    }
    return ShortenedToCells(text, cells);
}

// In two lines when one is too wide, parted where that makes them most alike: at a blank, or behind what parts words of
// a name.
std::vector<std::string> Lines(const std::string& text, double size, double room) {
    const double width = WidthOf(text, size);
    std::size_t end = 0; // of the first line
    std::size_t next = 0;
    double least = width;
    double before = 0;
    for (std::size_t position = 0; width > room && position < text.size();) {
        const std::size_t start = position;
        const char32_t character = NextCharacter(text, position);
        const double behind = before + EmsOf(character) * size;
        const bool isBlank = character == U' ';
        const bool isParting = character == U'-' || character == U'_' || character == U'.' || character == U'\\';
        const double widest = std::max(isBlank ? before : behind, width - behind);
        if ((isBlank || isParting) && widest < least) {
            end = isBlank ? start : position;
            next = position;
            least = widest;
        }
        before = behind;
    }
    if (next == 0) {
        return {Fitted(text, size, room)};
    }
    return {Fitted(text.substr(0, end), size, room), Fitted(text.substr(next), size, room)};
}

double WidthOf(const std::vector<std::string>& lines, double size) {
    double width = 0;
    for (const std::string& line : lines) {
        width = std::max(width, WidthOf(line, size));
    }
    return width;
}

// With two decimals at most, and a dot whatever the locale.
std::string Number(double value) {
    const auto hundredths = static_cast<long long>(std::llround(value * 100));
    const long long whole = hundredths / 100;
    const long long rest = std::llabs(hundredths % 100);
    std::string text = (hundredths < 0 && whole == 0 ? "-" : "") + std::to_string(whole);
    if (rest != 0) {
        text += rest < 10        ? ".0" + std::to_string(rest)
                : rest % 10 == 0 ? "." + std::to_string(rest / 10)
                                 : "." + std::to_string(rest);
    }
    return text;
}

std::string Attribute(const char* name, double value) {
    return std::string(" ") + name + "=\"" + Number(value) + "\"";
}

const char* ClassOf(Look look) {
    switch (look) {
    case Look::Product:
        return "cp-product";
    case Look::Base:
        return "cp-base";
    case Look::Foreign:
        return "cp-foreign";
    default:
        return "cp-plain";
    }
}

const char* ClassOf(Condition condition) {
    switch (condition) {
    case Condition::Online:
        return "cp-online";
    case Condition::Partly:
        return "cp-partly";
    case Condition::Pending:
        return "cp-pending";
    case Condition::Offline:
        return "cp-offline";
    case Condition::Failed:
        return "cp-failed";
    default:
        return "cp-unknown";
    }
}

std::string TextElement(const char* style, double x, double y, const std::string& text) {
    return std::string("<text class=\"") + style + "\"" + Attribute("x", x) + Attribute("y", y) + ">" +
           EscapedXml(text) + "</text>";
}

std::string DotElement(double x, double y) {
    return "<circle class=\"cp-dot\"" + Attribute("cx", x) + Attribute("cy", y) + Attribute("r", Dot) + "/>";
}

// A group with its boxes arranged, to be drawn anywhere.
class Frame {
public:
    explicit Frame(const GroupDrawing& drawing) : m_drawing(drawing) {
        std::vector<Size> sizes;
        for (const Box& box : drawing.boxes) {
            BoxTexts texts = {Lines(box.name, NameSize, WidestLine / Bold),
                              Lines(DetailOf(box), DetailSize, WidestLine - BesideDot)};
            const double width =
                std::max(WidthOf(texts.name, NameSize) * Bold, WidthOf(texts.detail, DetailSize) + BesideDot);
            sizes.push_back({std::max(NarrowestBox, width + 2 * BoxPadding), HeightOf(texts)});
            m_texts.push_back(std::move(texts));
        }
        m_sizes = sizes;
        m_title = Fitted(drawing.title, TitleSize, WidestTitle);
        m_layout = ArrangeInLayers(sizes, drawing.lines, Spacing());
    }

    double Width() const {
        return std::max(m_layout.size.width, WidthOf(m_title, TitleSize) + 4 * Dot) + 2 * FramePadding;
    }
    double Height() const {
        return FrameTitle + (m_drawing.boxes.empty() ? DetailSize : m_layout.size.height) + FramePadding;
    }

    std::string Element(double left, double top) const {
        std::string text = "<g transform=\"translate(" + Number(left) + " " + Number(top) + ")\">\n";
        text +=
            "<rect class=\"cp-frame\" rx=\"8\"" + Attribute("width", Width()) + Attribute("height", Height()) + "/>\n";
        text += std::string("<g class=\"") + ClassOf(m_drawing.condition) + "\">" +
                DotElement(FramePadding + Dot, FrameTitle / 2 + 2) + "<title>" + EscapedXml(m_drawing.title) +
                "</title>" + TextElement("cp-title", FramePadding + 4 * Dot, FrameTitle / 2 + 7, m_title) + "</g>\n";
        if (m_drawing.boxes.empty()) {
            text += TextElement("cp-empty", FramePadding, FrameTitle + DetailSize, "no resources") + "\n";
        }
        text += "<g transform=\"translate(" + Number(FramePadding) + " " + Number(FrameTitle) + ")\">\n";
        for (std::size_t i = 0; i < m_drawing.lines.size(); ++i) {
            text += LineElement(i);
        }
        for (std::size_t i = 0; i < m_drawing.boxes.size(); ++i) {
            text += BoxElement(i);
        }
        return text + "</g>\n</g>\n";
    }

private:
    struct BoxTexts {
        std::vector<std::string> name; // lines
        std::vector<std::string> detail;
    };

    static double HeightOf(const BoxTexts& texts) {
        return 14 + NameLine * static_cast<double>(texts.name.size()) +
               DetailLine * static_cast<double>(texts.detail.size());
    }

    static std::string DetailOf(const Box& box) {
        return box.state + (box.type.empty() ? "" : " · " + box.type);
    }

    std::string BoxElement(std::size_t number) const {
        const Box& box = m_drawing.boxes[number];
        const Point corner = m_layout.corners[number];
        const double left = corner.x + BoxPadding;
        const BoxTexts& texts = m_texts[number];
        std::string text = std::string("<g class=\"") + ClassOf(box.look) + " " + ClassOf(box.condition) +
                           "\"><title>" + EscapedXml(box.name) + "\n" + EscapedXml(DetailOf(box)) +
                           "</title><rect class=\"cp-box\" rx=\"5\"" + Attribute("x", corner.x) +
                           Attribute("y", corner.y) + Attribute("width", m_sizes[number].width) +
                           Attribute("height", m_sizes[number].height) + "/>";
        double y = corner.y + 2;
        for (const std::string& line : texts.name) {
            y += NameLine;
            text += TextElement("cp-name", left, y, line);
        }
        y += 3;
        text += DotElement(left + Dot, y + DetailLine - 4);
        for (const std::string& line : texts.detail) {
            y += DetailLine;
            text += TextElement("cp-detail", left + BesideDot, y, line);
        }
        return text + "</g>\n";
    }

    std::string LineElement(std::size_t number) const {
        const std::vector<Point>& route = m_layout.routes[number];
        if (route.empty()) {
            return std::string();
        }
        const Look from = m_drawing.boxes[m_drawing.lines[number].from].look;
        const Look to = m_drawing.boxes[m_drawing.lines[number].to].look;
        const bool isProducts = (from == Look::Product || from == Look::Base) && to == Look::Base;
        std::string path = "M" + Number(route.front().x) + " " + Number(route.front().y);
        for (std::size_t i = 1; i < route.size(); ++i) {
            const Point& last = route[i - 1];
            const Point& next = route[i];
            if (i % 2 == 0) { // through a layer
                path += "H" + Number(next.x);
                continue;
            }
            const double middle = (last.x + next.x) / 2;
            path += "C" + Number(middle) + " " + Number(last.y) + " " + Number(middle) + " " + Number(next.y) + " " +
                    Number(next.x) + " " + Number(next.y);
        }
        const Point end = route.back();
        const double back = route[route.size() - 2].x < end.x ? -Arrow : Arrow;
        const std::string head = "M" + Number(end.x) + " " + Number(end.y) + "l" + Number(back) + " " +
                                 Number(-Arrow / 2) + "v" + Number(Arrow) + "z";
        return std::string("<path class=\"cp-line") + (isProducts ? " cp-line-product" : "") + "\" d=\"" + path +
               "\"/><path class=\"cp-head" + (isProducts ? " cp-head-product" : "") + "\" d=\"" + head + "\"/>\n";
    }

    const GroupDrawing& m_drawing;
    std::string m_title;
    std::vector<BoxTexts> m_texts;
    std::vector<Size> m_sizes;
    Layout m_layout;
};

} // namespace

const char* SvgStyle() {
    return Style;
}

std::string SvgPicture(const std::vector<GroupDrawing>& drawings, SvgForm form) {
    const bool isFile = form == SvgForm::File;
    const double margin = isFile ? Margin : 0;
    double width = isFile ? NarrowestBox : 1;
    double height = margin;
    std::string frames;
    for (const GroupDrawing& drawing : drawings) {
        const Frame frame(drawing);
        height += frames.empty() ? 0 : BetweenFrames;
        frames += frame.Element(margin + 0.5, height + 0.5);
        width = std::max(width, frame.Width());
        height += frame.Height();
    }
    width = std::ceil(width + 2 * margin + 1);
    height = std::ceil(height + margin + 1);
    const std::string size = Number(width) + "\" height=\"" + Number(height);
    const std::string head = "<svg class=\"cp\" xmlns=\"http://www.w3.org/2000/svg\" role=\"img\" width=\"" + size +
                             "\" viewBox=\"0 0 " + Number(width) + " " + Number(height) + "\"" +
                             (isFile ? "" : " style=\"min-width:" + Number(std::floor(width * LeastScale)) + "px\"") +
                             ">\n";
    return (isFile ? "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + head + "<style>" + Style +
                         "</style>\n<rect class=\"cp-back\" width=\"" + size + "\"/>\n"
                   : head) +
           frames + "</svg>\n";
}

} // namespace picture
