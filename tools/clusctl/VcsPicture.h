// What VCS says of systems, groups and resources, as parts of a picture.
#ifndef CLUSCTL_VCSPICTURE_H
#define CLUSCTL_VCSPICTURE_H

#include "VcsStates.h"

#include "picture/PictureIndex.h"

#include <map>
#include <string>
#include <vector>

const wchar_t EnabledAttribute[] = L"Enabled";

typedef std::map<std::wstring, std::wstring> VcsAttributes; // the first value of each

// The states of systems that have a word of their own, the most frequent first.
std::vector<const wchar_t*> VcsSystemStates();

// Of a system in a state that has none, it is only said that it does not run.
picture::Node VcsSystem(const std::wstring& name, const std::wstring& state);

picture::Group VcsGroup(const std::wstring& name, const SystemStates& states);

// Without what it depends on. `index`: of the picture, which has its groups already.
picture::Resource VcsResource(const std::wstring& name, const VcsAttributes& attributes, const SystemStates& states,
                              const picture::PictureIndex& index);

#endif
