// One tapped import: what the tables of calls (PlatformTapTable.cpp, PlatformTapProcesses.cpp) are made of.
#ifndef HARNESS_TAPPEDCALL_H
#define HARNESS_TAPPEDCALL_H

#include "PlatformTap.h"

#include <initializer_list>
#include <type_traits>

namespace harness {

template <typename R> R FailedResult(FailureForm form, DWORD code) {
    if constexpr (std::is_pointer_v<R>) {
        return form == FailureForm::Invalid ? reinterpret_cast<R>(static_cast<INT_PTR>(-1)) : nullptr;
    } else {
        switch (form) {
        case FailureForm::Code:
        case FailureForm::CloseCode:
            return static_cast<R>(code);
        case FailureForm::MinusOne:
        case FailureForm::Invalid:
        case FailureForm::CloseInvalid:
            return static_cast<R>(-1);
        default:
            return R();
        }
    }
}

template <typename R> std::string ResultSuffix(FailureForm form, R result, DWORD lastError) {
    if (form == FailureForm::Invalid || form == FailureForm::CloseInvalid) {
        return result == FailedResult<R>(FailureForm::Invalid, 0) ? "=" + std::to_string(lastError) : "";
    }
    if constexpr (std::is_pointer_v<R>) {
        return result ? "" : "=" + std::to_string(lastError);
    } else {
        switch (form) {
        case FailureForm::Null:
        case FailureForm::CloseFalse:
            return result ? "" : "=" + std::to_string(lastError);
        case FailureForm::Code:
        case FailureForm::CloseCode:
            return result ? "=" + std::to_string(static_cast<long long>(result)) : "";
        case FailureForm::MinusOne:
        case FailureForm::Answer:
            return "=" + std::to_string(static_cast<long long>(result));
        default:
            return "";
        }
    }
}

template <typename Function, typename Tag> class TappedCall;

template <typename R, typename... A, typename Tag> class TappedCall<R(A...), Tag> : public TappedCallBase {
public:
    struct Description {
        const char* dll;
        const char* name;
        FailureForm form;
        std::function<std::string(A...)> arguments;
        std::function<void(R, A...)> done; // after a call that was passed on, null when there is nothing to do
        std::function<R(A...)> instead;    // in place of the real thing, null for the real thing
    };

    TappedCall(PlatformTap& tap, Description description)
        : m_tap(tap), m_description(std::move(description)),
          m_patch(FindImports(LibraryModule(), m_description.dll, m_description.name),
                  [this](A... args) { return Call(args...); }) {
    }

private:
    R PassOn(A... args) const {
        return m_description.instead ? m_description.instead(args...) : m_patch.Next(args...);
    }

    R Call(A... args) {
        const HarnessScope scope;
        DWORD lastError = GetLastError();
        const FailureForm form = m_description.form;
        const std::string text = std::string(m_description.name) + "(" + m_description.arguments(args...) + ")";
        DWORD code = 0;
        const bool fails = form != FailureForm::Never && m_tap.ShouldFail(m_description.name, text, &code);
        const bool closes =
            form == FailureForm::CloseFalse || form == FailureForm::CloseCode || form == FailureForm::CloseInvalid;
        R result = R();
        if (!fails || closes) {
            SetLastError(lastError);
            result = PassOn(args...);
            lastError = GetLastError();
            if (m_description.done) {
                m_description.done(result, args...);
            }
        }
        if (fails) {
            result = FailedResult<R>(form, code);
            const bool isResult = form == FailureForm::Code || form == FailureForm::CloseCode;
            lastError = isResult ? lastError : code;
        }
        m_tap.Record(text + ResultSuffix(form, result, lastError));
        SetLastError(lastError);
        return result;
    }

    PlatformTap& m_tap;
    Description m_description;
    ImportPatch<R(A...), Tag> m_patch;
};

template <typename Tag, typename Function>
void Add(PlatformTap& tap, typename TappedCall<Function, Tag>::Description description) {
    if (!FindImports(LibraryModule(), description.dll, description.name).empty()) {
        tap.Install(std::make_unique<TappedCall<Function, Tag>>(tap, std::move(description)));
    }
}

inline std::string Joined(std::initializer_list<std::string> parts) {
    std::string result;
    for (const std::string& part : parts) {
        result += (result.empty() ? "" : ",") + part;
    }
    return result;
}

inline std::string Number(DWORD number) {
    return std::to_string(number);
}

inline std::string Count(const DWORD* count) {
    return count ? std::to_string(*count) : "NULL";
}

#define TAP_INSTEAD(dll, function, form, arguments, done, instead)            \
    Add<struct function##_tap, std::remove_pointer_t<decltype(&::function)>>( \
        tap, {dll ".dll", #function, FailureForm::form, arguments, done, instead})
#define TAP(dll, function, form, arguments, done) TAP_INSTEAD(dll, function, form, arguments, done, nullptr)

} // namespace harness

#endif
