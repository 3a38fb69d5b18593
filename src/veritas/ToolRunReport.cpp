#include "veritas/ToolRunReport.h"

#include "clus_VeritasCluster.h"

#include "core/ToolSecrets.h"
#include "platform/CriticalSection.h"
#include "platform/Owner.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <string_view>

namespace {

// Held while the callback runs, so that it is not running any more once it is replaced.
clus::CriticalSection CallbackLock;
std::atomic<VeritasToolRunCallback> Callback(nullptr);
void* CallbackContext = nullptr;

// The texts of a report.
struct ShownTexts {
    std::wstring commandLine;
    std::wstring output;
};

ShownTexts TextsOf(const wchar_t* command, std::wstring_view commandLine, bool isSecret, const std::wstring* output) {
    const std::size_t arguments = std::min(std::wstring_view(command).size() + 1, commandLine.size());
    const std::size_t begin = isSecret ? arguments : std::min(clus::FindSecret(commandLine), commandLine.size());
    ShownTexts shown;
    shown.commandLine = commandLine.substr(0, begin);
    if (isSecret || begin < commandLine.size()) {
        shown.commandLine += clus::SecretMask;
    }
    if (output) {
        const clus::ToolSecret secret(commandLine.substr(begin));
        shown.output = isSecret ? MessagesWithoutSecrets(*output, secret) : WithoutSecrets(*output, secret);
    }
    return shown;
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

void ReportToolRun(const wchar_t* command, const wchar_t* commandLine, bool isSecret, const ToolProcess& process,
                   const std::wstring* output) {
    const LastErrorKeeper keeper;
    ShownTexts shown;
    bool isShown = false;
    try {
        shown = TextsOf(command, commandLine, isSecret, output);
        isShown = true;
    } catch (const std::bad_alloc&) {
        // A member that has done its work does not fail for want of a report: the run is told without texts.
    }
    CVeritasToolRun run = {};
    run.commandLine = shown.commandLine.c_str();
    run.started = process.started;
    run.startError = process.startError;
    run.exitCodeKnown = process.exitCodeKnown;
    run.exitCode = process.exitCode;
    run.captureError = process.captureError;
    if (isShown && output) {
        run.output = shown.output.c_str();
        run.cchOutput = shown.output.size();
    }
    const CriticalSectionGuard guard(CallbackLock);
    if (const VeritasToolRunCallback callback = Callback) {
        callback(run, CallbackContext);
    }
}

} // namespace clus::veritas
