// ClusterResourceControl: names, class, properties and disk information of a resource.
#include "Call.h"
#include "ControlAnswer.h"
#include "ExportedApi.h"
#include "FailoverRules.h"

#include "common/Text.h"

#include <cstring>

using namespace clussim;
using common::Folded;

namespace {

enum ControlCode : DWORD {
    ControlGetCharacteristics = 0x01000005,
    ControlGetFlags = 0x01000009,
    ControlGetClassInfo = 0x0100000D,
    ControlGetRequiredDependencies = 0x01000011,
    ControlGetName = 0x01000029,
    ControlGetType = 0x0100002D,
    ControlGetId = 0x01000039,
    ControlEnumCommon = 0x01000051,
    ControlGetReadOnlyCommon = 0x01000055,
    ControlGetCommon = 0x01000059,
    ControlSetCommon = 0x0140005E,
    ControlValidateCommon = 0x01000061,
    ControlEnumPrivate = 0x01000079,
    ControlGetReadOnlyPrivate = 0x0100007D,
    ControlGetPrivate = 0x01000081,
    ControlSetPrivate = 0x01400086,
    ControlValidatePrivate = 0x01000089,
    ControlGetNetworkName = 0x01000169,
    ControlGetDiskInfo = 0x01000191
};

PropertySet MakeCommonDefaults(int protocol) {
    PropertySet properties;
    properties.Set(L"Description", PropertyValue::OfText(L""));
    properties.Set(L"DebugPrefix", PropertyValue::OfText(L""));
    properties.Set(L"SeparateMonitor", PropertyValue::OfNumber(0));
    properties.Set(L"PersistentState", PropertyValue::OfNumber(0));
    properties.Set(L"LooksAlivePollInterval", PropertyValue::OfNumber(0xFFFFFFFF));
    properties.Set(L"IsAlivePollInterval", PropertyValue::OfNumber(0xFFFFFFFF));
    properties.Set(L"RestartAction", PropertyValue::OfNumber(2));
    properties.Set(L"RestartThreshold", PropertyValue::OfNumber(3));
    properties.Set(L"RestartPeriod", PropertyValue::OfNumber(900000));
    properties.Set(L"RetryPeriodOnFailure", PropertyValue::OfNumber(protocol >= 2008 ? 3600000 : 0xFFFFFFFF));
    properties.Set(L"PendingTimeout", PropertyValue::OfNumber(180000));
    if (protocol >= 2008) {
        properties.Set(L"DeadlockTimeout", PropertyValue::OfNumber(300000));
    }
    return properties;
}

// The common properties and what they are before anybody sets them.
const PropertySet& CommonDefaults(int protocol) {
    static const PropertySet of2003 = MakeCommonDefaults(2003);
    static const PropertySet of2008 = MakeCommonDefaults(2008);
    return protocol >= 2008 ? of2008 : of2003;
}

PropertySet CommonOf(const Resource& resource, int protocol) {
    PropertySet properties = CommonDefaults(protocol);
    for (const PropertySet::Item& item : resource.common.Items()) {
        properties.Set(item.name, item.value);
    }
    properties.Set(L"PersistentState", PropertyValue::OfNumber(resource.isWanted ? 1 : 0));
    return properties;
}

bool IsAllowedCommon(const PropertySet::Item& item, int protocol) {
    const PropertyValue* known = CommonDefaults(protocol).Find(item.name);
    if (!known || known->kind != item.value.kind) {
        return false;
    }
    return (item.key != L"RESTARTACTION" || item.value.number <= 2) &&
           (item.key != L"PERSISTENTSTATE" || item.value.number <= 1);
}

bool IsNetworkName(const Resource& resource) {
    return Folded(resource.type->name) == L"NETWORK NAME";
}

// What a snapshot could not read here, the simulator does not give either.
Code CodeOfUnread(const Resource& resource, DWORD code) {
    static const struct {
        DWORD code;
        const char* part;
    } parts[] = {{ControlEnumCommon, "common"},  {ControlEnumPrivate, "private"},
                 {ControlGetClassInfo, "class"}, {ControlGetType, "type"},
                 {ControlGetId, "id"},           {ControlGetCommon, "common"},
                 {ControlGetPrivate, "private"}, {ControlGetNetworkName, "private"},
                 {ControlGetDiskInfo, "disk"},   {ControlGetFlags, "flags"}};
    for (const auto& known : parts) {
        const auto unread = known.code == code ? resource.unread.find(known.part) : resource.unread.end();
        if (unread != resource.unread.end()) {
            return unread->second;
        }
    }
    return ERROR_SUCCESS;
}

// A disk may hold the quorum.
DWORD CharacteristicsOf(const Resource& resource) {
    return resource.type->classCode == 1 || resource.isQuorum ? CLUS_CHAR_QUORUM : CLUS_CHAR_UNKNOWN;
}

DWORD FlagsOf(const Resource& resource) {
    return resource.isCore || resource.isQuorum ? CLUS_FLAG_CORE : 0;
}

Bytes NumberBytes(DWORD number) {
    Bytes bytes(sizeof(number));
    std::memcpy(bytes.data(), &number, sizeof(number));
    return bytes;
}

// Since 2008 a probe of these without a buffer succeeds.
bool ProbeSucceeds(DWORD code) {
    return code == ControlGetClassInfo || code == ControlGetFlags || code == ControlGetCharacteristics;
}

// The bytes a reading control gives.
Code Read(const Model& model, const Resource& resource, DWORD code, Bytes& bytes) {
    const int protocol = model.behaviour.protocol;
    const Code unread = resource.unread.empty() ? static_cast<Code>(ERROR_SUCCESS) : CodeOfUnread(resource, code);
    if (unread != ERROR_SUCCESS) {
        return unread;
    }
    switch (code) {
    case ControlGetCharacteristics:
        bytes = NumberBytes(CharacteristicsOf(resource));
        return ERROR_SUCCESS;
    case ControlGetFlags:
        bytes = NumberBytes(FlagsOf(resource));
        return ERROR_SUCCESS;
    case ControlGetRequiredDependencies:
        bytes = RequiredDependencies(RequiredTypes(resource, model));
        return ERROR_SUCCESS;
    case ControlEnumCommon:
        bytes = NameList(CommonOf(resource, protocol));
        return ERROR_SUCCESS;
    case ControlEnumPrivate:
        bytes = NameList(resource.privateProperties);
        return ERROR_SUCCESS;
    case ControlGetReadOnlyPrivate:
        bytes = PropertyList(PropertySet());
        return ERROR_SUCCESS;
    case ControlGetName:
        bytes = TextBytes(resource.name);
        return ERROR_SUCCESS;
    case ControlGetType:
        bytes = TextBytes(resource.type->name);
        return ERROR_SUCCESS;
    case ControlGetId:
        bytes = TextBytes(resource.id);
        return ERROR_SUCCESS;
    case ControlGetClassInfo: {
        bytes.resize(8);
        std::memcpy(&bytes[0], &resource.type->classCode, 4);
        std::memcpy(&bytes[4], &resource.type->subclass, 4);
        return ERROR_SUCCESS;
    }
    case ControlGetNetworkName: {
        const PropertyValue* name = resource.privateProperties.Find(L"Name");
        if (!IsNetworkName(resource) || !name || name->kind != PropertyValue::Sz) {
            return ERROR_INVALID_FUNCTION;
        }
        bytes = TextBytes(name->text);
        return ERROR_SUCCESS;
    }
    case ControlGetDiskInfo:
        if (resource.type->classCode != 1) {
            return ERROR_INVALID_FUNCTION;
        }
        bytes = DiskInformation(resource.disk ? *resource.disk : Disk());
        return ERROR_SUCCESS;
    case ControlGetPrivate:
        bytes = PropertyList(resource.privateProperties);
        return ERROR_SUCCESS;
    case ControlGetCommon:
        bytes = PropertyList(CommonOf(resource, protocol));
        return ERROR_SUCCESS;
    case ControlGetReadOnlyCommon: {
        PropertySet properties;
        properties.Set(L"Name", PropertyValue::OfText(resource.name));
        properties.Set(L"Type", PropertyValue::OfText(resource.type->name));
        properties.Set(L"Characteristics", PropertyValue::OfNumber(CharacteristicsOf(resource)));
        properties.Set(L"Flags", PropertyValue::OfNumber(FlagsOf(resource)));
        bytes = PropertyList(properties);
        return ERROR_SUCCESS;
    }
    default:
        return ERROR_INVALID_FUNCTION;
    }
}

Code Validate(const Model& model, DWORD code, const PropertySet& properties) {
    for (const PropertySet::Item& item : properties.Items()) {
        const bool isCommon = code == ControlSetCommon || code == ControlValidateCommon;
        if (isCommon && !IsAllowedCommon(item, model.behaviour.protocol)) {
            return ERROR_INVALID_PARAMETER;
        }
    }
    return ERROR_SUCCESS;
}

Code Set(Model& model, Resource& resource, DWORD code, const PropertySet& properties) {
    const Code valid = Validate(model, code, properties);
    if (valid != ERROR_SUCCESS) {
        return valid;
    }
    PropertySet& target = code == ControlSetCommon ? resource.common : resource.privateProperties;
    for (const PropertySet::Item& item : properties.Items()) {
        if (code == ControlSetCommon && item.key == L"PERSISTENTSTATE") {
            const bool isWanted = item.value.number == 1;
            model.isChanged = model.isChanged || isWanted != resource.isWanted;
            resource.isWanted = isWanted;
        } else {
            model.isChanged = target.Set(item.name, item.value) || model.isChanged;
        }
    }
    return resource.state == StateOnline ? 5024 : ERROR_SUCCESS; // ERROR_RESOURCE_PROPERTIES_STORED
}

} // namespace

