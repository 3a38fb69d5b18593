#include "Events.h"

#include "Engine.h"

#include "common/Json.h"
#include "common/Text.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <limits>

namespace clussim {

using common::ToUtf16;
using common::ToUtf8;

namespace {

const Code Done = ERROR_SUCCESS;

// The objects of an event, looked up.
class Objects {
public:
    Objects(Model& model, const std::string& event) : m_model(model), m_event(event) {
    }

    Node& NodeNamed(const std::string& name) const {
        Node* const node = name == "." ? ThisNode() : m_model.FindNode(ToUtf16(name));
        return Need(node, "node", name);
    }

    Node& OwnNode() const {
        return Need(ThisNode(), "node of this computer", ".");
    }

    Group& GroupNamed(const std::string& name) const {
        return Need(m_model.FindGroup(ToUtf16(name)), "group", name);
    }

    Network& NetworkNamed(const std::string& name) const {
        return Need(m_model.FindNetwork(ToUtf16(name)), "network", name);
    }

    Resource& ResourceNamed(const std::string& name) const {
        return Need(m_model.ResourceNamed(ToUtf16(name)), "resource", name);
    }

    // A resource, or null when the name is that of a group.
    Resource* ResourceOrGroup(const std::string& name) const {
        Resource* const resource = m_model.ResourceNamed(ToUtf16(name));
        if (!resource && !m_model.FindGroup(ToUtf16(name))) {
            throw EventError(m_event + ": there is no resource or group " + name);
        }
        return resource;
    }

private:
    Node* ThisNode() const {
        for (Node& node : m_model.nodes) {
            if (node.isThisComputer) {
                return &node;
            }
        }
        return m_model.FindNode(ThisComputer());
    }

    template <typename Object> Object& Need(Object* object, const char* kind, const std::string& name) const {
        if (!object) {
            throw EventError(m_event + ": there is no " + kind + (name.empty() ? "" : " " + name));
        }
        return *object;
    }

