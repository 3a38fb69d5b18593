#include "archive/ZipArchive.h"

#include <unzip.h>
#include <zip.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <set>

namespace archive {

namespace {

const std::size_t LongestName = 64;
const std::size_t PieceBytes = 65536;
const char Signature[] = "PK\x03\x04";
// More than this no compression of archives reaches: files of a larger one share their bytes.
const std::size_t MostRatio = 1032;

// The "file" that the library of archives reads or writes.
struct Memory {
    std::string bytes;
    std::size_t at = 0;
};

Memory& MemoryOf(voidpf opaque) {
    return *static_cast<Memory*>(opaque);
}

voidpf ZCALLBACK Open(voidpf opaque, const void* /*name*/, int /*mode*/) {
    return opaque;
}

uLong ZCALLBACK Read(voidpf opaque, voidpf /*stream*/, void* buffer, uLong size) {
    Memory& memory = MemoryOf(opaque);
    const std::size_t count = std::min<std::size_t>(size, memory.bytes.size() - memory.at);
    std::memcpy(buffer, memory.bytes.data() + memory.at, count);
    memory.at += count;
    return static_cast<uLong>(count);
}

uLong ZCALLBACK Write(voidpf opaque, voidpf /*stream*/, const void* buffer, uLong size) {
    Memory& memory = MemoryOf(opaque);
    if (memory.bytes.size() < memory.at + size) {
        memory.bytes.resize(memory.at + size);
    }
    std::memcpy(&memory.bytes[memory.at], buffer, size);
    memory.at += size;
    return size;
}

ZPOS64_T ZCALLBACK Tell(voidpf opaque, voidpf /*stream*/) {
    return MemoryOf(opaque).at;
}

long ZCALLBACK Seek(voidpf opaque, voidpf /*stream*/, ZPOS64_T offset, int origin) {
    Memory& memory = MemoryOf(opaque);
    const ZPOS64_T base = origin == ZLIB_FILEFUNC_SEEK_SET   ? 0
                          : origin == ZLIB_FILEFUNC_SEEK_CUR ? memory.at
                                                             : memory.bytes.size();
    if (offset > memory.bytes.size() - base) {
        return -1;
    }
    memory.at = static_cast<std::size_t>(base + offset);
    return 0;
}

int ZCALLBACK Close(voidpf /*opaque*/, voidpf /*stream*/) {
    return 0;
}

int ZCALLBACK Error(voidpf /*opaque*/, voidpf /*stream*/) {
    return 0;
}

zlib_filefunc64_def FunctionsOf(Memory& memory) {
    return {Open, Read, Write, Tell, Seek, Close, Error, &memory};
}

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

// Whether the system takes a name for a device, whatever follows a dot.
bool IsDevice(const std::string& name) {
    const std::string stem = Lower(name.substr(0, name.find('.')));
    static const char* const devices[] = {"con", "prn", "aux", "nul"};
    const bool isNumbered = stem.size() == 4 && (stem.compare(0, 3, "com") == 0 || stem.compare(0, 3, "lpt") == 0) &&
                            stem[3] >= '0' && stem[3] <= '9';
    return isNumbered || std::find(std::begin(devices), std::end(devices), stem) != std::end(devices);
}

// Names that were there before, in any letter case.
class NamesSeen {
public:
    void Take(const std::string& name) {
        if (!IsPlainName(name)) {
            throw ArchiveError("the archive has a file whose name is not a plain one");
        }
        if (!m_names.insert(Lower(name)).second) {
            throw ArchiveError("the archive has two files of the name " + name);
        }
        if (m_names.size() > MostFiles) {
            throw ArchiveError("the archive has more than " + std::to_string(MostFiles) + " files");
        }
    }

private:
    std::set<std::string> m_names;
};

void Require(int code, const char* what) {
    if (code != 0) { // ZIP_OK, UNZ_OK
        throw ArchiveError(what);
    }
}

struct ZipCloser {
    void operator()(void* zip) const {
        zipClose(zip, nullptr);
    }
};

struct UnzipCloser {
    void operator()(void* zip) const {
        unzClose(zip);
    }
};

const char NotWritten[] = "the archive cannot be written";
const char Damaged[] = "the archive is damaged";

void Add(void* zip, const File& file) {
    zip_fileinfo info = {};
    info.tmz_date.tm_mday = 1; // always the same day: an archive tells its time in its own files
    info.tmz_date.tm_year = 1980;
    Require(zipOpenNewFileInZip64(zip, file.name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED,
                                  Z_DEFAULT_COMPRESSION, 0),
            NotWritten);
    for (std::size_t at = 0; at < file.bytes.size(); at += PieceBytes) {
        const std::size_t count = std::min(PieceBytes, file.bytes.size() - at);
        Require(zipWriteInFileInZip(zip, file.bytes.data() + at, static_cast<unsigned int>(count)), NotWritten);
    }
    Require(zipCloseFileInZip(zip), NotWritten);
}

std::string TooLarge() {
    return "the files of the archive are larger than " + std::to_string(MostBytes) + " bytes";
}

// What the files of an archive may still hold.
class Room {
public:
    explicit Room(std::size_t archiveBytes) : m_byRatio(archiveBytes * MostRatio) {
    }

