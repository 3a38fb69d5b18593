// Edits a good main.cf at random: as a text, like somebody with an editor, and then change by change, like the tools.
// After each change the text reads as the document that was changed.
#include "FuzzInput.h"
#include "MainCfChecks.h"

#include <algorithm>

namespace {

using vcssim::CfBlock;
using vcssim::CfDocument;
using vcssim::CfGroup;

const char Configuration[] = R"(include "types.cf"

cluster CL (
	UserNames = { admin = "secret" }
	)

system N1 (
	)

group G (
	SystemList = { N1 = 0, "N 2" = 1 }
	AutoStartList = { N1 }
	)

	IP I (
		Address @N1 = "10.0.0.1"
		Address @"N 2" = "10.0.0.2"
		Critical = 0
		)

	Lanman L (
		VirtualName = V
		// a comment
		Options = { a = b, c }
		)

	L requires I

group H (
	SystemList = { N1 = 0 }
	)

requires group G online local firm
)";

const std::size_t MostEdits = 32;
const char* const Names[] = {"I", "L", "New 1", "G", "H"};
const char* const Attributes[] = {"Address", "Critical", "Options", "Fresh"};
const char* const Systems[] = {"", "N1", "N 2"};

template <std::size_t Count> const char* Chosen(const char* const (&from)[Count], unsigned number) {
    return from[number % Count];
}

// What is done: a letter, two numbers, and a text.
struct Edit {
    char kind;
    unsigned first;
    unsigned second;
    std::string text;
};

Edit EditOf(const std::string& line) {
    const auto number = [&line](std::size_t i) {
        return i < line.size() ? unsigned{static_cast<unsigned char>(line[i])} : 0u;
    };
    return {line.empty() ? ' ' : line[0], number(1), number(2), line.size() > 3 ? line.substr(3) : std::string()};
}

bool EditText(const Edit& edit, std::string& text) {
    const std::size_t at = std::min<std::size_t>(edit.first * 4, text.size());
    switch (edit.kind) {
    case 'i':
        text.insert(at, edit.text);
        return true;
    case 'd':
        text.erase(at, edit.second);
        return true;
    case 'r':
        text.replace(at, edit.second, edit.text);
        return true;
    case 'c':
        text.insert(at, text.substr(std::min<std::size_t>(edit.second * 4, text.size()), 40));
        return true;
    default:
        return false;
    }
}

// Whether there are the things that the change is about, as those who change see to it.
bool Change(const Edit& edit, CfDocument& document) {
    const std::string name = Chosen(Names, edit.first);
    const std::string other = Chosen(Names, edit.second);
    const bool isResource = document.ResourceNamed(name) != nullptr;
    switch (edit.kind) {
    case 'A':
        if (isResource || document.GroupNamed(other) == nullptr) {
            return false;
        }
        document.AddResource(other, "FuzzedType", name);
        return true;
    case 'R':
        if (isResource) {
            document.RemoveResource(name);
        }
        return isResource;
    case 'D': {
        const CfGroup* const group = document.GroupNamed(other);
        const bool isEmpty = group != nullptr && group->resources.empty();
        if (isEmpty) {
            document.RemoveGroup(other);
        }
        return isEmpty;
    }
    case 'L':
    case 'U': {
        if (!isResource || document.ResourceNamed(other) == nullptr || name == other) {
            return false;
        }
        const CfGroup& group = *document.GroupOf(name);
        const bool isLinked = std::any_of(group.links.begin(), group.links.end(), [&](const vcssim::CfLink& link) {
            return link.parent == name && link.child == other;
        });
        if (document.GroupOf(other) != &group || isLinked != (edit.kind == 'U')) {
            return false;
        }
        edit.kind == 'U' ? document.RemoveLink(name, other) : document.AddLink(name, other);
        return true;
    }
    case 'S':
        if (isResource) {
            std::string value = edit.text;
            std::replace_if(
                value.begin(), value.end(), [](char c) { return c == '\r' || c == '\n'; }, ' ');
            document.SetAttribute(name, Chosen(Attributes, edit.second), Chosen(Systems, edit.second / 4),
                                  vcssim::QuotedCf(value));
        }
        return isResource;
    case 'E': {
        const bool has = isResource && document.ResourceNamed(name)->Has(Chosen(Attributes, edit.second));
        if (has) {
            document.RemoveAttribute(name, Chosen(Attributes, edit.second));
        }
        return has;
    }
    default:
        return false;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<Edit> edits;
    for (const std::string& line : PartsOf(AsText(data, size), '\n')) {
        edits.push_back(EditOf(line));
        if (edits.size() == MostEdits) {
            break;
        }
    }
    std::string text = Configuration;
    for (const Edit& edit : edits) {
        EditText(edit, text);
    }
    CfDocument document;
    try {
        document = CfDocument(text);
    } catch (const vcssim::CfError& error) {
        FUZZ_CHECK(error.Line() >= 1 && error.what()[0] != '\0');
        document = CfDocument(Configuration);
    }
    for (const Edit& edit : edits) {
        const std::string before = document.Text();
        try {
            if (Change(edit, document)) {
                FUZZ_CHECK(ToldWithout(CfDocument(document.Text()), "") == ToldWithout(document, ""));
            } else {
                FUZZ_CHECK(document.Text() == before);
            }
        } catch (const vcssim::CfError&) {
            FUZZ_CHECK(document.Text() == before);
        }
    }
    return 0;
}
