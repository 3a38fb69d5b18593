#include "CopyRun.h"

#include "Failure.h"
#include "ModelInUse.h"
#include "RehearsedRun.h"
#include "Text.h"

#include "common/Files.h"

#include <sstream>

namespace {

const wchar_t ModelName[] = L"model.json";

[[noreturn]] void FailToCopy(const common::FileError& error) {
    throw Failure::OfCode("cannot write the private copy " + Quoted(error.Path()), error.Code());
}

std::string ReadTold(const common::TemporaryFolder& folder, const wchar_t* name, const ProgramResult& result) {
    try {
        return common::ReadWholeFile(folder.File(name));
    } catch (const common::FileError& error) {
        throw Failure("the rehearsed command ended with exit code " + std::to_string(result.exitCode) +
                      " and did not tell what it did: " + ErrorText(error.Code()))
            .Hint(Printable(result.errors));
    }
}

} // namespace

CopyRun::CopyRun(const std::string& model, const Words& command, const FaultTexts& faults,
                 const std::wstring& rehearsed, bool asJson) {
    try {
        m_folder = std::make_unique<common::TemporaryFolder>(L"clusctl");
        common::WriteWholeFile(m_folder->File(ModelName), model);
    } catch (const common::FileError& error) {
        FailToCopy(error);
    }
    std::string given;
    for (const std::string& fault : faults) {
        given += (given.empty() ? "" : ";") + fault;
    }
    Words words = {L"--model", m_folder->File(ModelName)};
    if (asJson) {
        words.emplace_back(L"--json");
    }
    words.insert(words.end(), command.begin(), command.end());
    m_program = std::make_unique<ChildProgram>(OwnPath(), words,
                                               Variables{{RehearsalVariable, m_folder->Path()},
                                                         {RehearsedVariable, rehearsed},
                                                         {RehearsedBundleVariable, BundleInUse()},
                                                         {L"CLUSSIM_JOURNAL", L""},
                                                         {L"CLUSSIM_FAULTS", common::ToUtf16(given)}},
                                               m_folder->Path(), GivenPassword());
}

CopyResult CopyRun::Finish() const {
    CopyResult result;
    const ProgramResult program = m_program->Finish();
    result.command = {program, ReadClusterCalls(ReadTold(*m_folder, L"calls", program)),
                      ReadFaultCounts(ReadTold(*m_folder, L"matched", program))};
    std::istringstream events(ReadTold(*m_folder, L"events", program));
    for (std::string line; std::getline(events, line);) {
        result.events.push_back(common::ParseJson(line));
    }
    result.model = ReadTold(*m_folder, ModelName, program);
    return result;
}
