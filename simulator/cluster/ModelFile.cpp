#include "ModelFile.h"

#include "ModelJson.h"

#include "common/Files.h"
#include "common/Text.h"

#include <cstdio>
#include <cstdlib>

namespace clussim {

using common::ToUtf16;
using common::ToUtf8;

namespace {

// In units of a FILETIME. No file system's clock that is finer than seconds takes longer from one time to the next.
const std::int64_t ClockTick = std::int64_t{50} * 10000;

// What becomes of invalid text.
const char ReplacementCharacter[] = "\xEF\xBF\xBD";

std::int64_t ToNumber(const FILETIME& time) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime);
}

std::int64_t Now() {
    FILETIME time;
    GetSystemTimeAsFileTime(&time);
    return ToNumber(time);
}

} // namespace

std::wstring ThisComputer() {
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1] = L"";
    DWORD cch = MAX_COMPUTERNAME_LENGTH + 1;
    GetComputerNameW(name, &cch);
    return name;
}

void ModelFile::SetPath(const std::wstring& path) {
    m_path = path;
    m_lock = common::FileLock(path);
    m_told.clear();
    Forget();
}

void ModelFile::Forget() {
    m_text.reset();
    m_model.reset();
    m_stamp.reset();
}

void ModelFile::Tell(const std::string& message) {
    if (message == m_told) {
        return;
    }
    m_told = message;
    const std::string line = "clussim: " + ToUtf8(m_path) + ": " + message + "\n";
    std::fputs(line.c_str(), stderr);
    std::fflush(stderr);
    OutputDebugStringW(ToUtf16(line).c_str());
}

Model* ModelFile::Current() {
    if (m_path.empty()) {
        return nullptr;
    }
    if (!m_stamp || !(StampOfFile() == m_stamp)) {
        Read();
    }
    return m_model.get();
}

std::optional<ModelFile::Stamp> ModelFile::StampOfFile() const {
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!GetFileAttributesExW(m_path.c_str(), GetFileExInfoStandard, &data)) {
        return std::nullopt;
    }
    Stamp stamp;
    stamp.written = ToNumber(data.ftLastWriteTime);
    stamp.size = static_cast<std::uint64_t>(data.nFileSizeHigh) << 32 | data.nFileSizeLow;
    return stamp;
}

void ModelFile::Read() {
    // Where there is no turn, the file is whole all the same.
    const common::FileLock::Turn turn(m_lock);
    const char* attempt = "opened";
    try {
        // Taken first: what is written from now on has a later stamp, unless the file was written in this very tick.
        const std::optional<Stamp> stamp = StampOfFile();
        const bool showsChanges = stamp && std::abs(Now() - stamp->written) > ClockTick;
        const common::Handle file = common::OpenForReading(m_path);
        attempt = "read";
        std::string text = common::ReadToEnd(file, m_path);
        if (text != m_text) {
            Forget();
            m_text = std::move(text);
            m_model = clussim::ReadModel(*m_text, ThisComputer());
            m_told.clear();
        }
        m_stamp = showsChanges ? stamp : std::nullopt;
    } catch (const common::FileError& error) {
        Forget();
        Tell(std::string("cannot be ") + attempt + ", error " + std::to_string(error.Code()));
    } catch (const ModelError& error) {
        Tell(error.what());
    }
}

Code ModelFile::Write() {
    std::string text = WriteModel(*m_model);
    try {
        common::WriteWholeFile(m_path, text);
    } catch (const common::FileError& error) {
        Forget();
        return error.Code();
    }
    m_model->isChanged = false;
    const bool isReadDifferently = text.find(ReplacementCharacter) != std::string::npos; // than it stands in the model
    m_text = std::move(text);
    m_stamp.reset();
    if (isReadDifferently) {
        Forget();
    }
    return ERROR_SUCCESS;
}

} // namespace clussim
