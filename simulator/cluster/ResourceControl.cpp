// ClusterResourceControl: names, class, properties and disk information of a resource.
#include "Call.h"
#include "ExportedApi.h"
#include "PropertyLists.h"

#include "common/Text.h"

#include <cstdio>
#include <cstring>

using namespace clussim;
using common::Folded;

namespace {

enum ControlCode : DWORD {
    ControlGetClassInfo = 0x0100000D,
    ControlGetName = 0x01000029,
    ControlGetType = 0x0100002D,
    ControlGetId = 0x01000039,
    ControlGetReadOnlyCommon = 0x01000055,
    ControlGetCommon = 0x01000059,
    ControlSetCommon = 0x0140005E,
    ControlGetPrivate = 0x01000081,
    ControlSetPrivate = 0x01400086,
    ControlValidatePrivate = 0x01000089,
    ControlGetNetworkName = 0x01000169,
    ControlGetDiskInfo = 0x01000191
};

PropertyValue DwordValue(std::uint32_t number) {
    PropertyValue value;
    value.kind = PropertyValue::Dword;
    value.number = number;
    return value;
}

PropertyValue TextValue(const std::wstring& text) {
    PropertyValue value;
    value.text = text;
    return value;
}

PropertySet MakeCommonDefaults() {
    PropertySet properties;
    properties.Set(L"Description", TextValue(L""));
    properties.Set(L"DebugPrefix", TextValue(L""));
    properties.Set(L"SeparateMonitor", DwordValue(0));
    properties.Set(L"PersistentState", DwordValue(0));
    properties.Set(L"LooksAlivePollInterval", DwordValue(0xFFFFFFFF));
    properties.Set(L"IsAlivePollInterval", DwordValue(0xFFFFFFFF));
    properties.Set(L"RestartAction", DwordValue(2));
    properties.Set(L"RestartThreshold", DwordValue(3));
    properties.Set(L"RestartPeriod", DwordValue(900000));
    properties.Set(L"RetryPeriodOnFailure", DwordValue(0xFFFFFFFF));
    properties.Set(L"PendingTimeout", DwordValue(180000));
    return properties;
}

// The common properties and what they are before anybody sets them.
const PropertySet& CommonDefaults() {
    static const PropertySet defaults = MakeCommonDefaults();
    return defaults;
}

PropertySet CommonOf(const Resource& resource) {
    PropertySet properties = CommonDefaults();
    for (const PropertySet::Item& item : resource.common.Items()) {
        properties.Set(item.name, item.value);
    }
    properties.Set(L"PersistentState", DwordValue(resource.isWanted ? 1 : 0));
    return properties;
}

bool IsAllowedCommon(const PropertySet::Item& item) {
    const PropertyValue* known = CommonDefaults().Find(item.name);
    if (!known || known->kind != item.value.kind) {
        return false;
    }
    return (item.key != L"RESTARTACTION" || item.value.number <= 2) &&
           (item.key != L"PERSISTENTSTATE" || item.value.number <= 1);
}

bool IsNetworkName(const Resource& resource) {
    return Folded(resource.type->name) == L"NETWORK NAME";
}

// The bytes a reading control gives.
Code Read(const Resource& resource, DWORD code, Bytes& bytes) {
    switch (code) {
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
        bytes = PropertyList(CommonOf(resource));
        return ERROR_SUCCESS;
    case ControlGetReadOnlyCommon: {
        PropertySet properties;
        properties.Set(L"Name", TextValue(resource.name));
        properties.Set(L"Type", TextValue(resource.type->name));
        bytes = PropertyList(properties);
        return ERROR_SUCCESS;
    }
    default:
        return ERROR_INVALID_FUNCTION;
    }
}

Code Set(Model& model, Resource& resource, DWORD code, const PropertySet& properties) {
    for (const PropertySet::Item& item : properties.Items()) {
        if (code == ControlSetCommon && !IsAllowedCommon(item)) {
            return ERROR_INVALID_PARAMETER;
        }
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
    const auto finish = [&](Code result, DWORD cb = 0) {
        if (cbReturned) {
            *cbReturned = cb;
        }
        return call.Return(result);
    };
    if (call.service().HasFaults()) {
        wchar_t codeText[16];
        _snwprintf(codeText, 16, L"0x%08lx", code);
        if (const Fault* fault = call.HitHandle(handle, codeText)) {
            return finish(fault->code);
        }
    }
    Model* model = call.service().Running();
    Resource* resource = nullptr;
    const Code found = call.ResourceOf(model, handle, resource);
    if (found != ERROR_SUCCESS) {
        return finish(found);
    }
    if (node && !call.service().handles.Find(node, HandleKind::Node)) {
        return finish(ERROR_INVALID_HANDLE);
    }
    if (code == ControlSetPrivate || code == ControlSetCommon || code == ControlValidatePrivate) {
        if (!in) {
            return finish(RPC_X_BAD_STUB_DATA);
        }
        PropertySet properties;
        const Code parsed = ParsePropertyList(in, cbIn, properties);
        if (parsed != ERROR_SUCCESS || code == ControlValidatePrivate) {
            return finish(parsed);
        }
        return finish(call.service().Change([&](Model& changed) {
            const Code stillThere = call.ResourceOf(&changed, handle, resource);
            return stillThere != ERROR_SUCCESS ? stillThere : Set(changed, *resource, code, properties);
        }));
    }
    Bytes bytes;
    const Code read = Read(*resource, code, bytes);
    if (read != ERROR_SUCCESS) {
        return finish(read);
    }
    const DWORD cb = static_cast<DWORD>(bytes.size());
    if (!out || cbOut < cb) {
        // Since 2008 a probe without a buffer for the class succeeds.
        const bool probeSucceeds =
            !out && cbOut == 0 && code == ControlGetClassInfo && model->behaviour.protocol >= 2008;
        return finish(probeSucceeds ? static_cast<Code>(ERROR_SUCCESS) : static_cast<Code>(ERROR_MORE_DATA), cb);
    }
    std::memcpy(out, bytes.data(), cb);
    return finish(ERROR_SUCCESS, cb);
}
