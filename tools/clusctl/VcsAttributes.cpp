#include "VcsAttributes.h"

#include "Text.h"
#include "VcsTable.h"
#include "VcsTools.h"

#include "common/Text.h"

#include <algorithm>

NameValuePairList GivenAttributes(const std::vector<ToolRun>& runs, const std::wstring& resource) {
    const std::wstring start = L"hares -modify " + resource + L" ";
    NameValuePairList given;
    for (const ToolRun& run : runs) {
        const std::wstring command = common::ToUtf16(run.command);
        if (command.compare(0, start.size(), start) != 0) {
            continue;
        }
        const size_t end = std::min(command.find(L' ', start.size()), command.size());
        const std::wstring name = command.substr(start.size(), end - start.size());
        const std::wstring value = command.substr(std::min(end + 1, command.size()));
        const auto known =
            std::find_if(given.begin(), given.end(), [&name](const auto& pair) { return pair.first == name; });
        if (known == given.end()) {
            given.emplace_back(name, value);
        } else {
            known->second = value;
        }
    }
    return given;
}

VcsNames AttributesNotAsGiven(const LogCapture& log, const std::wstring& resource, const NameValuePairList& given,
                              const std::string& what) {
    std::wstring names;
    for (const auto& pair : given) {
        names += (names.empty() ? L"" : L" ") + pair.first;
    }
    const ToolWatch watch(log);
    ReadVcsAttribute(resource, names); // tells the first one only; the tool showed all
    watch.Require(true, what);
    const std::vector<ToolRun> runs = watch.Runs();
    std::vector<VcsRow> rows = runs.empty() ? std::vector<VcsRow>() : ReadVcsTable(runs.back().Output());
    rows.erase(
        std::remove_if(rows.begin(), rows.end(), [&resource](const VcsRow& row) { return row.object != resource; }),
        rows.end());
    if (rows.empty()) {
        throw Failure(what + ": VCS shows nothing of the attributes of " + Quoted(resource));
    }
    VcsNames others;
    for (const auto& pair : given) {
        bool isShown = false;
        bool isOther = false;
        for (const VcsRow& row : rows) {
            if (row.attribute == pair.first) {
                isShown = true;
                isOther = isOther || !ShowsGiven(row, pair.second); // of a local one each system has its own
            }
        }
        if (!isShown || isOther) {
            others.push_back(pair.first);
        }
    }
    return others;
}

void RequireAttributes(const LogCapture& log, const std::wstring& resource, const NameValuePairList& given,
                       const std::string& what) {
    const VcsNames others = AttributesNotAsGiven(log, resource, given, what);
    if (!others.empty()) {
        throw Failure(Errors::Refused, what + ": VCS does not show " + Quoted(resource) +
                                           " with what it was given: " + ListText(others));
    }
}
