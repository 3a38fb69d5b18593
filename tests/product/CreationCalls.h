// Each cluster call of a creation on ExchangeServer(), in order, with what its failure means. More calls than these are
// a regression: every one is a round trip to the node that owns the cluster's database.
#ifndef CREATIONCALLS_H
#define CREATIONCALLS_H

#include "ProductServer.h"

namespace harness {

// The message with which a creation that fails takes back what it created.
const char RollBackLine[] = "I Deleting unsuccessfully created resource.";

// The arguments of one creation.
struct Creation {
    const wchar_t* dataRoot;
    const wchar_t* name;
    const wchar_t* dataPath;
    const wchar_t* server;
    const wchar_t* disk;
    int mode;

    bool Run() const {
        return CVirtualServerUtil::CreateKOVAResource(dataRoot, name, dataPath, server, disk, mode);
    }
};

// The three ways that succeed on ExchangeServer().
const Creation WithAttendantsDisk = {nullptr, L"KOVA", L"F:\\Kova", L"EVS1", L"", 1};
const Creation WithNamedDisk = {nullptr, L"KOVA", L"F:\\Kova", L"EVS1", L"EVS1 Disk", 1};
const Creation WithReplication = {L"D:\\Data", L"KOVA", nullptr, L"EVS1", nullptr, 2};
const Creation EveryWay[] = {WithAttendantsDisk, WithNamedDisk, WithReplication};

// What follows from a call that fails once.
enum class OnFailure {
    Refuse,  // the creation ends with its step's message
    Survive, // it succeeds all the same
    Retry    // it succeeds, after a wait
};

struct CreationCall {
    std::string text;
    OnFailure onFailure;
    std::string message; // of its step, the last one before the roll-back; empty: the step has none of its own
};

typedef std::vector<CreationCall> CreationSteps;

inline CreationSteps operator+(CreationSteps left, const CreationSteps& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

// A step whose calls all refuse with one message, apart from those that close something.
inline CreationSteps Step(const std::string& message, const Texts& calls) {
    CreationSteps steps;
    for (const std::string& call : calls) {
        const bool closes = call.find("Close") != std::string::npos;
        steps.push_back({call, closes ? OnFailure::Survive : OnFailure::Refuse, message});
    }
    return steps;
}

inline CreationSteps Survivable(const Texts& calls) {
    CreationSteps steps;
    for (const std::string& call : calls) {
        steps.push_back({call, OnFailure::Survive, ""});
    }
    return steps;
}

// Lists the group by a type that `wanted` has, or none. A resource whose type cannot be read counts as another type,
// which matters for the wanted one alone.
inline CreationSteps ListGroup(const std::string& message, const std::string& wanted = "",
                               const std::string& noneFound = "") {
    CreationSteps steps =
        Step(message, {"ClusterGroupOpenEnum(EVS1,1)", "ClusterGroupEnum(0,8)=234", "ClusterGroupEnum(0,10)",
                       "ClusterGroupEnum(1,10)", "ClusterGroupEnum(2,10)", "ClusterGroupEnum(3,10)=234",
                       "ClusterGroupEnum(3,11)", "ClusterGroupEnum(4,11)=259", "ClusterGroupCloseEnum()"});
    for (const char* name : {"EVS1 Name", "EVS1 Disk", "EVS1 SA", "EVS1 Store"}) {
        const std::string resource = name;
        const bool matters = resource == wanted;
        steps = steps + Step(message, {"OpenClusterResource(" + resource + ")"}) +
                CreationSteps{{"ClusterResourceControl(" + resource + ",GET_RESOURCE_TYPE,128)",
                               matters ? OnFailure::Refuse : OnFailure::Survive, noneFound}} +
                Survivable({"CloseClusterResource(" + resource + ")"});
    }
    return steps;
}

inline CreationSteps AddOwner(const std::string& node) {
    return Step("E Error Opening node:" + node, {"OpenClusterNode(" + node + ")"}) +
           CreationSteps{{"AddClusterResourceNode(KOVA," + node + ")=5010", OnFailure::Retry, ""}} +
           Survivable({"CloseClusterNode(" + node + ")"});
}

// Up to the disk: the same in every way.
inline CreationSteps FindEverything() {
    return Step("E Cannot open cluster", {"OpenCluster()"}) +
           Step("E cannot Find network name",
                {"ClusterOpenEnum(4)", "ClusterEnum(0,256)", "ClusterEnum(1,256)", "ClusterEnum(2,256)",
                 "ClusterEnum(3,256)", "ClusterEnum(4,256)=259", "ClusterCloseEnum()", "OpenClusterResource(EVS1 Name)",
                 "ClusterResourceControl(EVS1 Name,GET_RESOURCE_TYPE,128)",
                 "ClusterResourceControl(EVS1 Name,GET_NETWORK_NAME,128)", "CloseClusterResource(EVS1 Name)"}) +
           Step("E Cannot open network name resource:EVS1 Name", {"OpenClusterResource(EVS1 Name)"}) +
           Step("E The virtual sever is offline, cannot create resource",
                {"GetComputerNameW()", "GetClusterResourceState(EVS1 Name)=2"}) +
           Step("E Cannot open group:EVS1", {"OpenClusterGroup(EVS1)"}) +
           ListGroup("E Cannot enum KOVA SCC resources for group:EVS1") +
           ListGroup("E Cannot enum KOVA CCR attendant resources for group:EVS1") +
           ListGroup("E Cannot enum System attendant resources for group:EVS1", "EVS1 SA",
                     "E No system attendant resource found in group:EVS1, cannot create KOVA resource") +
           Step("E Cannot open system attendant resource:EVS1 SA, abort", {"OpenClusterResource(EVS1 SA)"}) +
           ListGroup("E Cannot enum store resources for group:EVS1", "EVS1 Store",
                     "E No store resource found in group:EVS1, cannot create KOVA resource") +
           Step("E Cannot open store resource:EVS1 Store, abort", {"OpenClusterResource(EVS1 Store)"});
}

inline CreationSteps StepsOf(const Creation& way) {
    const bool replicates = way.mode == 2;
    const bool namesDisk = !replicates && way.disk[0] != L'\0';
    const std::string disk = namesDisk ? "EVS1 Disk" : "class 1 of EVS1 SA";
    CreationSteps steps = FindEverything();
    if (namesDisk) {
        steps = steps + Step("", {"OpenClusterResource(EVS1 Disk)"});
    } else if (!replicates) {
        steps = steps + Step("E Cannot open cluster disk, abort",
                             {"GetClusterFromResource(EVS1 SA)",
                              "ResUtilGetResourceDependencyByClass(EVS1 SA,class 1,direct)", "CloseCluster()"});
    }
    if (!replicates) {
        steps = steps + Step("E Shared disk is not online on current node, abort",
                             {"GetComputerNameW()", "GetClusterResourceState(" + disk + ")=2"});
    }
    steps = steps + Step("E Cannot create KOVA resource, abort", {std::string("CreateClusterResource(EVS1,KOVA,") +
                                                                  (replicates ? "clusRDLLCCR" : "clusRDLL") + ",0)"});
    if (!replicates) {
        steps = steps + Step("E Cannot add disk dependency,abort", {"AddClusterResourceDependency(KOVA," + disk + ")"});
    }
    steps =
        steps + Step("E Cannot add store dependency,abort", {"AddClusterResourceDependency(KOVA,EVS1 Store)"}) +
        Step("E Cannot add network name dependency,abort", {"AddClusterResourceDependency(KOVA,EVS1 Name)"}) +
        Step("E Cannot enum nodes in the cluster,abort",
             {"ClusterResourceOpenEnum(EVS1 SA,4)", "ClusterResourceEnum(0,256)", "ClusterResourceEnum(1,256)",
              "ClusterResourceEnum(2,256)=259", "ClusterResourceCloseEnum()"}) +
        AddOwner("NODE-B") + AddOwner("NODE-A") +
        Step(std::string("E Cannot set private property KOVA_DATA_PATH to ") +
                 (replicates ? "D:\\Data\\CCRVSDB\\EVS1" : "F:\\Kova"),
             {std::string("ClusterResourceControl(KOVA,SET_PRIVATE_PROPERTIES,") + (replicates ? "100" : "72") + ")"}) +
        Survivable({"ClusterResourceControl(KOVA,SET_COMMON_PROPERTIES,56)"});
    if (!replicates) {
        steps = steps + Survivable({"CloseClusterResource(" + disk + ")"});
    }
    return steps +
           Survivable({"CloseClusterResource(EVS1 Store)", "CloseClusterResource(EVS1 SA)", "CloseClusterGroup(EVS1)",
                       "CloseClusterResource(EVS1 Name)", "CloseClusterResource(KOVA)", "CloseCluster()"});
}

inline Texts CreationCalls(const Creation& way) {
    Texts calls;
    for (const CreationCall& call : StepsOf(way)) {
        calls.push_back(call.text);
    }
    return calls;
}

} // namespace harness

#endif
