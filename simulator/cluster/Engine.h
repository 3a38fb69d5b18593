// What the cluster does in the course of time: resources come online and go offline, failures are acted on, groups
// move, nodes are lost and come back.
#ifndef CLUSSIM_ENGINE_H
#define CLUSSIM_ENGINE_H

#include "Model.h"

namespace clussim {

// At one time of the model's clock, in milliseconds. Answers are codes of the cluster API.
class Engine {
public:
    Engine(Model& model, std::int64_t now) : m_model(model), m_now(now) {
    }

    // On request. 997 while something still goes on.
    Code Online(Resource& resource);
    Code Offline(Resource& resource);
    Code Fail(Resource& resource, const std::string& why = ""); // as if its monitor had found it so
    Code Online(Group& group);
    Code Offline(Group& group);
    Code Move(Group& group, Node* destination); // null: the next node that may host it
    Code Pause(Node& node);
    Code Resume(Node& node);

    // What befalls it.
    void NodeGoesDown(Node& node);
    void NodeComesUp(Node& node);
    void LoseQuorum();
    void SetNetwork(Network& network, NetworkState state); // addresses on one that is not up fail
    void Vanish(Resource& resource); // deleted by somebody else, whatever its state is and whoever depends on it
    Code Appear(Group& group, const std::wstring& resourceName); // created by somebody else: an offline Generic Service

    // Does what has fallen due until now, each at its own time.
    void Settle();

    // Has to be called for a resource or a group that was read with a time at which something falls due.
    void Expect(Resource& resource);
    void Expect(Group& group);

private:
    // Transitions (EngineTransitions.cpp).
    Code Refusal(const Resource& resource, std::string& why) const;
    Code BringOnline(Resource& resource);
    Code TakeOffline(Resource& resource);
    void SetPending(Resource& resource, State state, bool neverEnds, std::int64_t dueAt);
    void Complete(Resource& resource);
    void SetState(Resource& resource, State state, const std::string& why = "");
    void DoNext();

    // Failures and moves (EngineFailover.cpp).
    void HasFailed(Resource& resource, const std::string& why);
    void ActOn(Resource& failed);
    bool StopWithout(const Resource& failed);
    bool Restart(Resource& failed, std::size_t restarts, std::uint32_t threshold);
    void ActOnFailuresOf(Group& group);
    bool FailOver(Group& group, const Resource& failed);
    void BeginMove(Group& group, Node& destination, const std::string& why);
    void ContinueMove(Group& group);
    void Arrive(Group& group, Node& node);
    void BringBack(Group& group);
    void Terminate(Resource& resource, const std::string& why);
    void TerminateAll(Group& group, const std::string& why);

    // Nodes (EngineNodes.cpp).
    void PlanFailback(Group& group);
    void FailBack(Group& group);
    void StopCluster(const std::string& why);
    void StartCluster();
    void Join(Node& node, const char* how);
    void ServeHere(Node& node);

    static std::string Seconds(std::int64_t milliseconds);
    void Tell(const char* kind, const std::wstring& name, const std::string& what, const std::string& why = "");

    Model& m_model;
    std::int64_t m_now;
};

} // namespace clussim

#endif
