#include "Text.h"

#include "common/Text.h"

#include <winsock2.h>
#include <windows.h>

#include <algorithm>

namespace {

const size_t LongestQuoted = 80;

bool IsContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// The first `count` characters.
std::string Head(const std::string& text, size_t count) {
    size_t end = 0;
    while (end < text.size() && (count > 0 || IsContinuation(text[end]))) {
        if (!IsContinuation(text[end])) {
            --count;
        }
        ++end;
    }
    // `count` is used up at the first byte of the last character.
    return text.substr(0, end);
}

// The cluster's codes, for a system that has no text for them.
std::string ClusterText(unsigned long code) {
    static const struct {
        unsigned long code;
        const char* text;
    } known[] = {
        {ERROR_DEPENDENT_RESOURCE_EXISTS, "Another resource depends on it"},
        {ERROR_DEPENDENCY_NOT_FOUND, "Dependency not found"},
        {ERROR_DEPENDENCY_ALREADY_EXISTS, "The dependency exists already"},
        {ERROR_RESOURCE_NOT_ONLINE, "The resource is not online"},
        {ERROR_HOST_NODE_NOT_AVAILABLE, "No node is available for it"},
        {ERROR_RESOURCE_NOT_AVAILABLE, "The resource is not available"},
        {ERROR_RESOURCE_NOT_FOUND, "Cluster resource not found"},
        {ERROR_OBJECT_ALREADY_EXISTS, "The object exists already"},
        {ERROR_GROUP_NOT_AVAILABLE, "The group is not available"},
        {ERROR_GROUP_NOT_FOUND, "Cluster group not found"},
        {ERROR_HOST_NODE_NOT_RESOURCE_OWNER, "The node is no possible owner of the resource"},
        {ERROR_RESMON_ONLINE_FAILED, "The resource does not come online"},
        {ERROR_RESOURCE_ONLINE, "Resource online"},
        {ERROR_INVALID_STATE, "Not possible in the resource's state"},
        {ERROR_RESOURCE_FAILED, "The resource has failed"},
        {ERROR_CLUSTER_NODE_NOT_FOUND, "Cluster node not found"},
        {ERROR_CLUSTER_NODE_DOWN, "The cluster node is down"},
        {ERROR_CLUSTER_NODE_PAUSED, "The cluster node is paused"},
        {ERROR_CLUSTER_RESOURCE_TYPE_NOT_FOUND, "Cluster resource type not found"},
        {5942 /* ERROR_CLUSTER_RESOURCE_PROVIDER_FAILED */, "A resource that it depends on has failed"},
    };
    for (const auto& entry : known) {
        if (entry.code == code) {
            return entry.text;
        }
    }
    return std::string();
}

} // namespace

std::string Lower(std::string text) {
    for (char& c : text) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return text;
}

bool StartsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

std::string Printable(const std::wstring& text) {
    return Printable(common::ToUtf8(text));
}

size_t CharacterCount(const std::string& text) {
    return static_cast<size_t>(std::count_if(text.begin(), text.end(), [](char c) { return !IsContinuation(c); }));
}

std::string Quoted(const std::string& text) {
    const std::string printable = Printable(text);
    const size_t count = CharacterCount(printable);
    if (count <= LongestQuoted) {
        return "\"" + printable + "\"";
    }
    return "\"" + Head(printable, LongestQuoted - 20) + "...\" (" + std::to_string(count) + " characters)";
}

std::string Quoted(const std::wstring& text) {
    return Quoted(common::ToUtf8(text));
}

std::string QuotedPath(const std::wstring& path) {
    return "\"" + Printable(path) + "\"";
}

std::string Shortened(const std::string& text, size_t longest) {
    const std::string printable = Printable(text);
    return CharacterCount(printable) <= longest ? printable : Head(printable, longest - 3) + "...";
}

std::string SystemText(unsigned long code) {
    wchar_t buffer[512];
    const DWORD flags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK;
    const DWORD length = FormatMessageW(flags, nullptr, code, 0, buffer, 512, nullptr);
    std::string text = Printable(std::wstring(buffer, length));
    while (!text.empty() && (text.back() == ' ' || text.back() == '.')) {
        text.pop_back();
    }
    return text.empty() ? ClusterText(code) : text;
}

std::string ErrorText(unsigned long code) {
    const std::string text = SystemText(code);
    const std::string number = "error " + std::to_string(code);
    if (code == ERROR_MORE_DATA) {
        return number + " (" + text + ": the answer fits no room that it is given)";
    }
    return number + (text.empty() ? "" : " (" + text + ")");
}
