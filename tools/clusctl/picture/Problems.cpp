#include "Problems.h"

#include <algorithm>
#include <iterator>

namespace picture {

namespace {

// The rule of the status and of the doctor: what each problem means. docs/doctor.md has the table.
struct ProblemKind {
    const char* code;
    Level level;
};

const ProblemKind ProblemKinds[] = {
    {"cluster-unread", Level::Unknown},
    {"node-down", Level::Warning},
    {"node-paused", Level::Warning},
    {"node-joining", Level::Warning},
    {"node-unread", Level::Unknown},
    {"vcs-system-down", Level::Warning},
    {"cluster-not-deployed", Level::Critical},
    {"group-failed", Level::Critical},
    {"group-offline", Level::Critical},
    {"group-unread", Level::Unknown},
    {"vcs-group-faulted", Level::Critical},
    {"vcs-group-offline", Level::Critical},
    {"vcs-group-faulted-elsewhere", Level::Warning},
    {"vcs-group-frozen", Level::Warning},
    {"vcs-group-disabled", Level::Warning},
    {"resource-failed", Level::Critical},
    {"resource-pending", Level::Warning},
    {"resource-offline", Level::Warning},
    {"resource-unread", Level::Unknown},
    {"server-part-offline", Level::Critical},
    {"vcs-resource-faulted", Level::Critical},
    {"vcs-resource-faulted-elsewhere", Level::Warning},
    {"vcs-resource-not-probed", Level::Unknown},
    {"vcs-resource-disabled", Level::Warning},
    {"product-resource-missing", Level::Warning},
    {"product-failed", Level::Critical},
    {"product-pending", Level::Warning},
    {"product-offline", Level::Critical},
    {"vcs-product-missing", Level::Warning},
    {"vcs-service-missing", Level::Critical},
    {"vcs-service-order", Level::Warning},
    {"vcs-resource-offline", Level::Critical},
    {"network-name-missing", Level::Critical},
    {"vcs-lanman-missing", Level::Critical},
    {"network-name-dependency-missing", Level::Critical},
    {"address-dependency-missing", Level::Critical},
    {"store-dependency-missing", Level::Warning},
    {"owner-case", Level::Critical},
    {"server-left-out", Level::Critical},
    {"vcs-store-missing", Level::Critical},
};

} // namespace

Level LevelOf(const std::string& code) {
    const auto* const found = std::find_if(std::begin(ProblemKinds), std::end(ProblemKinds),
                                           [&code](const ProblemKind& kind) { return kind.code == code; });
    return found == std::end(ProblemKinds) ? Level::Unknown : found->level;
}

} // namespace picture
