// Which tool does which command lines.
#include "Tools.h"

namespace vcssim {

namespace {

struct KnownTool {
    const char* name;
    void (*run)(Context& context, Arguments arguments);
};

const KnownTool KnownTools[] = {
    {"haconf", RunHaconf}, {"hasys", RunHasys},       {"hagrp", RunHagrp},     {"hares", RunHares},
    {"haclus", RunHaclus}, {"hastatus", RunHastatus}, {"haagent", RunHaagent}, {"vcssim", RunVcssim},
};

// What changes the mode of the configuration or of a system needs a node that is up; false after a message.
bool CheckNode(Output& output, const std::string& tool, const Arguments& arguments) {
    const std::string& state = output.Switches().nodeState;
    const std::vector<std::string>& words = arguments.All();
    const std::string command = words.empty() ? "" : words.front();
    const bool needsNode = (tool == "haconf" && (command == "-makerw" || command == "-dump")) ||
                           (tool == "hasys" && (command == "-freeze" || command == "-unfreeze"));
    if (!needsNode || state == "RUNNING") {
        return true;
    }
    std::string operation = tool;
    for (const std::string& word : words) {
        operation.append(" ").append(word);
    }
    output.Warning("50129", "Operation '" + operation + "' rejected as the node is in " + state + " state");
    return false;
}

} // namespace

void RunTool(Context& context, const std::string& tool, const Arguments& arguments) {
    for (const KnownTool& known : KnownTools) {
        if (tool == known.name) {
            if (CheckNode(context.output, tool, arguments)) {
                known.run(context, arguments);
            }
            return;
        }
    }
    throw StoreError("there is no tool '" + tool + "'");
}

} // namespace vcssim
