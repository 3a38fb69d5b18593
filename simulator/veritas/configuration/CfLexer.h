// The words of a main.cf, each with its place in the text.
#ifndef VCSSIM_CFLEXER_H
#define VCSSIM_CFLEXER_H

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace vcssim {

// Where something stands in a text. Both count from 1 on.
struct CfPlace {
    std::size_t line = 0;
    std::size_t column = 0; // in bytes; 0: not known
};

CfPlace PlaceInCf(const std::string& text, std::size_t position);

// What is wrong with the text, and where.
class CfError : public std::runtime_error {
public:
    CfError(std::size_t line, const std::string& message) : CfError(CfPlace{line, 0}, message) {
    }
    CfError(const CfPlace& place, const std::string& message) : std::runtime_error(message), m_place(place) {
    }
    std::size_t Line() const {
        return m_place.line;
    }
    std::size_t Column() const {
        return m_place.column;
    }

private:
    CfPlace m_place;
};

struct CfSpan {
    std::size_t begin = 0;
    std::size_t end = 0;
};

struct CfToken {
    enum Kind {
        Word,
        String, // in quotes; `text` is without them
        Symbol, // one of (){}=,;@
        End
    };

    Kind kind = End;
    CfSpan span;
    std::size_t line = 1;
    std::string text;

    bool IsSymbol(char symbol) const {
        return kind == Symbol && text[0] == symbol;
    }
    bool IsWord(const char* word) const {
        return kind == Word && text == word;
    }
    bool IsName() const {
        return kind == Word || kind == String;
    }
    std::string Shown() const; // for messages
};

// The last token is always End. Comments (`//`, and lines that begin with `#`) and white space are passed over.
std::vector<CfToken> SplitCf(const std::string& text);

// A text as a value is written: bare if it may be, else in quotes.
std::string QuotedCf(const std::string& text);
std::string AlwaysQuotedCf(const std::string& text);

// A number as an attribute of a number type is written: bare.
bool IsCfNumber(const std::string& text);

} // namespace vcssim

#endif
