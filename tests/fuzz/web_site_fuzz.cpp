// Reads texts as configuration files of the web server and looks for the site of a folder. XmlLite's place is taken by
// a reader that knows tags and attributes only.
#include "FuzzInput.h"

#include "MarkupCheck.h"
#include "SiteLookup.h"
#include "XmlText.h"

#include "common/Text.h"

namespace {

const char NameEnd[] = " \t\r\n/>=";

std::size_t Past(const std::string& text, std::size_t at, const char* what) {
    const std::size_t next = text.find_first_not_of(what, at);
    return next == std::string::npos ? text.size() : next;
}

std::wstring WithoutPrefix(const std::string& name) {
    return common::ToUtf16(name.substr(name.find(':') + 1)); // npos + 1 is 0
}

// NAME="VALUE" ... of a start tag.
std::map<std::wstring, std::wstring> AttributesOf(const std::string& tag) {
    std::map<std::wstring, std::wstring> attributes;
    for (std::size_t at = Past(tag, tag.find_first_of(NameEnd), NameEnd); at < tag.size();) {
        const std::size_t equals = tag.find('=', at);
        if (equals == std::string::npos || equals + 1 >= tag.size()) {
            break;
        }
        const std::string name = tag.substr(at, tag.find_first_of(NameEnd, at) - at);
        const std::size_t end = tag.find(tag[equals + 1], equals + 2);
        if (end == std::string::npos) {
            break;
        }
        attributes[WithoutPrefix(name)] = common::ToUtf16(tag.substr(equals + 2, end - equals - 2));
        at = Past(tag, end + 1, NameEnd);
    }
    return attributes;
}

} // namespace

bool ReadXml(const std::string& bytes, XmlElementHandler& handler) {
    std::vector<std::wstring> path;
    for (std::size_t at = bytes.find('<'); at != std::string::npos; at = bytes.find('<', at + 1)) {
        const std::size_t end = bytes.find('>', at);
        const std::string tag = bytes.substr(at + 1, end == std::string::npos ? end : end - at - 1);
        if (tag.empty() || tag[0] == '?' || tag[0] == '!') {
            continue;
        }
        if (tag[0] == '/') {
            if (path.empty()) {
                return false;
            }
            path.pop_back();
            continue;
        }
        path.push_back(WithoutPrefix(tag.substr(0, tag.find_first_of(NameEnd))));
        handler.OnElement(path, AttributesOf(tag));
        if (tag.back() == '/') {
            path.pop_back();
        }
    }
    return path.empty();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string text = AsText(data, size);
    const std::wstring folder = common::ToUtf16(TakeLine(text));
    const bool isComplete = HasCompleteMarkup(text);
    for (const SiteFileForm form : {SiteFileForm::ApplicationHost, SiteFileForm::MetaBase}) {
        const int site = FindSiteOfFolder(text, form, folder);
        FUZZ_CHECK(site == -1 || site > 0);
        FUZZ_CHECK(site == -1 || (isComplete && text.find(std::to_string(site)) != std::string::npos));
    }
    // The same text in UTF-16, in either byte order, is as complete.
    bool isAscii = true;
    std::string little = "\xff\xfe";
    std::string big = "\xfe\xff";
    for (const char c : text) {
        isAscii = isAscii && static_cast<unsigned char>(c) < 0x80;
        little += std::string({c, '\0'});
        big += std::string({'\0', c});
    }
    if (isAscii) {
        FUZZ_CHECK(HasCompleteMarkup(little) == isComplete);
        FindSiteOfFolder(big, SiteFileForm::ApplicationHost, folder);
    }
    return 0;
}
