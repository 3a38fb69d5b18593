// Faults on demand: "call@object#n=code"; docs/faults.md.
#ifndef CLUSSIM_FAULTS_H
#define CLUSSIM_FAULTS_H

#include "Model.h"

#include "common/FaultGrammar.h"

#include <optional>
#include <string>
#include <vector>

namespace clussim {

struct Fault {
    common::Fault written;
    std::wstring object; // folded; empty: whatever the object is
    Code code = 0;
    bool forcesState = false; // "state:130": the call succeeds and gives this state
    int state = 0;
    bool isTimed = false;     // "time@5": its event happens by itself, when the time has come
    std::int64_t afterMs = 0; // how long after it was given
    std::int64_t dueAt = 0;   // in clock milliseconds
    bool isOfModel = false;   // given by the model, and gone with it
};

// Throws common::FaultError.
Fault ParseFault(const std::string& text);

class Faults {
public:
    void Add(const Fault& fault);
    void Clear();
    void ClearModelFaults();

    // Counts the call, and gives the fault that hits it, or null. `objects` are the names it goes by: resource name,
    // control code.
    const Fault* Hit(const char* call, const std::vector<std::wstring>& objects);

    // When the next event is due that a time brings about; INT64_MAX when there is none.
    std::int64_t NextDue() const;
    // The event of the first that is due, which is gone then.
    std::optional<std::string> TakeDue(std::int64_t now);

    // How many calls each fault has matched so far, one a line; without those that the model gives.
    std::string Counts() const;

    bool Empty() const {
        return m_faults.empty();
    }

private:
    std::vector<Fault> m_faults;
};

} // namespace clussim

#endif
