// Whether VCS shows what a resource was given: a tool may print nothing, end as if all were well, and have done
// nothing.
#ifndef CLUSCTL_VCSATTRIBUTES_H
#define CLUSCTL_VCSATTRIBUTES_H

#include "LogCapture.h"
#include "VcsValues.h"

#include <clus_VeritasCluster.h>

#include <string>
#include <vector>

// What these runs gave the attributes of a resource, secrets masked. Of several values of an attribute the last counts.
NameValuePairList GivenAttributes(const std::vector<ToolRun>& runs, const std::wstring& resource);

// Asks VCS once for all attributes: those of which it does not show the value given. Throws Failure when it cannot be
// asked.
VcsNames AttributesNotAsGiven(const LogCapture& log, const std::wstring& resource, const NameValuePairList& given,
                              const std::string& what);

// Throws Failure, too, when there are any, and names them.
void RequireAttributes(const LogCapture& log, const std::wstring& resource, const NameValuePairList& given,
                       const std::string& what);

#endif
