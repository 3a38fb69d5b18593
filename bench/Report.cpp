#include "Report.h"

#include "ProcessClock.h"
#include "ThreadClock.h"

#include "common/Text.h"

#include <winsock2.h>
#include <windows.h>

#include <cstdio>

namespace bench {

namespace {

using common::Json;

std::string Today() {
    SYSTEMTIME now;
    GetSystemTime(&now);
    char text[32];
    std::snprintf(text, sizeof(text), "%04u-%02u-%02u", now.wYear, now.wMonth, now.wDay);
    return text;
}

std::string Processor() {
    wchar_t name[256] = L"";
    DWORD cb = sizeof(name) - sizeof(name[0]);
    RegGetValueW(HKEY_LOCAL_MACHINE, L"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0", L"ProcessorNameString",
                 RRF_RT_REG_SZ, nullptr, name, &cb);
    return common::ToUtf8(name);
}

std::string System() {
    typedef const char*(__cdecl * WineVersion)();
    const auto wine = reinterpret_cast<WineVersion>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version")));
    return wine ? std::string("Wine ") + wine() : "Windows";
}

unsigned Processors() {
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    return static_cast<unsigned>(info.dwNumberOfProcessors);
}

// As many digits as say something.
std::string Number(double value) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.*f", value < 1 ? 3 : value < 10 ? 2 : value < 1000 ? 1 : 0, value);
    return text;
}

} // namespace

Report::Report(bool isQuiet) : m_isQuiet(isQuiet), m_subjects(Json::array()) {
}

void Report::Begin(const std::string& subject, const std::string& explanation, const std::string& things) {
    m_subjects.push_back(
        {{"subject", subject}, {"explanation", explanation}, {"things", things}, {"figures", Json::array()}});
    if (!m_isQuiet) {
        std::printf("\n%s\n%s\n", subject.c_str(), explanation.c_str());
    }
}

void Report::Add(const Figure& figure) {
    Json& subject = m_subjects.back();
    Json json = {{"size", figure.size}, {"measure", figure.measure}, {"value", figure.value}, {"unit", figure.unit}};
    if (figure.goal != 0) {
        json["goal"] = figure.goal;
    }
    subject["figures"].push_back(json);
    if (m_isQuiet) {
        return;
    }
    if (figure.size != 0) {
        std::printf("%9u %-9s ", static_cast<unsigned>(figure.size),
                    subject["things"].get_ref<const std::string&>().c_str());
    } else {
        std::printf("%20s", "");
    }
    std::printf(" %-44s %10s %s", figure.measure.c_str(), Number(figure.value).c_str(), figure.unit.c_str());
    if (figure.goal != 0) {
        std::printf(" (goal: %s)", Number(figure.goal).c_str());
    }
    std::printf("\n");
    std::fflush(stdout);
}

Json Report::Document() const {
    return {{"version", CLUSUTIL_BENCH_VERSION},
            {"date", Today()},
            {"machine",
             {{"processor", Processor()},
              {"processors", Processors()},
              {"system", System()},
              {"clock", ThreadClockName()},
              {"processClock", ProcessClockName()}}},
            {"subjects", m_subjects}};
}

} // namespace bench
