// Lets a small cluster of the VCS simulator meet anything: requests, faults, systems that go and come, time. What may
// never be is never.
#include "FuzzInput.h"

#include "VcsEngine.h"

#include <string>

namespace {

using vcssim::Engine;
using vcssim::EngineModel;
using vcssim::EngineState;
using vcssim::GroupDependency;
using vcssim::GroupModel;
using vcssim::NoPlace;
using vcssim::ResourceModel;
using vcssim::ResourceStatus;
using vcssim::Seconds;

const std::size_t MostEvents = 60;

// Bytes of the input one after the other, 0 behind the last one.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {
    }
    std::size_t Below(std::size_t limit) {
        return m_place < m_size ? m_data[m_place++] % limit : 0;
    }
    bool Flag() {
        return Below(2) != 0;
    }
    bool IsEmpty() const {
        return m_place >= m_size;
    }

private:
    const std::uint8_t* m_data;
    std::size_t m_size;
    std::size_t m_place = 0;
};

ResourceModel MakeResource(Input& input, std::size_t place, std::size_t systems) {
    ResourceModel model;
    model.name = "r" + std::to_string(place);
    model.persistent = input.Below(6) == 1;
    model.critical = input.Below(3) != 1;
    for (std::size_t i = 0; i < systems; ++i) {
        model.enabled.push_back(input.Below(8) != 1);
        model.autoStart.push_back(input.Below(8) != 1);
        model.failing.push_back(input.Below(8) == 1);
    }
    model.onlineTime = static_cast<Seconds>(input.Below(3) * 10);
    model.offlineTime = static_cast<Seconds>(input.Below(3) * 10);
    model.onlineTimeout = 15;
    model.offlineTimeout = 15;
    model.onlineRetryLimit = static_cast<int>(input.Below(2));
    model.restartLimit = static_cast<int>(input.Below(2));
    model.confInterval = 30;
    return model;
}

GroupModel MakeGroup(Input& input, std::size_t place, std::size_t systems) {
    GroupModel model;
    model.name = "g" + std::to_string(place);
    model.parallel = input.Below(4) == 1;
    model.autoFailOver = static_cast<int>(input.Below(3));
    model.policy = static_cast<GroupModel::Policy>(input.Below(3));
    model.onlineRetryLimit = static_cast<int>(input.Below(2));
    model.onlineRetryInterval = static_cast<Seconds>(input.Below(2) * 30);
    model.load = static_cast<int>(input.Below(100));
    for (std::size_t i = 0; i < systems; ++i) {
        if (input.Below(5) != 1) {
            model.places.push_back(
                {i, static_cast<int>(input.Below(4)), static_cast<int>(input.Below(3)) - 1, input.Below(8) != 1});
            model.autoStartList.push_back(i);
        }
    }
    const std::size_t resources = 1 + input.Below(4);
    for (std::size_t i = 0; i < resources; ++i) {
        model.resources.push_back(MakeResource(input, i, systems));
        for (std::size_t child = 0; child < i; ++child) {
            if (input.Flag() && !model.resources[i].persistent) { // what is persistent never requires anything
                model.resources[i].children.push_back(child);
                model.resources[child].parents.push_back(i);
            }
        }
    }
    return model;
}

EngineModel MakeModel(Input& input) {
    EngineModel model;
    const std::size_t systems = 2 + input.Below(3);
    for (std::size_t i = 0; i < systems; ++i) {
        model.systems.push_back({"s" + std::to_string(i), 100, {}});
    }
    const std::size_t groups = 1 + input.Below(3);
    for (std::size_t i = 0; i < groups; ++i) {
        GroupModel group = MakeGroup(input, i, systems);
        for (std::size_t child = 0; child < i; ++child) {
            if (input.Below(3) != 1) {
                continue;
            }
            GroupDependency dependency;
            dependency.child = child;
            dependency.offline = input.Below(4) == 1;
            dependency.location = static_cast<GroupDependency::Location>(input.Below(3));
            dependency.rigidity = static_cast<GroupDependency::Rigidity>(input.Below(3));
            if (dependency.rigidity == GroupDependency::Hard) {
                dependency.location = GroupDependency::Local;
            }
            group.dependencies.push_back(dependency);
        }
        model.groups.push_back(group);
    }
    model.actsOnUnfreeze = input.Flag();
    model.faultsSlowOffline = input.Flag();
    return model;
}

