// Running a VCS tool that prints a list of names.
#ifndef CLUS_VERITAS_TOOLRUN_H
#define CLUS_VERITAS_TOOLRUN_H

#include "core/NameColumn.h"

namespace clus::veritas {

// Runs a tool as CVeritasCluster::ExecuteVeritasCommand_ does, with all details in the log. Its lines are given to
// `names` as they are read; the text is kept for a registered callback only. False when it was not run or not read.
bool RunForNames(const wchar_t* command, const wchar_t* arguments, NameColumn& names);

} // namespace clus::veritas

#endif
