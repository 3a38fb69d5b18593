// Reads texts as models of the cluster simulator. What can be read is written so that it reads the same again, also
// after the operations that the cluster API offers.
#include "FuzzInput.h"

#include "ModelJson.h"

namespace {

using clussim::Model;
using clussim::Resource;

const wchar_t ThisComputer[] = L"NODE-A";
const std::size_t MostResources = 8; // large models are not more interesting
const std::int64_t LongAfter = INT64_MAX / 2;

void CheckReadAgain(const Model& model) {
    const std::string written = clussim::WriteModel(model);
    FUZZ_CHECK(clussim::WriteModel(*clussim::ReadModel(written, ThisComputer)) == written);
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
        model.Online(resource, 0);
        CheckReadAgain(model);
        model.Settle(LongAfter);
        for (const std::wstring& other : names) {
            if (model.AddDependency(resource, *model.ResourceNamed(other)) == 0) {
                FUZZ_CHECK(Model::DependsOn(resource, *model.ResourceNamed(other)));
            }
        }
        model.Offline(resource, LongAfter);
        model.Settle(INT64_MAX);
    }
    CheckReadAgain(model);
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