void Happen(Input& input, const EngineModel& model, EngineState& state, Engine& engine) {
    const std::size_t group = input.Below(model.groups.size());
    const std::size_t system = input.Below(model.systems.size());
    const std::size_t resource = input.Below(model.groups[group].resources.size());
    switch (input.Below(13)) {
    case 0:
        engine.Online(group, system);
        break;
    case 1:
        engine.Offline(group, system);
        break;
    case 2:
        engine.Switch(group, input.Flag() ? system : NoPlace);
        break;
    case 3:
    case 4:
        engine.Fault(group, resource, system);
        break;
    case 5:
        engine.Clear(group, resource, system);
        break;
    case 6:
        engine.Recover(group, resource, system);
        break;
    case 7:
        engine.SystemDown(system);
        break;
    case 8:
        engine.SystemUp(system);
        break;
    case 9:
        engine.SystemExit(system, input.Flag());
        break;
    case 10:
        engine.FreezeGroup(group, !state.frozenGroups[group]);
        break;
    case 11:
        engine.FreezeSystem(system, !state.systems[system].frozen, input.Flag());
        break;
    default:
        engine.AdvanceTo(state.clock + static_cast<Seconds>(input.Below(40)));
    }
}

// What requires another resource is not online without it. Faults in frozen groups are the exception: nothing is done.
void CheckResources(const EngineModel& model, const EngineState& state, std::size_t group, std::size_t system) {
    for (std::size_t i = 0; i < model.groups[group].resources.size(); ++i) {
        const ResourceStatus& status = state.resources[group][i][system];
        const ResourceModel& resource = model.groups[group].resources[i];
        FUZZ_CHECK(!resource.persistent || status.transition == ResourceStatus::Still);
        FUZZ_CHECK(status.condition != ResourceStatus::Online || resource.persistent || resource.enabled[system]);
        if (resource.persistent || status.condition != ResourceStatus::Online ||
            status.transition != ResourceStatus::Still) {
            continue;
        }
        for (const std::size_t child : resource.children) {
            const ResourceStatus& required = state.resources[group][child][system];
            FUZZ_CHECK(required.condition != ResourceStatus::Offline ||
                       !model.groups[group].resources[child].enabled[system] ||
                       model.groups[group].resources[child].persistent);
        }
    }
}

void Check(const EngineModel& model, const EngineState& state, const Engine& engine, bool everFrozen) {
    for (std::size_t group = 0; group < model.groups.size(); ++group) {
        std::size_t places = 0;
        for (std::size_t system = 0; system < model.systems.size(); ++system) {
            places += engine.IsActive(group, system) ? 1 : 0;
            const std::string& systemState = state.systems[system].state;
            FUZZ_CHECK(!engine.IsActive(group, system) || systemState == "RUNNING" || systemState == "LEAVING");
            if (!everFrozen) {
                CheckResources(model, state, group, system);
            }
        }
        FUZZ_CHECK(model.groups[group].parallel || places <= 1);
        for (const GroupDependency& dependency : model.groups[group].dependencies) {
            for (std::size_t system = 0; dependency.offline && !everFrozen && system < model.systems.size(); ++system) {
                FUZZ_CHECK(!engine.IsUp(group, system) || !engine.IsUp(dependency.child, system));
            }
        }
    }
    for (std::size_t i = 1; i < state.timeline.size(); ++i) {
        FUZZ_CHECK(state.timeline[i - 1].at <= state.timeline[i].at);
    }
}

std::string Told(const EngineState& state) {
    std::string text;
    for (const vcssim::TimelineEntry& entry : state.timeline) {
        text += vcssim::TimelineLine(entry) + "\n";
    }
    return text;
}

std::string Run(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const EngineModel model = MakeModel(input);
    EngineState state(model);
    Engine engine(model, state);
    bool everFrozen = false;
    for (std::size_t i = 0; i < MostEvents && !input.IsEmpty(); ++i) {
        Happen(input, model, state, engine);
        for (const bool frozen : state.frozenGroups) {
            everFrozen = everFrozen || frozen;
        }
        Check(model, state, engine, everFrozen);
    }
    engine.AdvanceTo(state.clock + 10000);
    Check(model, state, engine, everFrozen);
    // Time alone brings everything to rest.
    for (const vcssim::Move& move : state.moves) {
        FUZZ_CHECK(!model.faultsSlowOffline || move.phase == vcssim::Move::Following);
    }
    return Told(state);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FUZZ_CHECK(Run(data, size) == Run(data, size));
    return 0;
}
