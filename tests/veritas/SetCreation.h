// What a creation of the product's resource set has to run and to tell, for every choice of its arguments.
#ifndef SETCREATION_H
#define SETCREATION_H

#include "Story.h"

#include "ProductNames.h"

#include <string>

namespace harness {

struct Account {
    const wchar_t* group;
    const wchar_t* user;
    const wchar_t* password;

    bool Complete() const {
        return group && user && password;
    }
};

const Account FullAccount = {L"DOMAIN", L"admin", L"clear"};
const Account NoAccount = {nullptr, nullptr, nullptr};

struct SetChoice {
    bool monitor;
    bool remoteConfig;
    Account account;
    bool online;
};

// One attribute of a resource as it is set.
inline std::string Modify(const std::string& resource, const std::string& attribute, const std::string& value) {
    return "$ hares -modify " + resource + "  " + attribute + " " + value + " ";
}

// The attributes of a service's resource that differ from one to another.
struct ServiceAttributes {
    std::string delayAfterOnline = "600";
    std::string delayAfterOffline = "600";
    std::string user = "LocalSystem";
    std::string password = "\"\"";
    std::string domain = "\"NT Authority\"";
    std::string lanman = "\"\"";
};

inline Texts ServiceResource(const std::string& resource, const std::string& serviceName, const std::string& child,
                             const ServiceAttributes& attributes) {
    return {"$ hares -add " + resource + " GenericService EVS1 ",
            Modify(resource, "DelayAfterOnline", attributes.delayAfterOnline),
            Modify(resource, "DelayAfterOffline", attributes.delayAfterOffline),
            Modify(resource, "UserAccount", attributes.user),
            Modify(resource, "Password", attributes.password),
            Modify(resource, "Domain", attributes.domain),
            Modify(resource, "LanmanResName", attributes.lanman),
            Modify(resource, "UseVirtualName", "1"),
            Modify(resource, "ServiceName", serviceName),
            Modify(resource, "Critical", "0"),
            Modify(resource, "Enabled", "1"),
            "$ hares -link " + resource + " " + child + " "};
}

inline Texts RegRepResource() {
    return {"$ hares -add EVS1-RegRep RegRep EVS1 ",
            Modify("EVS1-RegRep", "MountResName", "EVS1-MountV"),
            Modify("EVS1-RegRep", "ReplicationDirectory", "\\Data\\RegRep"),
            Modify("EVS1-RegRep", "Keys", "\"HKLM\\" + ProductKeyText + "\" \"\""),
            Modify("EVS1-RegRep", "RestoreLocally", "1"),
            Modify("EVS1-RegRep", "Critical", "0"),
            Modify("EVS1-RegRep", "Enabled", "1"),
            "$ hares -link EVS1-RegRep EVS1-MountV "};
}

// What a creation runs and tells in which order, when every tool can be run and the host service runs at once.
inline Texts CreationStory(const SetChoice& choice) {
    ServiceAttributes attributes;
    attributes.delayAfterOnline = "300";
    attributes.delayAfterOffline = "120";
    attributes.lanman = "EVS1-Lanman";
    Texts told = Texts{"> CreateKOVAResources"} + RegRepResource() + Texts{"I Creating EVS1-OXAHostService..."} +
                 ServiceResource("EVS1-OXAHostService", "OXAHostService", "EVS1-IS", attributes) +
                 Texts{"$ hares -link EVS1-OXAHostService EVS1-RegRep ", "I Creating EVS1-OXASAService..."} +
                 ServiceResource("EVS1-OXASAService", "OXASAService", "EVS1-RegRep", attributes);
    if (choice.monitor) {
        told = told + Texts{"I Creating EVS1-QAV_Monitor..."} +
               ServiceResource("EVS1-QAV_Monitor", "QAV_Monitor", "EVS1-RegRep", attributes);
    }
    if (choice.remoteConfig) {
        told.push_back("I Creating EVS1-OXA_RemoteConfig...");
        if (choice.account.Complete()) {
            told.push_back("* vcsencrypt -agent clear");
            attributes.user = "\"admin\"";
            attributes.password = "\"eNcRyPtEd\"";
            attributes.domain = "\"DOMAIN\"";
        } else {
            told.push_back("W szRemoteConfigPassword or szRemoteConfigUsername or szRemoteConfigGroup is NULL");
        }
        told = told + ServiceResource("EVS1-OXA_RemoteConfig", "OXA_RemoteConfig", "EVS1-OXAHostService", attributes);
    }
    if (choice.online) {
        told = told + Texts{"I Turning on EVS1-OXASAService..."} + TurnOn("EVS1-OXASAService", "NODE1") +
               Texts{"I Turning on EVS1-OXAHostService..."} + TurnOn("EVS1-OXAHostService", "NODE1") +
               Texts{"I Waiting for service EVS1-OXAHostService to go online",
                     "I service OXAHostService started successfully."};
        if (choice.monitor) {
            told = told + Texts{"I Turning on EVS1-QAV_Monitor..."} + TurnOn("EVS1-QAV_Monitor", "NODE1");
        }
        if (choice.remoteConfig) {
            told = told + Texts{"I Turning on EVS1-OXA_RemoteConfig..."} + TurnOn("EVS1-OXA_RemoteConfig", "NODE1");
        }
    }
    return told + Texts{"< CreateKOVAResources"};
}

inline std::string Describe(const SetChoice& choice) {
    return std::string(choice.monitor ? "monitor " : "") + (choice.remoteConfig ? "remote configuration " : "") +
           (choice.account.group ? "group " : "") + (choice.account.user ? "user " : "") +
           (choice.account.password ? "password " : "") + (choice.online ? "online" : "offline");
}

// The creation of the set of EVS1: its record, and tools that do what they are told.
class SetCreation {
public:
    explicit SetCreation(VeritasTest& test) : m_cluster(test.cluster) {
        info.sLanmanResName = L"EVS1-Lanman";
        info.sRegRepResName = L"EVS1-RegRep";
        info.sMountResName = L"EVS1-MountV";
        info.sDataPath = L"F:\\Data\\Store";
        info.nDelayAfterOnline = 300;
        info.nDelayAfterOffline = 120;
        info.sOnlineNode = L"NODE1";
        test.Registry();
        AcceptChanges(test.tools);
        test.tools.AnswerPrefix(L"vcsencrypt -agent ", "eNcRyPtEd\r\n");
    }

    bool Create(const SetChoice& choice) {
        info.bGroupOnline = choice.online;
        return m_cluster.CreateKOVAResources(info, choice.monitor, choice.remoteConfig, choice.account.group,
                                             choice.account.user, choice.account.password);
    }
    bool Create(bool monitor = false, bool remoteConfig = false) {
        return Create({monitor, remoteConfig, FullAccount, info.bGroupOnline});
    }

    Server info{L"EVS1-IS", L"EVS1"};

private:
    const CVeritasCluster& m_cluster;
};

} // namespace harness

#endif
