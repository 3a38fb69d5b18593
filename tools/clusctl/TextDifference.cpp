#include "TextDifference.h"

#include <algorithm>

namespace {

const size_t Context = 3;
const size_t LargestTable = 25000000; // cells; a larger change is shown as a whole

struct Edit {
    char kind; // ' ', '-', '+'
    size_t before;
    size_t after;
};

typedef std::vector<std::string> Lines;

// The longest common subsequence of the lines [first, endBefore) and [first, endAfter).
std::vector<Edit> EditsOfMiddle(const Lines& before, const Lines& after, size_t first, size_t endBefore,
                                size_t endAfter) {
    const size_t rows = endBefore - first;
    const size_t columns = endAfter - first;
    const size_t width = columns + 1;
    std::vector<unsigned int> length;
    if ((rows + 1) * width <= LargestTable) {
        length.assign((rows + 1) * width, 0);
        for (size_t i = rows; i-- > 0;) {
            for (size_t j = columns; j-- > 0;) {
                length[i * width + j] = before[first + i] == after[first + j]
                                            ? length[(i + 1) * width + j + 1] + 1
                                            : std::max(length[(i + 1) * width + j], length[i * width + j + 1]);
            }
        }
    }
    std::vector<Edit> edits;
    size_t i = 0;
    size_t j = 0;
    while (i < rows || j < columns) {
        const bool isTable = !length.empty();
        if (isTable && i < rows && j < columns && before[first + i] == after[first + j]) {
            edits.push_back({' ', first + i++, first + j++});
        } else if (i < rows && (j == columns || !isTable || length[(i + 1) * width + j] >= length[i * width + j + 1])) {
            edits.push_back({'-', first + i++, first + j});
        } else {
            edits.push_back({'+', first + i, first + j++});
        }
    }
    return edits;
}

std::vector<Edit> EditsOf(const Lines& before, const Lines& after) {
    size_t head = 0;
    while (head < before.size() && head < after.size() && before[head] == after[head]) {
        ++head;
    }
    size_t tail = 0;
    while (tail < before.size() - head && tail < after.size() - head &&
           before[before.size() - 1 - tail] == after[after.size() - 1 - tail]) {
        ++tail;
    }
    std::vector<Edit> edits;
    for (size_t i = 0; i < head; ++i) {
        edits.push_back({' ', i, i});
    }
    const std::vector<Edit> middle = EditsOfMiddle(before, after, head, before.size() - tail, after.size() - tail);
    edits.insert(edits.end(), middle.begin(), middle.end());
    for (size_t i = tail; i > 0; --i) {
        edits.push_back({' ', before.size() - i, after.size() - i});
    }
    return edits;
}

// "12,7": first line, counted from one, and number of lines.
std::string Range(size_t first, size_t count) {
    return std::to_string(count == 0 ? first : first + 1) + "," + std::to_string(count);
}

void AppendHunk(const std::vector<Edit>& edits, size_t begin, size_t end, const Lines& before, const Lines& after,
                Lines& result) {
    const auto countOf = [&](char other) {
        return static_cast<size_t>(std::count_if(edits.begin() + static_cast<std::ptrdiff_t>(begin),
                                                 edits.begin() + static_cast<std::ptrdiff_t>(end),
                                                 [other](const Edit& edit) { return edit.kind != other; }));
    };
    result.push_back("@@ -" + Range(edits[begin].before, countOf('+')) + " +" +
                     Range(edits[begin].after, countOf('-')) + " @@");
    for (size_t i = begin; i < end; ++i) {
        const Edit& edit = edits[i];
        result.push_back(edit.kind + (edit.kind == '+' ? after[edit.after] : before[edit.before]));
    }
}

} // namespace

std::vector<std::string> SplitLines(const std::string& text) {
    Lines lines;
    size_t begin = 0;
    while (begin < text.size()) {
        const size_t end = std::min(text.find('\n', begin), text.size());
        const bool isCrLf = end > begin && text[end - 1] == '\r';
        lines.push_back(text.substr(begin, end - begin - (isCrLf ? 1 : 0)));
        begin = end + 1;
    }
    return lines;
}

std::vector<std::string> UnifiedDifference(const Lines& before, const Lines& after) {
    const std::vector<Edit> edits = EditsOf(before, after);
    Lines result;
    size_t at = 0;
    while (at < edits.size()) {
        while (at < edits.size() && edits[at].kind == ' ') {
            ++at;
        }
        if (at == edits.size()) {
            break;
        }
        const size_t begin = at > Context ? at - Context : 0;
        // Changes with up to twice the context between them are one hunk.
        size_t last = at;
        for (size_t next = at; next < edits.size() && next <= last + 2 * Context + 1; ++next) {
            last = edits[next].kind == ' ' ? last : next;
        }
        const size_t end = std::min(last + 1 + Context, edits.size());
        AppendHunk(edits, begin, end, before, after, result);
        at = end;
    }
    return result;
}