    void Require(std::size_t bytes) const {
        if (m_taken + bytes > MostBytes) {
            throw ArchiveError(TooLarge());
        }
        if (m_taken + bytes > m_byRatio) {
            throw ArchiveError("the files of the archive share their bytes");
        }
    }
    void Take(std::size_t bytes) {
        m_taken += bytes;
    }

private:
    std::size_t m_byRatio;
    std::size_t m_taken = 0;
};

// The sizes that the archive states are not relied on: what comes is counted.
std::string ReadCurrent(void* zip, const Room& room) {
    Require(unzOpenCurrentFile(zip), Damaged);
    std::string bytes;
    std::vector<char> piece(PieceBytes);
    for (;;) {
        const int count = unzReadCurrentFile(zip, piece.data(), static_cast<unsigned int>(piece.size()));
        if (count < 0) {
            throw ArchiveError(Damaged);
        }
        if (count == 0) {
            break;
        }
        bytes.append(piece.data(), static_cast<std::size_t>(count));
        room.Require(bytes.size());
    }
    Require(unzCloseCurrentFile(zip), Damaged); // compares the checksum
    return bytes;
}

std::string ReadName(void* zip) {
    std::vector<char> name(LongestName + 2);
    unz_file_info64 info = {};
    Require(
        unzGetCurrentFileInfo64(zip, &info, name.data(), static_cast<uLong>(name.size() - 1), nullptr, 0, nullptr, 0),
        Damaged);
    if (info.size_filename > LongestName) {
        throw ArchiveError("the archive has a file whose name is not a plain one");
    }
    return std::string(name.data(), info.size_filename);
}

} // namespace

bool IsPlainName(const std::string& name) {
    const auto isPlain = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' || c == '-' ||
               c == '_';
    };
    return !name.empty() && name.size() <= LongestName && name.front() != '.' && name.back() != '.' &&
           std::all_of(name.begin(), name.end(), isPlain) && !IsDevice(name);
}

bool LooksLikeZip(const std::string& bytes) {
    return bytes.compare(0, sizeof(Signature) - 1, Signature) == 0;
}

std::string WriteZip(const std::vector<File>& files) {
    Memory memory;
    zlib_filefunc64_def functions = FunctionsOf(memory);
    std::unique_ptr<void, ZipCloser> zip(zipOpen2_64("", APPEND_STATUS_CREATE, nullptr, &functions));
    if (!zip) {
        throw ArchiveError(NotWritten);
    }
    NamesSeen seen;
    std::size_t size = 0;
    for (const File& file : files) {
        seen.Take(file.name);
        size += file.bytes.size();
        if (size > MostBytes) {
            throw ArchiveError(TooLarge());
        }
        Add(zip.get(), file);
    }
    Require(zipClose(zip.release(), nullptr), NotWritten);
    return memory.bytes;
}

std::vector<File> ReadZip(const std::string& bytes) {
    Memory memory = {bytes, 0};
    zlib_filefunc64_def functions = FunctionsOf(memory);
    const std::unique_ptr<void, UnzipCloser> zip(unzOpen2_64("", &functions));
    if (!zip) {
        throw ArchiveError("it is no archive, or a damaged one");
    }
    std::vector<File> files;
    NamesSeen seen;
    Room room(bytes.size());
    int code = unzGoToFirstFile(zip.get());
    for (; code == UNZ_OK; code = unzGoToNextFile(zip.get())) {
        const std::string name = ReadName(zip.get());
        seen.Take(name);
        files.push_back({name, ReadCurrent(zip.get(), room)});
        room.Take(files.back().bytes.size());
    }
    if (code != UNZ_END_OF_LIST_OF_FILE) {
        throw ArchiveError(Damaged);
    }
    return files;
}

} // namespace archive
