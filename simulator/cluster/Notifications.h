// What changes in the cluster, as a notification port tells it. Changes are found by comparing what was seen last with
// what there is: so it does not matter which process made them.
#ifndef CLUSSIM_NOTIFICATIONS_H
#define CLUSSIM_NOTIFICATIONS_H

#include "Model.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace clussim {

// One CLUSTER_CHANGE value each.
struct Notification {
    unsigned long change = 0;
    std::wstring name; // of the object
    std::uintptr_t key = 0;
};

// What a port looks at: all objects, or one.
struct Interest {
    unsigned long filter = 0;
    std::wstring object; // empty: all; a resource by its name of then
    std::uintptr_t key = 0;
};

class NotificationPort {
public:
    // What there is now counts as seen. Null: the cluster does not run.
    explicit NotificationPort(const Model* model) : m_seen(SeenOf(model)) {
    }

    // What has changed before is still for those that were interested then.
    void Add(const Interest& interest, const Model* model) {
        Look(model);
        m_interests.push_back(interest);
    }

    // Compares; what has changed waits to be taken.
    void Look(const Model* model);

    void Announce(unsigned long change, const std::wstring& name);

    // Null when nothing waits.
    const Notification* First() const {
        return m_waiting.empty() ? nullptr : &m_waiting.front();
    }
    void TakeFirst() {
        m_waiting.pop_front();
    }

private:
    enum Kind {
        NodeKind,
        ResourceKind,
        GroupKind,
        NetworkKind
    };

    struct Facts {
        std::wstring name;
        std::string state;      // for a group with its owner
        std::string properties; // whatever else can be set
    };

    struct Seen {
        bool running = false;
        std::map<std::pair<Kind, std::wstring>, Facts> objects; // by what stays the same
    };

    static Seen SeenOf(const Model* model);

    Seen m_seen;
    std::vector<Interest> m_interests;
    std::deque<Notification> m_waiting;
};

} // namespace clussim

#endif
