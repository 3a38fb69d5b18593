// Values of a model's JSON text. What is not as it has to be throws common::JsonError with its place.
#ifndef CLUSSIM_MODELVALUES_H
#define CLUSSIM_MODELVALUES_H

#include "Model.h"

#include "common/Json.h"

#include <initializer_list>

namespace clussim {

[[noreturn]] void Fail(const std::string& place, const std::string& what);

std::wstring WideItem(const common::Json& item, const std::string& place);
std::wstring WideText(common::ObjectReader& reader, const char* member);

// Of what is looked up by it: never empty.
std::wstring Name(common::ObjectReader& reader, const char* member = "name");

std::uint32_t DwordOr(common::ObjectReader& reader, const char* member, std::uint32_t fallback);

// Clock milliseconds, 0 when the member is absent; a list of them.
std::int64_t Time(common::ObjectReader& reader, const char* member);
std::vector<std::int64_t> Times(common::ObjectReader& reader, const char* member);

// `json` may be null.
void ReadProperties(const common::Json* json, const std::string& place, PropertySet& properties);

// The member "unread", which may be absent: codes other than 0 of these parts.
void ReadUnread(common::ObjectReader& reader, std::initializer_list<const char*> parts, Unread& unread);

} // namespace clussim

#endif
