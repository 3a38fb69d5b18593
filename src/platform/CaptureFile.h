// The file that captures a tool's output: deleted at the end of its run, read line by line.
#ifndef CLUS_PLATFORM_CAPTUREFILE_H
#define CLUS_PLATFORM_CAPTUREFILE_H

#include "platform/Owner.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace clus {

// Deletes a file at the end of its scope, keeping the last-error value; a file that is gone already is no matter.
class FileDeleter {
public:
    explicit FileDeleter(const wchar_t* fileName) : m_fileName(fileName) {
    }
    ~FileDeleter() {
        const LastErrorKeeper keeper;
        DeleteFileW(m_fileName);
    }
    FileDeleter(const FileDeleter&) = delete;
    FileDeleter& operator=(const FileDeleter&) = delete;

private:
    const wchar_t* m_fileName;
};

// Reads a file in the text mode of the C runtime, shared with all: CR LF is one line end, and Ctrl+Z (0x1A) ends the
// text. Each byte becomes one character. No child process inherits the file.
class TextFileReader {
public:
    explicit TextFileReader(const wchar_t* fileName);
    ~TextFileReader();
    TextFileReader(const TextFileReader&) = delete;
    TextFileReader& operator=(const TextFileReader&) = delete;

    explicit operator bool() const {
        return m_file >= 0;
    }

    // The file's size in bytes; 0 when it cannot be told.
    std::size_t Size() const;

    // Goes to the next line. False behind the last one; a read error ends the text.
    bool ReadLine();

    // The line without its end, and with a terminator behind it. It stays until the next one is read.
    std::wstring_view Line() const {
        return std::wstring_view(m_line.data(), m_length);
    }

private:
    bool Fill();

    int m_file;
    std::size_t m_position = 0;
    std::size_t m_size = 0;
    std::wstring m_line; // never shrinks
    std::size_t m_length = 0;
    unsigned char m_bytes[4096];
};

} // namespace clus

#endif
