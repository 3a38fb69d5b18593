#include "ModelFile.h"

#include "ModelJson.h"

#include "common/Files.h"
#include "common/Text.h"

#include <cstdio>
#include <cstring>

namespace clussim {

using common::ToUtf16;
using common::ToUtf8;

std::wstring ThisComputer() {
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1] = L"";
    DWORD cch = MAX_COMPUTERNAME_LENGTH + 1;
    GetComputerNameW(name, &cch);
    return name;
}

bool ModelFile::Stamp::operator==(const Stamp& other) const {
    return indexHigh == other.indexHigh && indexLow == other.indexLow && size == other.size &&
           std::memcmp(&written, &other.written, sizeof(written)) == 0;
}

void ModelFile::SetPath(const std::wstring& path) {
    m_path = path;
    m_lock = common::FileLock(path);
    m_told.clear();
    Forget();
}

void ModelFile::Forget() {
    m_model.reset();
    m_stamp = Stamp();
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
    // Where there is no turn, the file is whole all the same.
    const common::FileLock::Turn turn(m_lock);
    const char* attempt = "opened";
    try {
        const common::Handle file = common::OpenForReading(m_path);
        const Stamp stamp = StampOf(file);
        if (m_model && stamp == m_stamp) {
            return m_model.get();
        }
        Forget();
        attempt = "read";
        m_model = clussim::ReadModel(common::ReadToEnd(file, m_path), ThisComputer());
        m_stamp = stamp;
        m_told.clear();
    } catch (const common::FileError& error) {
        Forget();
        Tell(std::string("cannot be ") + attempt + ", error " + std::to_string(error.Code()));
    } catch (const ModelError& error) {
        Tell(error.what());
    }
    return m_model.get();
}

ModelFile::Stamp ModelFile::StampOf(const common::Handle& file) const {
    BY_HANDLE_FILE_INFORMATION information = {};
    if (!GetFileInformationByHandle(file.get(), &information)) {
        throw common::FileError(m_path, "opened", GetLastError());
    }
    Stamp stamp;
    stamp.indexHigh = information.nFileIndexHigh;
    stamp.indexLow = information.nFileIndexLow;
    stamp.written = information.ftLastWriteTime;
    stamp.size = information.nFileSizeLow;
    return stamp;
}

Code ModelFile::Write() {
    try {
        common::WriteWholeFile(m_path, WriteModel(*m_model));
        return ERROR_SUCCESS;
    } catch (const common::FileError& error) {
        return error.Code();
    }
}

} // namespace clussim
