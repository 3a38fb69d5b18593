// The engine of a simulated VCS cluster: what it does with resources, groups and systems when something is asked for or
// goes wrong. Works on a model and a state; time is the state's clock, and equal requests give equal results.
#ifndef VCSSIM_VCSENGINE_H
#define VCSSIM_VCSENGINE_H

#include "EngineState.h"

#include <string>
#include <vector>

namespace vcssim {

// "STARTING|PARTIAL": the state of a group of which so many resources count, and so many of these are online.
std::string GroupStateText(std::size_t online, std::size_t counted, bool starts, bool stops, bool faulted);

class Engine {
public:
    // Both are kept and have to outlive the engine.
    Engine(const EngineModel& model, EngineState& state) : m_model(model), m_state(state) {
    }

    // Lets the time pass up to `clock`, at least to now.
    void AdvanceTo(Seconds clock);

    // Requests: the answer is empty, or says why nothing was done. What takes no time is done when they return.
    std::string Online(std::size_t group, std::size_t system);
    std::string Offline(std::size_t group, std::size_t system);
    std::string Switch(std::size_t group, std::size_t to); // NoPlace: the system is chosen
    std::string Clear(std::size_t group, std::size_t resource, std::size_t system);
    std::string Fault(std::size_t group, std::size_t resource, std::size_t system);
    std::string Recover(std::size_t group, std::size_t resource, std::size_t system); // of a persistent resource
    std::string SystemDown(std::size_t system);
    std::string SystemExit(std::size_t system, bool evacuate);
    std::string SystemUp(std::size_t system);
    void FreezeGroup(std::size_t group, bool frozen);
    std::string FreezeSystem(std::size_t system, bool frozen, bool evacuate);

    // Those of single resources, which are done without further questions.
    void BringOnline(std::size_t group, const std::vector<std::size_t>& resources, std::size_t system);
    void TakeOffline(std::size_t group, std::size_t resource, std::size_t system);

    // Groups that are on systems that are down have lost them: for states that were set from outside.
    void NoticeLosses();

    // What stands against it: empty when nothing does.
    std::string WhyNotOnline(std::size_t group, std::size_t system) const;
    std::string WhyNotOffline(std::size_t group, std::size_t system) const;

    // "PARTIAL|FAULTED", as hagrp shows it.
    std::string GroupStateOn(std::size_t group, std::size_t system) const;
    // Whether anything of the group is online there, or on its way.
    bool IsActive(std::size_t group, std::size_t system) const;
    // Whether groups that depend on it may count on it there.
    bool IsUp(std::size_t group, std::size_t system) const;

private:
    enum class Placement {
        Asked, // by an administrator
        Chosen // by the engine
    };

    struct Parent {
        std::size_t group;
        GroupDependency dependency;
    };

    // Transitions.cpp
    void Settle();
    bool BeginReady();
    bool FinishDue();
    Seconds NextDue() const;
    bool IsReady(std::size_t group, std::size_t resource, std::size_t system);
    bool MayGoOffline(std::size_t group, std::size_t resource, std::size_t system) const;
    void Begin(std::size_t group, std::size_t resource, std::size_t system);
    void Finish(std::size_t group, std::size_t resource, std::size_t system);
    void FinishOnline(std::size_t group, std::size_t resource, std::size_t system);
    void FinishOffline(std::size_t group, std::size_t resource, std::size_t system);
    void ToldStill(std::size_t group, std::size_t system);
    void AskOffline(std::size_t group, std::size_t resource, std::size_t system);
    bool IsStill(std::size_t group, std::size_t system) const;
    bool MarkOnline(std::size_t group, std::size_t resource, std::size_t system, std::vector<bool>& seen,
                    std::vector<std::size_t>& marked) const;

    // Faults.cpp
    void ResourceFaulted(std::size_t group, std::size_t resource, std::size_t system, const std::string& why);
    void Propagate(std::size_t group, std::size_t resource, std::size_t system);
    void GroupFaulted(std::size_t group, std::size_t system, std::size_t resource);
    void Lose(std::size_t system);
    void AutoStartOn(std::size_t system);

    // Moves.cpp
    bool ContinueMoves();
    bool Continue(std::size_t move);
    bool Follow(std::size_t move);
    bool Place(std::size_t move);
    void Stopped(std::size_t move);
    bool LeaveEmptySystems();
    void Start(std::size_t group, std::size_t system, const std::string& reason);
    bool Retry(const Move& move);
    void Stop(const Move& move, const std::string& reason);
    Move* MoveFrom(std::size_t group, std::size_t system);
    bool IsMoving(std::size_t group) const;
    void Forget(std::size_t move);

    // Placement.cpp
    std::string WhyNotPlaced(std::size_t group, std::size_t system, std::size_t from, Placement placement) const;
    std::size_t Choose(std::size_t group, std::size_t from, bool excludesFrom) const;
    std::size_t Preferred(std::size_t group, const std::vector<GroupPlace>& places) const;
    std::string WhyNowhere(std::size_t group, std::size_t from) const;
    bool HasRoom(std::size_t group, std::size_t system) const;
    const GroupPlace* PlaceOf(std::size_t group, std::size_t system) const;
    std::string FaultedOn(std::size_t group, std::size_t system) const;
    std::size_t CountGroups(std::size_t system) const;
    int AvailableCapacity(std::size_t system) const;

    // GroupDependencies.cpp
    std::vector<Parent> ParentsOf(std::size_t group) const;
    bool Satisfies(const GroupDependency& dependency, std::size_t system) const;
    std::string Unmet(std::size_t group, std::size_t system) const;
    std::string WhyInTheWay(std::size_t group, std::size_t system) const;
    std::string WhyNotSwitched(std::size_t group, std::size_t from, std::size_t to) const;
    bool MayStillBeMet(std::size_t group) const;
    void StopHardRelatives(std::size_t group, std::size_t system);
    void StopParents(std::size_t group, std::size_t system);
    void DisplaceParents(std::size_t group, std::size_t system);
    bool WaitsForParents(std::size_t group, std::size_t system) const;

    ResourceStatus& Status(std::size_t group, std::size_t resource, std::size_t system) {
        return m_state.resources[group][resource][system];
    }
    const ResourceStatus& Status(std::size_t group, std::size_t resource, std::size_t system) const {
        return m_state.resources[group][resource][system];
    }
    const std::string& SystemName(std::size_t system) const {
        return m_model.systems[system].name;
    }
    const std::string& GroupName(std::size_t group) const {
        return m_model.groups[group].name;
    }
    void Note(const std::string& event, const std::string& reason = "");
    void NoteResource(std::size_t group, std::size_t resource, std::size_t system, const char* what,
                      const std::string& reason = "");

    const EngineModel& m_model;
    EngineState& m_state;
};

} // namespace vcssim

#endif
