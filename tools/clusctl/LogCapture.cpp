#include "LogCapture.h"

#include "Text.h"

#include "common/Text.h"

#include <DebugLog.h>
#include <LogConfig.h>
#include <LogLine.h>

#include <cstdlib>

namespace {

typedef decltype(&DebugLogSetSink) SetSinkFunction;

SetSinkFunction FindSetSink() {
    const HMODULE module = GetModuleHandleW(L"DebugLog.dll");
    if (module == nullptr) {
        return nullptr;
    }
    // By way of void*: the two function types have nothing in common.
    return reinterpret_cast<SetSinkFunction>(reinterpret_cast<void*>(GetProcAddress(module, "DebugLogSetSink")));
}

bool IsProblem(unsigned int level, const std::string& text) {
    // Logged as errors wherever all is well: on every cluster with continuous replication, for the node that the
    // cluster itself makes an owner of a new resource, and for a resource that is about to be added.
    if (text.find("try finding CCR resources") != std::string::npos ||
        text.find("AddOwnder fail, code:5010") != std::string::npos ||
        text.find("No resource found in Group") != std::string::npos ||
        text.find("call to GetGenericServiceResNameByServiceName failed") != std::string::npos) {
        return false;
    }
    // A cluster that cannot be opened is told on a leaving line, with the only code there is.
    const bool isFailedOpen = level == DBG::LEVEL_LEAVING && text.find("err=") != std::string::npos;
    return (DebugLogDetail::MaskOfLevel(level) & DebugLogDetail::MaskDefault) != 0 || isFailedOpen;
}

// The library's text, and what the code at its end means.
std::string Explained(const std::string& text) {
    for (const char* mark : {"err=", "err:", "code:", "code: ", "error="}) {
        const size_t at = text.rfind(mark);
        if (at == std::string::npos) {
            continue;
        }
        const char* number = text.c_str() + at + std::string(mark).size();
        char* end = nullptr;
        const unsigned long code = std::strtoul(number, &end, 10);
        if (end != number && code != 0 && (*end == '\0' || *end == ')')) {
            const std::string meaning = ErrorText(code);
            const size_t open = meaning.find('(');
            return open == std::string::npos ? text : text + " " + meaning.substr(open);
        }
    }
    return text;
}

} // namespace

LogCapture::LogCapture(const Stream* verbose, const std::wstring& logFile) : m_verbose(verbose), m_isAvailable(false) {
    if (const SetSinkFunction setSink = FindSetSink()) {
        m_file = std::make_unique<LogFile>(logFile);
        setSink(&LogCapture::Receive, this);
        m_isAvailable = true;
    } else if (!logFile.empty()) {
        // Whether the log library in use heeds it is its own affair.
        SetEnvironmentVariableW(DebugLogDetail::FileVariable, logFile.c_str());
    }
}

LogCapture::~LogCapture() {
    if (const SetSinkFunction setSink = m_isAvailable ? FindSetSink() : nullptr) {
        setSink(nullptr, nullptr);
    }
}

bool LogCapture::IsAvailable() const {
    return m_isAvailable;
}

bool LogCapture::IsShown() const {
    return m_verbose != nullptr;
}

const std::vector<std::string>& LogCapture::Problems() const {
    return m_problems;
}

const ToolRuns& LogCapture::Tools() const {
    return m_tools;
}

void LogCapture::Receive(void* context, unsigned int level, const char* sourceFile, int line, const wchar_t* text) {
    try {
        static_cast<LogCapture*>(context)->Take(level, sourceFile, line, text);
    } catch (...) {
        // Out of memory: the line is lost, the library goes on.
    }
}

void LogCapture::Take(unsigned int level, const char* sourceFile, int sourceLine, const std::wstring& text) {
    const std::string line = Printable(m_secrets.Masked(text));
    m_tools.TakeLine(line);
    m_file->Write(level, sourceFile, sourceLine, line);
    if (m_verbose != nullptr) {
        m_verbose->Write(common::ToUtf8(DebugLogDetail::WordOfLevel(level)) + " " + line + "\n");
    }
    if (IsProblem(level, line)) {
        const std::string problem = Explained(line);
        if (m_known.insert(problem).second) {
            m_problems.push_back(problem);
        }
    }
}
