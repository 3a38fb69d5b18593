#include "Scenario.h"

#include "EngineInput.h"
#include "Words.h"

#include <memory>
#include <sstream>
#include <stdexcept>

namespace scenario {

namespace {

using harness::Words;
using vcssim::Cluster;
using vcssim::ClusterEngine;
using vcssim::NoPlace;

class Player {
public:
    Player(const std::string& mainCf, Engines engines) : m_cluster(LoadCluster(mainCf)), m_engines(engines) {
        m_cluster.state.progress.clock = 0;
    }

    // What is told of one request.
    std::string Do(const std::string& request) {
        const std::vector<std::string> words = Words(request);
        if (SetUp(words)) {
            m_engine.reset();
            return "";
        }
        if (!m_engine || m_engines == Engines::OneForEach) {
            m_engine = std::make_unique<ClusterEngine>(m_cluster, m_options);
            m_told = 0;
        }
        const std::string refused = Ask(words);
        std::string text;
        const auto& timeline = m_engine->State().timeline;
        for (; m_told < timeline.size(); ++m_told) {
            text += vcssim::TimelineLine(timeline[m_told]) + "\n";
        }
        m_engine->Store();
        return text + (refused.empty() ? "" : "        refused: " + refused + "\n");
    }

    std::string Outcome() const {
        std::string text;
        for (const vcssim::CfBlock& system : m_cluster.configuration.Systems()) {
            const std::string state = m_cluster.SystemAttribute(system, "SysState").front().parts.front();
            text += state == "RUNNING" ? "" : "= " + system.name + " is " + state + "\n";
        }
        for (const vcssim::CfGroup& group : m_cluster.configuration.Groups()) {
            text += "= " + group.block.name + ":";
            for (const std::string& system : m_cluster.SystemsOf(group)) {
                text += " " + system + " " + m_cluster.GroupState(group, system);
            }
            text += "\n";
        }
        return text;
    }

private:
    // What the state file or the environment would say.
    bool SetUp(const std::vector<std::string>& words) {
        auto& state = m_cluster.state;
        if (words[0] == "given") { // GROUP SYSTEM: online there
            for (const vcssim::CfBlock& resource : m_cluster.configuration.GroupNamed(words.at(1))->resources) {
                state.resources[resource.name][words.at(2)] = "ONLINE";
            }
        } else if (words[0] == "times") { // RESOURCE ONLINE OFFLINE
            state.progress.times[words.at(1)] = {std::stoi(words.at(2)), std::stoi(words.at(3))};
        } else if (words[0] == "failing") { // RESOURCE SYSTEM
            state.failing[words.at(1)].insert(words.at(2));
        } else if (words[0] == "mended") {
            state.failing[words.at(1)].erase(words.at(2));
        } else if (words[0] == "set") { // SYSTEM STATE
            state.systems[words.at(1)] = words.at(2);
        } else if (words[0] == "option") {
            m_options.actsOnUnfreeze = m_options.actsOnUnfreeze && words.at(1) != "unfreeze=waits";
            m_options.faultsSlowOffline = m_options.faultsSlowOffline && words.at(1) != "slow-offline=stuck";
        } else {
            return false;
        }
        return true;
    }

    std::string Ask(const std::vector<std::string>& words) {
        vcssim::Engine& engine = m_engine->Control();
        const std::string& verb = words[0];
        if (verb == "wait") {
            engine.AdvanceTo(m_engine->State().clock + std::stoi(words.at(1)));
            return "";
        }
        if (verb == "system-down" || verb == "system-up" || verb == "system-exit" || verb == "freeze-system" ||
            verb == "unfreeze-system") {
            return AskOfSystem(words);
        }
        if (verb == "fault" || verb == "recover" || verb == "clear") {
            const std::string& group = m_cluster.configuration.GroupOf(words.at(1))->block.name;
            const std::size_t number = m_engine->Group(group);
            const std::size_t resource = m_engine->Resource(number, words.at(1));
            const std::size_t system = m_engine->System(words.at(2));
            return verb == "fault"     ? engine.Fault(number, resource, system)
                   : verb == "recover" ? engine.Recover(number, resource, system)
                                       : engine.Clear(number, resource, system);
        }
        const std::size_t group = m_engine->Group(words.at(1));
        const std::string why = WhyNotSimulated(m_cluster, m_cluster.configuration.Groups()[group]);
        if (!why.empty()) {
            return "not simulated: " + why;
        }
        if (verb == "online") {
            return engine.Online(group, m_engine->System(words.at(2)));
        }
        if (verb == "offline") {
            return engine.Offline(group, m_engine->System(words.at(2)));
        }
        if (verb == "switch") {
            return engine.Switch(group, words.at(2) == "-any" ? NoPlace : m_engine->System(words.at(2)));
        }
        if (verb == "freeze" || verb == "unfreeze") {
            if (verb == "freeze") {
                m_cluster.state.progress.frozenGroups.insert(words.at(1));
            } else {
                m_cluster.state.progress.frozenGroups.erase(words.at(1));
            }
            engine.FreezeGroup(group, verb == "freeze");
            return "";
        }
        throw std::invalid_argument("there is no request '" + verb + "'");
    }

    std::string AskOfSystem(const std::vector<std::string>& words) {
        vcssim::Engine& engine = m_engine->Control();
        const std::size_t system = m_engine->System(words.at(1));
        const bool evacuates = words.size() > 2 && words[2] == "-evacuate";
        if (words[0] == "system-down") {
            return engine.SystemDown(system);
        }
        if (words[0] == "system-up") {
            return engine.SystemUp(system);
        }
        if (words[0] == "system-exit") {
            return engine.SystemExit(system, evacuates);
        }
        if (words[0] == "freeze-system") {
            m_cluster.state.progress.frozenSystems.insert(words[1]);
        } else {
            m_cluster.state.progress.frozenSystems.erase(words[1]);
        }
        engine.FreezeSystem(system, words[0] == "freeze-system", evacuates);
        return "";
    }

    Cluster m_cluster;
    vcssim::Options m_options;
    Engines m_engines;
    std::unique_ptr<ClusterEngine> m_engine;
    std::size_t m_told = 0;
};

} // namespace

Cluster LoadCluster(const std::string& mainCf) {
    Cluster cluster;
    cluster.configuration = vcssim::CfDocument(mainCf);
    for (const vcssim::CfGroup& group : cluster.configuration.Groups()) {
        for (const vcssim::CfBlock& resource : group.resources) {
            cluster.types.Add(resource.keyword);
        }
    }
    return cluster;
}

Scenario Read(const std::string& text) {
    const std::size_t line = text.find("\n----\n");
    if (text.compare(0, 2, "# ") != 0 || line == std::string::npos) {
        throw std::invalid_argument("a scenario begins with \"# \" and has a line \"----\"");
    }
    Scenario scenario = {text.substr(0, line + 1), {}};
    std::istringstream stream(text.substr(line + 6));
    for (std::string read; std::getline(stream, read);) {
        if (read.compare(0, 2, "> ") == 0) {
            scenario.requests.push_back(read.substr(2));
        }
    }
    return scenario;
}

std::string Play(const Scenario& scenario, Engines engines) {
    Player player(scenario.head, engines);
    std::string text = scenario.head + "----\n";
    for (const std::string& request : scenario.requests) {
        text += "> " + request + "\n" + player.Do(request);
    }
    return text + player.Outcome();
}

} // namespace scenario
