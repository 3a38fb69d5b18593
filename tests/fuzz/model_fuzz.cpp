// Reads texts as models of the cluster simulator. What can be read is written so that it reads the same again, also
// after the operations that the cluster API offers.
#include "FuzzInput.h"

#include "Engine.h"
#include "ModelJson.h"

namespace {

using clussim::Engine;
using clussim::Model;
using clussim::Node;
using clussim::Resource;

const wchar_t ThisComputer[] = L"NODE-A";
const std::size_t MostResources = 8;          // large models are not more interesting
const std::int64_t LongAfter = INT64_MAX / 4; // milliseconds

void CheckReadAgain(const Model& model) {
    const std::string written = clussim::WriteModel(model);
    FUZZ_CHECK(clussim::WriteModel(*clussim::ReadModel(written, ThisComputer)) == written);
}

// A group is always on one node, and nothing of it is online on one that is down.
void LoseNodes(Model& model) {
    for (Node& node : model.nodes) {
        if (node.status == Node::Status::Down) { // and may own groups all the same, where the model says so
            continue;
        }
        Engine(model, LongAfter).Pause(node);
        Engine(model, LongAfter).NodeGoesDown(node);
        for (const clussim::Group& group : model.groups) {
            FUZZ_CHECK(group.owner != &node || group.resourcesIn.count(clussim::StateOnline) == 0 ||
                       group.resourcesIn.at(clussim::StateOnline) == 0);
        }
        CheckReadAgain(model);
        Engine(model, LongAfter).NodeComesUp(node);
        Engine(model, INT64_MAX / 2).Settle();
        CheckReadAgain(model);
    }
}

void Operate(Model& model) {
    std::vector<std::wstring> names;
    for (const Resource& resource : model.resources) {
        names.push_back(resource.name);
        if (names.size() == MostResources) {
            break;
        }
    }
    for (const std::wstring& name : names) {
        Resource& resource = *model.ResourceNamed(name);
        Engine(model, 1).Online(resource);
        CheckReadAgain(model);
        Engine(model, LongAfter).Settle();
        for (const std::wstring& other : names) {
            if (model.AddDependency(resource, *model.ResourceNamed(other)) == 0) {
                FUZZ_CHECK(Model::DependsOn(resource, *model.ResourceNamed(other)));
            }
        }
        Engine(model, LongAfter).Fail(resource);
        CheckReadAgain(model);
        Engine(model, LongAfter).Offline(resource);
        Engine(model, INT64_MAX / 2).Settle();
    }
    CheckReadAgain(model);
    LoseNodes(model);
    for (const std::wstring& name : names) {
        if (model.Delete(*model.ResourceNamed(name)) == 0) {
            FUZZ_CHECK(model.ResourceNamed(name) == nullptr || model.ResourceNamed(name)->name != name);
        }
    }
    CheckReadAgain(model);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::unique_ptr<Model> model;
    try {
        model = clussim::ReadModel(AsText(data, size), ThisComputer);
    } catch (const clussim::ModelError& error) {
        FUZZ_CHECK(error.what()[0] != '\0');
        return 0;
    }
    CheckReadAgain(*model);
    Operate(*model);
    return 0;
}
