// What bringing a service's resource online and adding one to an existing installation run and tell.
#ifndef ADDSERVICEFIXTURE_H
#define ADDSERVICEFIXTURE_H

#include "CreationFixture.h"

namespace harness {

inline Texts FindServer(const std::string& state = "EVS1") {
    return {"> CollectEVSInfo", "$ hares -list  Type=Lanman  VirtualName=MAIL1 ",
            "$ hares -display Lanman1 -attribute Group ", "$ hagrp -state " + state + " ", "< CollectEVSInfo"};
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

class AddServiceTest : public SetTest {
protected:
    // MAIL1 is EVS1, online on NODE2.
    AddServiceTest() {
        AcceptChanges();
        tools.Answer(L"hares -list  Type=Lanman  VirtualName=MAIL1 ", Listed({"Lanman1"}));
        tools.Answer(L"hares -display Lanman1 -attribute Group ", Shown("Lanman1", "Group", "EVS1"));
        tools.Answer(L"hares -list  Type=Lanman  VirtualName=MAIL9 ", "");
    }
    void Online() {
        tools.Answer(L"hagrp -state EVS1 ", States("EVS1", {{"NODE1", "|OFFLINE|"}, {"NODE2", "|ONLINE|"}}));
    }
    void Service(const std::string& serviceName, const Texts& resources) {
        tools.Answer(L"hares -list  Type=GenericService  ServiceName=" + Utf16(serviceName) + L"  Group=EVS1 ",
                     Listed(resources));
    }
    static std::string Started(const std::string& serviceName) {
        return "I service " + serviceName + " started successfully.";
    }

    ServiceAttributes WithLanman() const {
        ServiceAttributes attributes;
        attributes.lanman = "Lanman1";
        return attributes;
    }
};

} // namespace harness

#endif
