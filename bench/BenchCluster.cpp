#include "BenchCluster.h"

#include "ClusSimControl.h"

#include <cstdio>
#include <stdexcept>
#include <string>

namespace bench {

namespace {

const wchar_t ProductKey[] = L"SOFTWARE\\Plinthcore\\Zyntra Gate\\CurrentVersion";

// Collects the resources of the model; each name is unique by its group's number.
class ModelText {
public:
    void Add(const std::string& name, std::size_t group, const char* type, const std::string& dependencies,
             const std::string& privateProperties, const std::string& more = "") {
        char id[40];
        std::snprintf(id, sizeof(id), "7d7c2a3e-0000-4000-8000-%012u", ++m_lastId);
        m_text += m_text.empty() ? "" : ",\n";
        m_text += R"({"name": ")" + Named(name, group) + R"(", "type": ")" + type + R"(", "id": ")" + id +
                  R"(", "group": ")" + Named("Group", group) + R"(", "state": "Online", "dependsOn": [)" +
                  dependencies + R"(], "private": {)" + privateProperties + "}" + more + "}";
    }
    static std::string Named(const std::string& name, std::size_t group) {
        return name + " " + std::to_string(group);
    }
    static std::string Quoted(const std::string& name, std::size_t group) {
        return "\"" + Named(name, group) + "\"";
    }
    const std::string& Text() const {
        return m_text;
    }

private:
    std::string m_text;
    unsigned m_lastId = 0;
};

// An Exchange virtual server with the product's resource.
void AddGroup(ModelText& model, std::size_t group) {
    const std::string number = std::to_string(group);
    const std::string address = "10." + std::to_string(group / 65536) + "." + std::to_string(group / 256 % 256) + "." +
                                std::to_string(group % 256);
    model.Add("Exchange IP Address", group, "IP Address", "", R"("Address": ")" + address + "\"");
    model.Add("Exchange Network Name", group, "Network Name", ModelText::Quoted("Exchange IP Address", group),
              R"("Name": "EXVS)" + number + "\"");
    model.Add("Disk", group, "Physical Disk", "", "",
              R"(, "disk": {"signature": 1, "number": 1, "partitions": [{"device": "F:"}]})");
    model.Add("Exchange System Attendant", group, "Microsoft Exchange System Attendant",
              ModelText::Quoted("Exchange Network Name", group) + ", " + ModelText::Quoted("Disk", group), "");
    const std::string attendant = ModelText::Quoted("Exchange System Attendant", group);
    model.Add("Exchange Information Store", group, "Microsoft Exchange Information Store", attendant, "");
    model.Add("Exchange SMTP Server", group, "Microsoft Exchange SMTP Server Instance", attendant,
              R"("ProtocolInstanceId": 1)");
    model.Add("Exchange Routing Service", group, "Generic Service", attendant, "");
    model.Add("Exchange Message Transfer", group, "Generic Service", attendant, "");
    model.Add("Exchange Full Text Search", group, "Generic Service", attendant, "");
    model.Add("Product", group, "clusRDLL",
              ModelText::Quoted("Exchange Network Name", group) + ", " + ModelText::Quoted("Disk", group),
              R"("KOVA_DATA_PATH": "E:\\data\\EXVS)" + number + "\"");
}

} // namespace

std::string ClusterText(std::size_t resources, OtherNode other) {
    const bool isDown = other == OtherNode::Down;
    std::string groups;
    ModelText model;
    for (std::size_t group = 0; group < resources / ResourcesPerGroup; ++group) {
        // "." is this computer.
        groups += std::string(group ? ",\n" : "") + R"({"name": ")" + ModelText::Named("Group", group) +
                  R"(", "owner": ")" + (group % 2 == 0 ? "." : "OTHERNODE") + "\"}";
        AddGroup(model, group);
    }
    return std::string(R"({"cluster": {"name": "BENCHCLUSTER", "coreGroup": "none")") +
           (isDown ? R"(, "behaviour": {"downOwners": "accepted"})" : "") + R"(}, "nodes": [{"name": "."},
{"name": "OTHERNODE")" +
           (isDown ? R"(, "state": "down")" : "") + "}],\n\"groups\": [" + groups + "],\n\"resources\": [" +
           model.Text() + "]}\n";
}

void LoadCluster(std::size_t resources) {
    const std::string json = ClusterText(resources);
    char error[512] = "";
    if (!ClusSimLoadModel(json.c_str(), error, sizeof(error))) {
        throw std::runtime_error(std::string("the simulator refuses the model: ") + error);
    }
}

ClusteredRegistry::ClusteredRegistry() : m_key(nullptr), m_hadValue(false), m_oldValue(0) {
    if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, ProductKey, 0, nullptr, 0, KEY_READ | KEY_WRITE, nullptr, &m_key,
                        nullptr) != ERROR_SUCCESS) {
        throw std::runtime_error("cannot open the product's registry key");
    }
    DWORD cb = sizeof(m_oldValue);
    DWORD type = 0;
    m_hadValue = RegQueryValueExW(m_key, L"IsCluster", nullptr, &type, reinterpret_cast<BYTE*>(&m_oldValue), &cb) ==
                     ERROR_SUCCESS &&
                 type == REG_DWORD;
    const DWORD clustered = 1;
    RegSetValueExW(m_key, L"IsCluster", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&clustered), sizeof(clustered));
}

ClusteredRegistry::~ClusteredRegistry() {
    if (m_hadValue) {
        RegSetValueExW(m_key, L"IsCluster", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&m_oldValue),
                       sizeof(m_oldValue));
    } else {
        RegDeleteValueW(m_key, L"IsCluster");
    }
    RegCloseKey(m_key);
}

} // namespace bench
