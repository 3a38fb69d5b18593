// Models of failover clusters, as a rehearsal looks at them: JSON in, JSON out.
#ifndef CLUSCTL_REHEARSEDMODEL_H
#define CLUSCTL_REHEARSEDMODEL_H

#include "Json.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// A model as the simulator writes it, and the same as a document.
struct WrittenModel {
    explicit WrittenModel(std::string written);

    std::string text;
    Json json;
};
typedef std::shared_ptr<const WrittenModel> WrittenModelPointer; // a large one is not copied

// The private copy: with a clock of its own, and, where the model does not say otherwise, in a cluster that acts on
// failures.
Json PrivateCopy(Json copy);

// Milliseconds since 1601 (UTC).
std::int64_t ClockOf(const Json& model);

// When the next of what goes on ends; 0 when nothing goes on.
std::int64_t NextEnd(const Json& model);

// "is OnlinePending" as people are told: "is online pending". Other texts as they are.
std::string WordsOfState(const std::string& what);

// The names of the nodes, "." as this computer's.
std::vector<std::string> NodesOf(const Json& model, const std::string& thisComputer);

// "up", "down", "paused", "joining"; "stopped" where the cluster does not run.
std::string NodeState(const Json& model, const std::string& node, const std::string& thisComputer);

// What is compared and shown: without times, with secrets masked.
Json Essence(Json essence);

// An end to compare with others: also without the IDs that were made since `before`.
Json ComparableEnd(const Json& before, const Json& end);

// How `after` differs, as a unified difference of the objects that do; secrets masked. Empty when it does not.
std::vector<std::string> ModelDifference(const Json& before, const Json& after);

// The resources that are not online in `after`, and were in `before` or shall be: "name", "group", "state", "reason".
// `timeline` holds records with "kind", "name", "what" and "why".
Json StaysDown(const Json& before, const Json& after, const Json& timeline);

#endif