DWORD WINAPI ClusterResourceControl(HRESOURCE handle, HNODE node, DWORD code, LPVOID in, DWORD cbIn, LPVOID out,
                                    DWORD cbOut, LPDWORD cbReturned) {
    Call call("ClusterResourceControl", {Arg("resource", handle), Arg("node", node), Arg("code", code),
                                         JournalValue::Of("in", in, cbIn), Arg("cbOut", cbOut)});
    const ControlAnswer answer(call, out, cbOut, cbReturned);
    if (call.service().HasFaults()) {
        if (const Fault* fault = call.HitHandle(handle, ControlText(code).c_str())) {
            return answer.Fail(fault->code);
        }
    }
    Model* model = call.service().Running();
    Resource* resource = nullptr;
    const Code found = call.ResourceOf(model, handle, resource);
    if (found != ERROR_SUCCESS) {
        return answer.Fail(found);
    }
    if (node && !call.service().handles.Find(node, HandleKind::Node)) {
        return answer.Fail(ERROR_INVALID_HANDLE);
    }
    const bool onlyValidates = code == ControlValidatePrivate || code == ControlValidateCommon;
    if (code == ControlSetPrivate || code == ControlSetCommon || onlyValidates) {
        if (!in) {
            return answer.Fail(RPC_X_BAD_STUB_DATA);
        }
        PropertySet properties;
        const Code parsed = ParsePropertyList(in, cbIn, properties);
        if (parsed != ERROR_SUCCESS || onlyValidates) {
            return answer.Fail(parsed != ERROR_SUCCESS ? parsed : Validate(*model, code, properties));
        }
        return answer.Fail(call.service().Change([&](Model& changed) {
            const Code stillThere = call.ResourceOf(&changed, handle, resource);
            return stillThere != ERROR_SUCCESS ? stillThere : Set(changed, *resource, code, properties);
        }));
    }
    Bytes bytes;
    const int protocol = model->behaviour.protocol;
    const Code read = Read(*model, *resource, code, bytes);
    return read != ERROR_SUCCESS ? answer.Fail(read) : answer.Give(bytes, ProbeSucceeds(code) && protocol >= 2008);
}
