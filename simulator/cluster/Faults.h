// Faults on demand: "call@object#n=code"; docs/faults.md.
#ifndef CLUSSIM_FAULTS_H
#define CLUSSIM_FAULTS_H

#include "Model.h"

#include "common/FaultGrammar.h"

#include <string>
#include <vector>

namespace clussim {

struct Fault {
    common::Fault written;
    std::wstring object; // folded; empty: whatever the object is
    Code code = 0;
    bool forcesState = false; // "state:130": the call succeeds and gives this state
    int state = 0;
    bool isOfModel = false; // given by the model, and gone with it
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

    bool Empty() const {
        return m_faults.empty();
    }

private:
    std::vector<Fault> m_faults;
};

} // namespace clussim

#endif
