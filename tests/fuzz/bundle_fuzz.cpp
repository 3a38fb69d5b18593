// A support bundle: an archive that comes by mail. Whatever it holds, its files stay within the bounds, have plain
// names, each once, and are read again as they are when they are written anew.
#include "archive/ZipArchive.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    std::vector<archive::File> files;
    try {
        files = archive::ReadZip(bytes);
    } catch (const archive::ArchiveError&) {
        return 0;
    }
    std::size_t total = 0;
    for (const archive::File& file : files) {
        total += file.bytes.size();
        if (!archive::IsPlainName(file.name)) {
            std::abort();
        }
    }
    if (files.size() > archive::MostFiles || total > archive::MostBytes) {
        std::abort();
    }
    const std::vector<archive::File> again = archive::ReadZip(archive::WriteZip(files));
    if (again.size() != files.size()) {
        std::abort();
    }
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (again[i].name != files[i].name || again[i].bytes != files[i].bytes) {
            std::abort();
        }
    }
    return 0;
}
