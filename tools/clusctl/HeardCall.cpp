#include "HeardCall.h"

#include "ClusterApi.h"
#include "PropertyJson.h"

#include "common/Text.h"
#include "core/ValueList.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace {

struct ControlOfPart {
    RecordedKind kind;
    DWORD control;
    AskedPart asked;
};

Json ReadText(const recording::Bytes& bytes) {
    return NameIn(bytes);
}

Json ReadProperties(const recording::Bytes& bytes) {
    return PropertiesJson(bytes);
}

Json ReadDisk(const recording::Bytes& bytes) {
    return DiskJson(bytes);
}

Json ReadFlags(const recording::Bytes& bytes) {
    return !bytes.empty() && (bytes.front() & 1) != 0; // CLUS_FLAG_CORE
}

const ControlOfPart Controls[] = {
    {RecordedKind::Resource, CLUSCTL_RESOURCE_GET_RESOURCE_TYPE, {"type", &ReadText}},
    {RecordedKind::Resource, CLUSCTL_RESOURCE_GET_ID, {"id", &ReadText}},
    {RecordedKind::Resource, CLUSCTL_RESOURCE_GET_COMMON_PROPERTIES, {"common", &ReadProperties}},
    {RecordedKind::Resource, CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES, {"private", &ReadProperties}},
    {RecordedKind::Resource, CLUSCTL_RESOURCE_GET_CLASS_INFO, {"class", &ClassIn}},
    {RecordedKind::Resource, CLUSCTL_RESOURCE_STORAGE_GET_DISK_INFO, {"disk", &ReadDisk}},
    {RecordedKind::Resource, CLUSCTL_RESOURCE_GET_FLAGS, {"flags", &ReadFlags}},
    {RecordedKind::Group, CLUSCTL_GROUP_GET_COMMON_PROPERTIES, {"common", &ReadProperties}}};

} // namespace

HeardCall::HeardCall(const recording::RecordedCall& call)
    : name(call.name), in(common::ParseJson(call.in)), out(common::ParseJson(call.out)), result(call.result),
      lastError(call.lastError.value_or(0)) {
}

std::string TextIn(const Json& object, const char* name) {
    const auto member = object.find(name);
    if (member == object.end()) {
        return std::string();
    }
    const Json& text = member->is_array() && !member->empty() ? (*member)[0] : *member;
    return text.is_string() ? text.get<std::string>() : std::string();
}

std::uint64_t NumberIn(const Json& object, const char* name) {
    const auto member = object.find(name);
    return member != object.end() && member->is_number_unsigned() ? member->get<std::uint64_t>() : 0;
}

recording::Bytes BytesIn(const Json& object, const char* name) {
    recording::Bytes bytes;
    recording::FromHex(TextIn(object, name), bytes);
    return bytes;
}

Json ClassIn(const recording::Bytes& bytes) {
    DWORD numbers[2] = {}; // class, subclass
    std::memcpy(numbers, bytes.data(), std::min(bytes.size(), sizeof(numbers)));
    return Json::array({numbers[0], numbers[1]});
}

bool AsksName(std::uint32_t control) {
    return control == CLUSCTL_RESOURCE_GET_NAME || control == CLUSCTL_GROUP_GET_NAME ||
           control == CLUSCTL_NODE_GET_NAME || control == CLUSCTL_NETWORK_GET_NAME ||
           control == CLUSCTL_NETINTERFACE_GET_NAME;
}

std::string NameIn(const recording::Bytes& bytes) {
    return common::ToUtf8(clus::TextInBuffer(bytes.data(), bytes.size(), 0));
}

const AskedPart* PartAsked(RecordedKind kind, std::uint32_t control) {
    const auto* const known = std::find_if(std::begin(Controls), std::end(Controls), [&](const ControlOfPart& part) {
        return part.kind == kind && part.control == control;
    });
    return known == std::end(Controls) ? nullptr : &known->asked;
}
