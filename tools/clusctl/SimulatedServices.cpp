#include "SimulatedServices.h"

#include "Failure.h"
#include "Json.h"
#include "Text.h"
#include "ThisComputer.h"

#include "common/Files.h"
#include "common/Text.h"

#include <CfDocument.h>
#include <ClusterFiles.h>

#include <string>
#include <vector>

namespace {

std::wstring g_mainCf;

// The resources that run the service.
std::vector<std::string> ResourcesOf(const vcssim::CfDocument& configuration, const std::string& service) {
    std::vector<std::string> names;
    for (const vcssim::CfGroup& group : configuration.Groups()) {
        for (const vcssim::CfBlock& resource : group.resources) {
            const vcssim::CfAttribute* const attribute = resource.Find("ServiceName", "");
            if (resource.keyword == "GenericService" && attribute != nullptr && attribute->value.text == service) {
                names.push_back(resource.name);
            }
        }
    }
    return names;
}

std::string Read(const std::wstring& path) {
    try {
        return common::ReadWholeFile(path);
    } catch (const common::FileError& error) {
        throw Failure::OfCode("cannot read the private copy " + Quoted(error.Path()), error.Code());
    }
}

std::vector<std::string> ResourcesOf(const std::wstring& service) {
    return ResourcesOf(vcssim::CfDocument(Read(vcssim::ClusterFiles(g_mainCf).Running())), common::ToUtf8(service));
}

} // namespace

namespace SimulatedServices {

void Begin(const std::wstring& mainCf) {
    g_mainCf = mainCf;
}

bool AreInForce() {
    return !g_mainCf.empty();
}

bool IsInstalled(const std::wstring& service) {
    return !ResourcesOf(service).empty();
}

bool IsRunning(const std::wstring& service) {
    const Json state = common::ParseJson(Read(vcssim::ClusterFiles(g_mainCf).State()));
    const Json states = state.value("resources", Json::object());
    for (const std::string& name : ResourcesOf(service)) {
        const Json systems = states.value(name, Json::object());
        if (systems.value(common::ToUtf8(ComputerName()), "") == "ONLINE") {
            return true;
        }
    }
    return false;
}

} // namespace SimulatedServices
