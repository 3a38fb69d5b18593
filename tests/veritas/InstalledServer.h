// A virtual server on which the product is installed, as the tools show it, and what finding it and its services tells.
#ifndef INSTALLEDSERVER_H
#define INSTALLEDSERVER_H

#include "SetCreation.h"
#include "ToolTables.h"

#include <string>

namespace harness {

// MAIL1 is EVS1, of which Lanman1 is the network name; MAIL9 is nothing.
class InstalledServer {
public:
    explicit InstalledServer(VeritasTest& test) : m_tools(test.tools) {
        test.Registry();
        AcceptChanges(m_tools);
        m_tools.Answer(L"hares -list  Type=Lanman  VirtualName=MAIL1 ", Listed({"Lanman1"}));
        m_tools.Answer(L"hares -display Lanman1 -attribute Group ", Shown("Lanman1", "Group", "EVS1"));
        m_tools.Answer(L"hares -list  Type=Lanman  VirtualName=MAIL9 ", "");
    }

    // It is online on NODE2.
    void Online() {
        m_tools.Answer(L"hagrp -state EVS1 ", States("EVS1", {{"NODE1", "|OFFLINE|"}, {"NODE2", "|ONLINE|"}}));
    }
    // Its resources for this service.
    void Service(const std::string& serviceName, const Texts& resources) {
        m_tools.Answer(L"hares -list  Type=GenericService  ServiceName=" + Utf16(serviceName) + L"  Group=EVS1 ",
                       Listed(resources));
    }

private:
    ToolScript& m_tools;
};

inline Texts FindServer() {
    return {"> CollectEVSInfo", "$ hares -list  Type=Lanman  VirtualName=MAIL1 ",
            "$ hares -display Lanman1 -attribute Group ", "$ hagrp -state EVS1 ", "< CollectEVSInfo"};
}

inline Texts FindService(const std::string& serviceName, const std::string& message = "") {
    Texts told = {"> GetGenericServiceResNameByServiceName",
                  "$ hares -list  Type=GenericService  ServiceName=" + serviceName + "  Group=EVS1 "};
    if (!message.empty()) {
        told.push_back(message);
    }
    told.push_back("< GetGenericServiceResNameByServiceName");
    return told;
}

inline Texts NoService(const std::string& serviceName) {
    return FindService(serviceName, "W No resource found in Group EVS1") +
           Texts{"W call to GetGenericServiceResNameByServiceName failed"};
}

inline std::string Started(const std::string& serviceName) {
    return "I service " + serviceName + " started successfully.";
}

// The attributes of a service that is added to the server.
inline ServiceAttributes WithLanman() {
    ServiceAttributes attributes;
    attributes.lanman = "Lanman1";
    return attributes;
}
inline ServiceAttributes WithAccount(const std::string& password = "\"eNcRyPtEd\"") {
    ServiceAttributes attributes = WithLanman();
    attributes.user = "\"admin\"";
    attributes.password = password;
    attributes.domain = "\"DOMAIN\"";
    return attributes;
}

} // namespace harness

#endif
