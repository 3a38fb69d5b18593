// vcssim: what happens to the simulated cluster, and what it did.
#include "ClusterEngine.h"
#include "ControlEvents.h"
#include "Operations.h"

#include <functional>

namespace vcssim {

namespace {

const char TypeOfCreated[] = "GenericService"; // every cluster of Windows has it

Seconds TakeSeconds(Arguments& arguments) {
    const std::optional<Seconds> seconds = SecondsIn(arguments.Next());
    if (!seconds) {
        throw UsageError();
    }
    return *seconds;
}

void PrintTimeline(Output& output, const std::vector<TimelineEntry>& entries) {
    for (const TimelineEntry& entry : entries) {
        output.Print(TimelineLine(entry) + "\n");
    }
}

// Whether all that the cluster may do is simulated.
bool CheckAllSimulated(Context& context) {
    for (const CfGroup& group : context.cluster.configuration.Groups()) {
        if (!CheckSimulated(context, group)) {
            return false;
        }
    }
    return true;
}

// Asks something of the engine, whose answer says why not, and tells what follows.
void Ask(Context& context, const std::function<std::string(ClusterEngine&)>& request) {
    if (!CheckAllSimulated(context)) {
        return;
    }
    ClusterEngine engine(context.cluster, context.output.Switches());
    if (CheckAllowed(context, request(engine))) {
        engine.Store();
        PrintTimeline(context.output, engine.State().timeline);
    }
}

void AskOfSystem(Context& context, const std::string& command, Arguments& arguments) {
    const bool evacuates = command == "system-exit" && arguments.TakeFlag("-evacuate");
    const std::string name = arguments.Next();
    arguments.NeedEnd();
    if (!context.cluster.HasSystem(name)) {
        NoSuchSystem(context.output, "10357", name);
        return;
    }
    Ask(context, [&](ClusterEngine& engine) {
        const std::size_t system = engine.System(name);
        return command == "system-up"     ? engine.Control().SystemUp(system)
               : command == "system-down" ? engine.Control().SystemDown(system)
                                          : engine.Control().SystemExit(system, evacuates);
    });
}

void AskOfResource(Context& context, const std::string& command, Arguments& arguments) {
    const std::string name = arguments.Next();
    const std::string system = arguments.Next();
    arguments.NeedEnd();
    const CfGroup* const group = context.cluster.configuration.GroupOf(name);
    if (!group) {
        NoSuchResource(context.output, name);
        return;
    }
    if (!CheckSystem(context, *group, system)) {
        return;
    }
    Ask(context, [&](ClusterEngine& engine) {
        const std::size_t number = engine.Group(group->block.name);
        const std::size_t resource = engine.Resource(number, name);
        const std::size_t place = engine.System(system);
        return command == "fault" ? engine.Control().Fault(number, resource, place)
                                  : engine.Control().Recover(number, resource, place);
    });
}

void Wait(Context& context, Arguments& arguments) {
    const Seconds seconds = TakeSeconds(arguments);
    arguments.NeedEnd();
    const std::optional<Seconds>& clock = context.cluster.state.progress.clock;
    if (!clock) {
        context.output.Simulated("99067", "The clock is the real one: vcssim clock 0 makes it a simulated one");
        return;
    }
    Ask(context, [&](ClusterEngine& engine) {
        engine.Control().AdvanceTo(*clock + seconds);
        return std::string();
    });
}

// From now on the clock is a simulated one, and the time line is kept. It never goes back.
void Clock(Context& context, Arguments& arguments) {
    std::optional<Seconds>& clock = context.cluster.state.progress.clock;
    if (arguments.IsEmpty()) {
        context.output.Print(clock ? std::to_string(*clock) + "\n" : "real\n");
        return;
    }
    const Seconds seconds = TakeSeconds(arguments);
    arguments.NeedEnd();
    if (clock || context.cluster.state.progress.IsUnderWay()) {
        context.output.Simulated("99068", clock ? "The clock is a simulated one already; vcssim wait lets time pass"
                                                : "Something is under way; the clock stays the real one");
        return;
    }
    clock = seconds;
}

void MoveGroup(Context& context, Arguments& arguments) {
    const std::string group = arguments.Next();
    const std::string system = arguments.Next();
    arguments.NeedEnd();
    RunHagrp(context, Arguments({"-switch", group, "-to", system}));
}

// What somebody else does, who has the configuration open for it, whoever else has: as hares does it.
void ChangeBySomebody(Context& context, const std::string& command, Arguments& arguments) {
    const std::string name = arguments.Next();
    const bool isCreated = command == "appear";
    const std::string created = isCreated ? arguments.Next() : std::string();
    arguments.NeedEnd();
    bool& isWritable = context.cluster.state.writable;
    const bool wasWritable = isWritable;
    isWritable = true;
    RunHares(context, Arguments(isCreated ? std::vector<std::string>{"-add", created, TypeOfCreated, name}
                                          : std::vector<std::string>{"-delete", name}));
    isWritable = wasWritable;
}

// The cluster goes on as it did: only the tools of this computer find no engine.
void SetEngine(Context& context, bool isStopped, Arguments& arguments) {
    arguments.NeedEnd();
    context.cluster.state.isEngineStopped = isStopped;
}

void ShowState(Context& context, Arguments& arguments) {
    arguments.NeedEnd();
    const Cluster& cluster = context.cluster;
    const auto row = [&](const char* kind, const std::string& name, const std::string& system,
                         const std::string& state) {
        context.output.Print(Padded(kind, 8) + " " + Padded(name, 20) + " " +
                             (system.empty() ? "" : Padded(system, 12) + " ") + state + "\n");
    };
    const auto& clock = cluster.state.progress.clock;
    row("clock", clock ? std::to_string(*clock) : "real", "", "");
    for (const CfBlock& system : cluster.configuration.Systems()) {
        row("system", system.name, "",
            cluster.SystemAttribute(system, "SysState").front().parts.front() +
                (cluster.IsFrozen(system) ? ", frozen" : ""));
    }
    for (const CfGroup& group : cluster.configuration.Groups()) {
        for (const std::string& system : cluster.SystemsOf(group)) {
            row("group", group.block.name, system,
                cluster.GroupState(group, system) + (cluster.IsFrozen(group) ? ", frozen" : ""));
        }
        for (const CfBlock& resource : group.resources) {
            for (const std::string& system : cluster.SystemsOf(group)) {
                const auto transition = cluster.state.progress.TransitionOf(resource.name, system);
                row("resource", resource.name, system,
                    cluster.ResourceState(resource, system) + (GoesUp(transition)     ? ", starting"
                                                               : GoesDown(transition) ? ", stopping"
                                                                                      : ""));
            }
        }
    }
}

} // namespace

void RunVcssim(Context& context, Arguments arguments) {
    const std::string command = arguments.Next();
    if (command == "system-down" || command == "system-exit" || command == "system-up") {
        AskOfSystem(context, command, arguments);
    } else if (command == "fault" || command == "recover") {
        AskOfResource(context, command, arguments);
    } else if (command == "move") {
        MoveGroup(context, arguments);
    } else if (command == "vanish" || command == "appear") {
        ChangeBySomebody(context, command, arguments);
    } else if (command == "engine-stop" || command == "engine-start") {
        SetEngine(context, command == "engine-stop", arguments);
    } else if (command == "wait") {
        Wait(context, arguments);
    } else if (command == "clock") {
        Clock(context, arguments);
    } else if (command == "state") {
        ShowState(context, arguments);
    } else if (command == "timeline") {
        arguments.NeedEnd();
        PrintTimeline(context.output, context.cluster.state.progress.timeline);
    } else {
        throw UsageError();
    }
}

} // namespace vcssim