    Model& m_model;
    const std::string& m_event;
};

typedef Code (*Action)(Engine& engine, const Objects& objects, const std::string& name, const std::string& node);

struct KnownEvent {
    const char* name;
    int arguments;
    Action action;
};

const KnownEvent KnownEvents[] = {
    {"node-down", 1,
     [](Engine& engine, const Objects& objects, const std::string& name, const std::string&) {
         engine.NodeGoesDown(objects.NodeNamed(name));
         return Done;
     }},
    {"node-up", 1,
     [](Engine& engine, const Objects& objects, const std::string& name, const std::string&) {
         engine.NodeComesUp(objects.NodeNamed(name));
         return Done;
     }},
    {"node-pause", 1,
     [](Engine& engine, const Objects& objects, const std::string& name, const std::string&) {
         return engine.Pause(objects.NodeNamed(name));
     }},
    {"node-resume", 1,
     [](Engine& engine, const Objects& objects, const std::string& name, const std::string&) {
         return engine.Resume(objects.NodeNamed(name));
     }},
    {"move", 2,
     [](Engine& engine, const Objects& objects, const std::string& name, const std::string& node) {
         Group& group = objects.GroupNamed(name);
         return engine.Move(group, &objects.NodeNamed(node));
     }},
    {"fail", 1,
     [](Engine& engine, const Objects& objects, const std::string& name, const std::string&) {
         return engine.Fail(objects.ResourceNamed(name));
     }},
    {"online", 1,
     [](Engine& engine, const Objects& objects, const std::string& name, const std::string&) {
         Resource* const resource = objects.ResourceOrGroup(name);
         return resource ? engine.Online(*resource) : engine.Online(objects.GroupNamed(name));
     }},
    {"offline", 1,
     [](Engine& engine, const Objects& objects, const std::string& name, const std::string&) {
         Resource* const resource = objects.ResourceOrGroup(name);
         return resource ? engine.Offline(*resource) : engine.Offline(objects.GroupNamed(name));
     }},
    {"vanish", 1,
     [](Engine& engine, const Objects& objects, const std::string& name, const std::string&) {
         engine.Vanish(objects.ResourceNamed(name));
         return Done;
     }},
    {"appear", 2,
     [](Engine& engine, const Objects& objects, const std::string& group, const std::string& name) {
         return engine.Appear(objects.GroupNamed(group), ToUtf16(name));
     }},
    {"network-down", 1,
     [](Engine& engine, const Objects& objects, const std::string& name, const std::string&) {
         engine.SetNetwork(objects.NetworkNamed(name), NetworkState::Down);
         return Done;
     }},
    {"network-up", 1,
     [](Engine& engine, const Objects& objects, const std::string& name, const std::string&) {
         engine.SetNetwork(objects.NetworkNamed(name), NetworkState::Up);
         return Done;
     }},
    {"quorum-loss", 0,
     [](Engine& engine, const Objects&, const std::string&, const std::string&) {
         engine.LoseQuorum();
         return Done;
     }},
    {"service-stop", 0,
     [](Engine& engine, const Objects& objects, const std::string&, const std::string&) {
         engine.NodeGoesDown(objects.OwnNode());
         return Done;
     }},
    {"service-start", 0,
     [](Engine& engine, const Objects& objects, const std::string&, const std::string&) {
         engine.NodeComesUp(objects.OwnNode());
         return Done;
     }},
};

// Whole seconds, as milliseconds.
std::uint64_t Milliseconds(const std::string& seconds) {
    std::uint64_t number = 0;
    for (const char digit : seconds) {
        if (digit < '0' || digit > '9' || number > std::numeric_limits<std::uint32_t>::max()) {
            throw EventError("wait: a number of seconds is expected");
        }
        number = number * 10 + static_cast<std::uint64_t>(digit - '0');
    }
    if (seconds.empty() || number > std::numeric_limits<std::uint32_t>::max()) {
        throw EventError("wait: a number of seconds is expected");
    }
    return number * 1000;
}

} // namespace

Code Happen(Service& service, const std::string& event, const std::string& name, const std::string& node) {
    const int given = !node.empty() ? 2 : !name.empty() ? 1 : 0;
    if (event == "wait") {
        if (given != 1) {
            throw EventError("wait: a number of seconds is expected");
        }
        const Code code = service.AdvanceClock(Milliseconds(name));
        service.Current(); // what has fallen due meanwhile
        return code;
    }
    if (event == "handles-stale" || event == "handles-reconnect") { // of this process; the cluster goes on
        if (given != 0) {
            throw EventError(event + ": 0 names are expected");
        }
        service.handles.Expire(event == "handles-stale");
        return Done;
    }
    for (const KnownEvent& known : KnownEvents) {
        if (event != known.name) {
            continue;
        }
        if (given != known.arguments) {
            throw EventError(event + ": " + std::to_string(known.arguments) + " names are expected");
        }
        const Code code = service.Intervene([&](Model& model) {
            Engine engine(model, service.Now());
            return known.action(engine, Objects(model, event), name, node);
        });
        service.Current(); // what follows from it at once
        return code;
    }
    throw EventError("there is no event " + event);
}

void HappenAsWritten(Service& service, const std::string& event) {
    const std::size_t verbEnd = std::min(event.find(' '), event.size());
    const std::string verb = event.substr(0, verbEnd);
    std::string name = event.substr(std::min(verbEnd + 1, event.size()));
    std::string second;
    const auto known = std::find_if(std::begin(KnownEvents), std::end(KnownEvents),
                                    [&verb](const KnownEvent& candidate) { return verb == candidate.name; });
    const std::size_t lastBlank = name.rfind(' ');
    if (known != std::end(KnownEvents) && known->arguments == 2 && lastBlank != std::string::npos) {
        second = name.substr(lastBlank + 1);
        name.erase(lastBlank);
    }
    try {
        Happen(service, verb, name, second);
    } catch (const EventError& error) {
        std::fprintf(stderr, "clussim: event \"%s\": %s\n", event.c_str(), error.what());
    }
}

std::string EventLines(const std::vector<Event>& events) {
    std::string lines;
    for (const Event& event : events) {
        const common::Json json = {{"at", event.at},
                                   {"kind", event.kind},
                                   {"name", ToUtf8(event.name)},
                                   {"what", event.what},
                                   {"why", event.why}};
        lines += common::DumpJsonLine(json) + "\n";
    }
    return lines;
}

} // namespace clussim
