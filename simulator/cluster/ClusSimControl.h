// Control interface of the cluster simulator, exported by its clusapi.dll: lets a test drive the simulated cluster
// inside its own process. Programs that only use the cluster need nothing of this; they name a model file in
// CLUSSIM_FILE.
//
// Texts are UTF-8. A function that fills a buffer returns the bytes needed, terminator included; it writes only when
// they fit. Control calls are never journalled and never hit by faults. All calls are thread-safe.
#ifndef CLUSSIMCONTROL_H
#define CLUSSIMCONTROL_H

#include <stddef.h>

#if defined(CLUSSIM_BUILD)
#define CLUSSIM_API __declspec(dllexport)
#else
#define CLUSSIM_API __declspec(dllimport)
#endif

#ifdef __cplusplus
extern "C" {
#endif

// 1. Its presence tells that the simulator was loaded, and not some other clusapi.dll.
CLUSSIM_API unsigned ClusSimVersion(void);

// Replaces the model by a JSON text and holds it in memory: no file is read or written until ClusSimReset. 1 on
// success; 0 when the text is malformed, with the reason and its place in `error`; the old model stays.
CLUSSIM_API int ClusSimLoadModel(const char* json, char* error, size_t cbError);

// The model as JSON, pending transitions brought up to the clock first.
CLUSSIM_API size_t ClusSimReadModel(char* buffer, size_t cb);

// The model's "settings" as JSON; an empty text when it has none, and 0 when there is no model that can be read.
CLUSSIM_API size_t ClusSimReadSettings(char* buffer, size_t cb);

// From now on the file that CLUSSIM_FILE names is this process's alone: once it has been read it is not looked at
// again, and what calls change is kept, until ClusSimWriteKeptFile writes it. 0, or the Win32 code when it cannot be
// written.
CLUSSIM_API void ClusSimKeepFile(void);
CLUSSIM_API unsigned long ClusSimWriteKeptFile(void);

// Forgets the model, faults, journal, counters and the manual clock; the next cluster call reads CLUSSIM_FILE again.
// Handles still open stay valid for closing only.
CLUSSIM_API void ClusSimReset(void);

// Adds a fault, for example "OpenClusterResource@EVS1 Disk#2=5007": call, optional object name, optional occurrence
// ("#2" the second matching call only, "#2+" from the second on, none: every one), code. GetClusterResourceState can be
// made to give a state instead: "GetClusterResourceState=state:130"; "OpenCluster=delay_ms:500" does its work later. 1
// on success, 0 when the text is malformed. Faults of a model go with the model; added ones stay until
// ClusSimClearFaults or ClusSimReset, which clear both.
CLUSSIM_API int ClusSimAddFault(const char* fault);
CLUSSIM_API void ClusSimClearFaults(void);

// Stops the real clock and lets the test advance time, in milliseconds. A model that has a clock of its own ("clock")
// goes by that; advancing it changes the model, in its file, too.
CLUSSIM_API void ClusSimUseManualClock(void);
CLUSSIM_API void ClusSimAdvanceClock(unsigned milliseconds);

// Lets something befall the cluster or be done to it, whether it runs or not: "node-down", "node-up", "node-pause",
// "node-resume" NODE; "move" GROUP NODE; "fail" RESOURCE; "online", "offline" RESOURCE or GROUP; "quorum-loss";
// "service-stop" and "service-start", of this computer's node; "wait" SECONDS. Arguments that an event does not have
// are null. 0, the code of the cluster API (997: it still goes on), or 87 with the reason in `error` for an event that
// there is not, or on an object that there is not.
CLUSSIM_API unsigned long ClusSimHappen(const char* event, const char* name, const char* node, char* error,
                                        size_t cbError);

// What this process sees from now on is what a program on that node would: the node has this computer's name and the
// other way round, and the cluster service runs. The next call begins with the model as it was; one without a name
// leaves it so. For a model held in memory that nothing changes meanwhile. 0 when there is no such node.
CLUSSIM_API int ClusSimSeeFrom(const char* node);

// What happens in the cluster from now on, as far as this process sees it: one JSON object per line with "at"
// (milliseconds since 1601, UTC), "kind" ("cluster", "node", "group" or "resource"), "name", "what" and "why".
CLUSSIM_API void ClusSimRecordEvents(int on);
CLUSSIM_API size_t ClusSimReadEvents(char* buffer, size_t cb);

// How many calls each fault of CLUSSIM_FAULTS and of ClusSimAddFault has matched so far, one number a line.
CLUSSIM_API size_t ClusSimReadFaultCounts(char* buffer, size_t cb);

// The journal: one JSON object per line and call. Recording is on by default for a model loaded with ClusSimLoadModel.
CLUSSIM_API void ClusSimRecordJournal(int on);
CLUSSIM_API size_t ClusSimReadJournal(char* buffer, size_t cb);
CLUSSIM_API void ClusSimClearJournal(void);

// Cluster calls since the last ClusSimClearJournal or ClusSimReset, counted whether recording is on or not; null counts
// all.
CLUSSIM_API size_t ClusSimCallCount(const char* call);

// Handles open now. `kind`: "cluster", "resource", "group", "node", "port", "enum", or null for all.
CLUSSIM_API size_t ClusSimOpenHandles(const char* kind);

// Calls that closed or used a handle that was not open, since the last ClusSimClearJournal or ClusSimReset.
CLUSSIM_API size_t ClusSimBadHandleCalls(void);

#ifdef __cplusplus
}
#endif

#endif
