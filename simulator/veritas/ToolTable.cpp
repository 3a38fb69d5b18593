// Which tool does which command lines.
#include "Tools.h"

namespace vcssim {

namespace {

struct KnownTool {
    const char* name;
    void (*run)(Context& context, Arguments arguments);
};

const KnownTool KnownTools[] = {
    {"haconf", RunHaconf}, {"hasys", RunHasys},       {"hagrp", RunHagrp},   {"hares", RunHares},
    {"haclus", RunHaclus}, {"hastatus", RunHastatus}, {"vcssim", RunVcssim},
};

} // namespace

void RunTool(Context& context, const std::string& tool, const Arguments& arguments) {
    for (const KnownTool& known : KnownTools) {
        if (tool == known.name) {
            known.run(context, arguments);
            return;
        }
    }
    throw StoreError("there is no tool '" + tool + "'");
}

} // namespace vcssim
