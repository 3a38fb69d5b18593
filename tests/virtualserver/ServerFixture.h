// What the tests of CVirtualServerUtil share: product settings, and a cluster with virtual servers in it.
#ifndef SERVERFIXTURE_H
#define SERVERFIXTURE_H

#include "ClusterTest.h"

#include "platform/ClusterApi.h"
#include "clus_VirtualServerUtil.h"

#include <string>

namespace harness {

typedef CVirtualServerUtil Util;
typedef CClusterVirtualServerInfo Info;

const char SmtpType[] = "Microsoft Exchange SMTP Server Instance";
const char StoreType[] = "Microsoft Exchange Information Store";
const wchar_t ProductKey[] = L"SOFTWARE\\Plinthcore\\Zyntra Gate\\CurrentVersion";

// A virtual server with its product resource "<name> Product".
inline ModelBuilder& AddServer(ModelBuilder& model, const std::string& name, const std::string& owner,
                               const std::string& address, const std::string& type = "clusRDLL") {
    return model.Group(name, owner)
        .IpAddress(name + " IP", address)
        .NetworkName(name + " Name", name)
        .DependsOn(name + " IP")
        .Resource(name + " Product", type)
        .DependsOn(name + " Name")
        .Private("KOVA_DATA_PATH", "F:\\" + name);
}

// Two nodes; one virtual server, online here.
inline ModelBuilder OneServer(const std::string& type = "clusRDLL") {
    ModelBuilder model = GivenCluster("EXCLUS").Node("NODE-A").Node("NODE-B");
    AddServer(model, "EVS1", "NODE-A", "192.0.2.1", type);
    return model;
}

// Two nodes; one virtual server online here, one offline here, one on the other node.
inline ModelBuilder ThreeServers() {
    ModelBuilder model = GivenCluster("EXCLUS").Node("NODE-A").Node("NODE-B");
    AddServer(model, "EVS1", "NODE-A", "192.0.2.1");
    AddServer(model, "EVS2", "NODE-A", "192.0.2.2").State("Offline");
    AddServer(model, "EVS3", "NODE-B", "192.0.2.3");
    return model;
}

class ServerTest : public ClusterTest {
protected:
    void Clustered() {
        Registry().SetNumber(ProductKey, L"IsCluster", 1);
    }
    void PlainServer() {
        Registry().SetNumber(ProductKey, L"IsCluster", 0);
        Registry().SetText(ProductKey, L"HomeDir", L"C:\\Product");
        Registry().SetText(ProductKey, L"ServerIP", L"192.0.2.10");
        Registry().SetText(ProductKey, L"SERVERGUID", L"11111111-2222-3333-4444-555555555555");
    }
    void ClusterOf(const ModelBuilder& model) {
        Load(model);
        Clustered();
        Forget();
    }

    // The cluster calls since the journal was taken last; registry and Winsock calls are left out.
    std::vector<std::string> TakeClusterCalls() {
        std::vector<std::string> calls;
        for (const std::string& line : Platform().Journal()) {
            if (line.compare(0, 3, "Reg") != 0 && line.compare(0, 3, "WSA") != 0) {
                calls.push_back(line);
            }
        }
        TakeJournal();
        return calls;
    }

    // Information, warnings and errors since the log was taken last.
    std::vector<std::string> TakeMessages() {
        std::vector<std::string> messages;
        for (const LogLine& line : Log().Entries()) {
            const std::string text = line.Compact();
            if (text[0] != '>' && text[0] != '<') {
                messages.push_back(text);
            }
        }
        TakeLog();
        return messages;
    }
};

} // namespace harness

#endif
