#include "VcsConditions.h"

#include "Suggestion.h"
#include "Text.h"
#include "VcsServers.h"
#include "VcsToolProcess.h"
#include "VcsTools.h"

#include "core/ToolSecrets.h"
#include "core/VeritasNames.h"

#include "common/Text.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

using namespace clus::veritas;

namespace {

typedef NameValuePairList::value_type NameValuePair;
typedef std::map<std::string, std::set<std::string>> ValuesByName;

ValuesByName ReadValues(const LogCapture& log, const ConditionedKind& kind) {
    ValuesByName values;
    const ToolWatch watch(log);
    const std::string table = RunVcsTool(kind.tool, L"-display").output;
    if (watch.Problems().empty()) {
        for (const ShownValue& row : ReadShownValues(table, kind.form)) {
            values[row.attribute].insert(row.value);
        }
    }
    return values;
}

bool IsJudged(const NameValuePair& condition) {
    return condition.first.back() != L'!' && condition.second.compare(0, 1, L"~") != 0 &&
           !clus::IsSecretAttribute(condition.first);
}

std::vector<std::string> NamesOf(const ValuesByName& values) {
    std::vector<std::string> names;
    names.reserve(values.size());
    for (const auto& entry : values) {
        names.push_back(entry.first);
    }
    return names;
}

// Whether only objects of a type that none has are asked for: then an attribute of that type is not shown either.
bool IsOfTypeThatNoneHas(const NameValuePairList& conditions, const ValuesByName& values) {
    return std::any_of(conditions.begin(), conditions.end(), [&values](const NameValuePair& condition) {
        const auto types = values.find(common::ToUtf8(TypeAttribute));
        return condition.first == TypeAttribute && types != values.end() &&
               types->second.count(common::ToUtf8(condition.second)) == 0;
    });
}

// Of a value that none has: what speaks against its ever being one. Nothing of states and the like, which may be one
// tomorrow.
std::string DoubtOf(const NameValuePair& condition, const std::set<std::string>& values) {
    const std::string value = common::ToUtf8(condition.second);
    const bool isName = condition.first == TypeAttribute || condition.first == GroupAttribute;
    std::vector<std::string> candidates;
    std::copy_if(values.begin(), values.end(), std::back_inserter(candidates),
                 [&](const std::string& candidate) { return isName || Lower(candidate) == Lower(value); });
    return !isName && candidates.empty()
               ? std::string()
               : Quoted(value) + " as its " + Quoted(condition.first) + DidYouMean(value, candidates);
}

} // namespace

void JudgeConditions(const LogCapture& log, const ConditionedKind& kind, const NameValuePairList& conditions,
                     Report& report) {
    const ValuesByName values = ReadValues(log, kind);
    if (values.empty()) {
        RequireVcsAnswer(log, std::string("cannot list the ") + kind.singular + "s");
        return;
    }
    const std::string none = std::string("no ") + kind.singular + " has ";
    const bool mayLackAttributes = IsOfTypeThatNoneHas(conditions, values);
    for (const NameValuePair& condition : conditions) {
        const auto found = values.find(common::ToUtf8(condition.first));
        if (!IsJudged(condition) || (found == values.end() && mayLackAttributes)) {
            continue;
        }
        if (found == values.end()) {
            throw Failure(Errors::NotFound, none + "an attribute " + Quoted(condition.first) +
                                                DidYouMean(common::ToUtf8(condition.first), NamesOf(values)));
        }
        if (found->second.count(common::ToUtf8(condition.second)) == 0) {
            const std::string doubt = DoubtOf(condition, found->second);
            if (!doubt.empty()) {
                report.AddWarning(none + doubt);
            }
        }
    }
}
