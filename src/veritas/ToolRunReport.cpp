#include "veritas/ToolRunReport.h"

#include "clus_VeritasCluster.h"

#include "core/ToolOutput.h"
#include "core/ToolSecrets.h"
#include "platform/CriticalSection.h"
#include "platform/Owner.h"

#include <atomic>

namespace {

// Held while the callback runs, so that it is not running any more once it is replaced.
clus::CriticalSection CallbackLock;
std::atomic<VeritasToolRunCallback> Callback(nullptr);
void* CallbackContext = nullptr;

// What may be shown of a secret run's output: a message of VCS, or that there was something.
std::wstring SecretOutput(const std::wstring& output, const std::wstring& secret) {
    if (clus::IsErrorText(output.c_str())) {
        return clus::WithoutSecrets(output, secret);
    }
    return output.empty() ? output : clus::SecretMask;
}

} // namespace

void SetVeritasToolRunCallback(VeritasToolRunCallback callback, void* context) {
    const clus::CriticalSectionGuard guard(CallbackLock);
    CallbackContext = context;
    Callback = callback;
}

namespace clus::veritas {

bool IsToolRunReported() {
    return Callback.load(std::memory_order_relaxed) != nullptr;
}

void ReportToolRun(const wchar_t* command, const wchar_t* arguments, bool isSecret, const ToolProcess& process,
                   const std::wstring* output) {
    const LastErrorKeeper keeper;
    std::wstring commandLine = std::wstring(command) + L" ";
    std::wstring secret;
    if (isSecret) {
        secret = arguments;
        commandLine += SecretMask;
    } else {
        commandLine += arguments;
        secret = TakeSecret(commandLine);
    }
    std::wstring shown;
    if (output) {
        shown = isSecret ? SecretOutput(*output, secret) : WithoutSecrets(*output, secret);
    }
    CVeritasToolRun run = {};
    run.commandLine = commandLine.c_str();
    run.started = process.started;
    run.startError = process.startError;
    run.exitCodeKnown = process.exitCodeKnown;
    run.exitCode = process.exitCode;
    run.captureError = process.captureError;
    run.output = output ? shown.c_str() : nullptr;
    const CriticalSectionGuard guard(CallbackLock);
    if (const VeritasToolRunCallback callback = Callback) {
        callback(run, CallbackContext);
    }
}

} // namespace clus::veritas
