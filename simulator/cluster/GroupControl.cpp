// ClusterGroupControl: the name and the common properties of a group.
#include "Call.h"
#include "ControlAnswer.h"
#include "ExportedApi.h"
#include "FailoverRules.h"

using namespace clussim;

namespace {

enum ControlCode : DWORD {
    ControlGetName = 0x03000029,
    ControlGetReadOnlyCommon = 0x03000055,
    ControlGetCommon = 0x03000059,
    ControlSetCommon = 0x0340005E
};

// What they are before anybody sets them.
PropertySet CommonDefaults(const Model& model) {
    PropertySet properties;
    properties.Set(L"Description", PropertyValue::OfText(L""));
    properties.Set(L"PersistentState", PropertyValue::OfNumber(1));
    properties.Set(L"FailoverThreshold", PropertyValue::OfNumber(model.behaviour.protocol >= 2008 ? Never : 10));
    properties.Set(L"FailoverPeriod", PropertyValue::OfNumber(6));
    properties.Set(L"AutoFailbackType", PropertyValue::OfNumber(0));
    properties.Set(L"FailbackWindowStart", PropertyValue::OfNumber(Never));
    properties.Set(L"FailbackWindowEnd", PropertyValue::OfNumber(Never));
    properties.Set(L"LoadBalState", PropertyValue::OfNumber(1));
    PropertyValue classes;
    classes.kind = PropertyValue::MultiSz;
    properties.Set(L"AntiAffinityClassNames", classes);
    return properties;
}

Code Read(const Model& model, const Group& group, DWORD code, Bytes& bytes) {
    PropertySet properties;
    switch (code) {
    case ControlGetName:
        bytes = TextBytes(group.name);
        return ERROR_SUCCESS;
    case ControlGetReadOnlyCommon:
        properties.Set(L"Name", PropertyValue::OfText(group.name));
        break;
    case ControlGetCommon: {
        const auto unread = group.unread.find("common");
        if (unread != group.unread.end()) {
            return unread->second;
        }
        properties = CommonDefaults(model);
        for (const PropertySet::Item& item : group.common.Items()) {
            properties.Set(item.name, item.value);
        }
        break;
    }
    default:
        return ERROR_INVALID_FUNCTION;
    }
    bytes = PropertyList(properties);
    return ERROR_SUCCESS;
}

Code Set(Model& model, Group& group, const PropertySet& properties) {
    const PropertySet defaults = CommonDefaults(model);
    for (const PropertySet::Item& item : properties.Items()) {
        const PropertyValue* const known = defaults.Find(item.name);
        const bool isFlag = item.key == L"AUTOFAILBACKTYPE" || item.key == L"PERSISTENTSTATE";
        if (!known || known->kind != item.value.kind || (isFlag && item.value.number > 1)) {
            return ERROR_INVALID_PARAMETER;
        }
    }
    for (const PropertySet::Item& item : properties.Items()) {
        model.isChanged = group.common.Set(item.name, item.value) || model.isChanged;
    }
    return ERROR_SUCCESS;
}

} // namespace

DWORD WINAPI ClusterGroupControl(HGROUP handle, HNODE node, DWORD code, LPVOID in, DWORD cbIn, LPVOID out, DWORD cbOut,
                                 LPDWORD cbReturned) {
    Call call("ClusterGroupControl", {Arg("group", handle), Arg("node", node), Arg("code", code),
                                      JournalValue::Of("in", in, cbIn), Arg("cbOut", cbOut)});
    const ControlAnswer answer(call, out, cbOut, cbReturned);
    if (const Fault* fault = call.HitHandle(handle, ControlText(code).c_str())) {
        return answer.Fail(fault->code);
    }
    Service& service = call.service();
    const HandleEntry* const entry = service.handles.Find(handle, HandleKind::Group);
    if (!entry || (node && !service.handles.Find(node, HandleKind::Node))) {
        return answer.Fail(ERROR_INVALID_HANDLE);
    }
    const std::wstring name = entry->object;
    if (code == ControlSetCommon) {
        PropertySet properties;
        const Code parsed = in ? ParsePropertyList(in, cbIn, properties) : static_cast<Code>(RPC_X_BAD_STUB_DATA);
        return answer.Fail(parsed != ERROR_SUCCESS ? parsed : service.Change([&](Model& model) {
            Group* const group = model.FindGroup(name);
            return group ? Set(model, *group, properties) : static_cast<Code>(ERROR_GROUP_NOT_AVAILABLE);
        }));
    }
    const Model* const model = service.Running();
    if (!model) {
        return answer.Fail(service.LostCode());
    }
    const Group* const group = model->FindGroup(name);
    Bytes bytes;
    const Code read = group ? Read(*model, *group, code, bytes) : static_cast<Code>(ERROR_GROUP_NOT_AVAILABLE);
    return read != ERROR_SUCCESS ? answer.Fail(read) : answer.Give(bytes);
}
