// The functions of the cluster API: what they take, and what they give.
#ifndef RECORDING_CALLTABLE_H
#define RECORDING_CALLTABLE_H

#include "Interception.h"

namespace recording {

// Where the entries of all functions end up.
Slot Intercept(const Call& call, const Slot* slots, Invocation invoke);

// All that are known, made once.
std::vector<Call>& CallTable();

// Null when there is none of this name.
Call* FindCall(const std::string& name);

// How many arguments of the function one of the table stands for.
std::size_t SlotsOf(Kind kind);

} // namespace recording

#endif
