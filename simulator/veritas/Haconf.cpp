// haconf: the mode of the configuration, and writing it to the main.cf.
#include "Tools.h"

namespace vcssim {

void RunHaconf(Context& context, Arguments arguments) {
    State& state = context.cluster.state;
    const std::string command = arguments.Next();
    if (command == "-makerw") {
        arguments.NeedEnd();
        if (state.writable) {
            context.output.Warning("10364", "Cluster already writable.");
        }
        state.writable = true;
        return;
    }
    if (command != "-dump") {
        throw UsageError();
    }
    const bool makesReadOnly = arguments.TakeFlag("-makero");
    arguments.NeedEnd();
    if (!state.writable) {
        context.output.Warning("10369", "Cluster not writable");
        return;
    }
    state.writable = !makesReadOnly;
    context.store.Dump(context.cluster);
}

} // namespace vcssim
