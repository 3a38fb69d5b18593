#include "BundleFiles.h"

#include "Failure.h"
#include "PrivateFolder.h"
#include "Text.h"

#include "archive/Sha256.h"
#include "archive/ZipArchive.h"
#include "common/Files.h"

#include <algorithm>
#include <map>
#include <memory>

namespace {

const wchar_t FolderName[] = L"clusctl-bundle";

struct OpenedBundle {
    std::wstring model;
    BundledComputer computer;
    std::unique_ptr<PrivateFolder> folder; // removed when the program ends
};

std::map<std::wstring, OpenedBundle>& OpenedBundles() {
    static std::map<std::wstring, OpenedBundle> bundles;
    return bundles;
}

[[noreturn]] void Refuse(const std::wstring& file, const std::string& why) {
    throw Failure("cannot open the bundle " + QuotedPath(file) + ": " + why);
}

std::string ReadBounded(const std::wstring& file) {
    const common::Handle handle = common::OpenForReading(file);
    LARGE_INTEGER size = {};
    if (!GetFileSizeEx(handle.get(), &size) || static_cast<unsigned long long>(size.QuadPart) > archive::MostBytes) {
        Refuse(file, "it is larger than a bundle may be");
    }
    return common::ReadToEnd(handle, file);
}

std::vector<archive::File> ReadFiles(const std::wstring& file) {
    try {
        return archive::ReadZip(ReadBounded(file));
    } catch (const archive::ArchiveError& error) {
        Refuse(file, error.what());
    } catch (const common::FileError& error) {
        throw Failure::OfCode("cannot read the bundle " + QuotedPath(file), error.Code());
    }
}

const archive::File* Find(const std::vector<archive::File>& files, const std::string& name) {
    const auto found =
        std::find_if(files.begin(), files.end(), [&name](const archive::File& each) { return each.name == name; });
    return found == files.end() ? nullptr : &*found;
}

std::string TextMember(const Json& object, const char* name) {
    const auto member = object.is_object() ? object.find(name) : object.end();
    return member == object.end() || !member->is_string() ? std::string() : member->get<std::string>();
}

// That the manifest is one, and that each file is there as it says.
void RequireAsManifestSays(const std::wstring& file, const std::vector<archive::File>& files) {
    const archive::File* const manifest = Find(files, BundleFiles::Manifest);
    if (manifest == nullptr) {
        Refuse(file, std::string("it has no ") + BundleFiles::Manifest);
    }
    const Json told = Json::parse(manifest->bytes, nullptr, false);
    if (!told.is_object() || told.value("format", Json()) != Json(BundleFiles::Format) ||
        !told.value("files", Json()).is_array()) {
        Refuse(file, "its manifest is not one that this version reads");
    }
    for (const Json& entry : told["files"]) {
        const std::string name = TextMember(entry, "name");
        const archive::File* const found = Find(files, name);
        if (found == nullptr || archive::Sha256(found->bytes) != TextMember(entry, "sha256")) {
            Refuse(file, Quoted(name) + " is not as its manifest says");
        }
    }
    if (told["files"].size() + 1 != files.size()) {
        Refuse(file, "it holds files that its manifest does not name");
    }
}

// Null when it is not there, or no document.
Json DocumentIn(const std::vector<archive::File>& files, const char* name) {
    const archive::File* const found = Find(files, name);
    const Json document = found == nullptr ? Json() : Json::parse(found->bytes, nullptr, false);
    return document.is_object() ? document : Json();
}

BundledComputer ComputerIn(const std::vector<archive::File>& files) {
    BundledComputer computer;
    computer.name = common::ToUtf16(TextMember(DocumentIn(files, BundleFiles::Versions), "computer"));
    const Json settings = DocumentIn(files, BundleFiles::Settings);
    computer.productKey = common::ToUtf16(TextMember(settings, "key"));
    Json values = Json::object();
    for (const char* const member : {"values", "odd"}) { // what the library can read, and what has another type
        const auto part = settings.is_object() ? settings.find(member) : settings.end();
        if (part != settings.end() && part->is_object()) {
            values.update(*part);
        }
    }
    computer.settings = values.empty() ? Json() : values;
    const std::string access = TextMember(settings, "access");
    computer.hasProductKey = access.empty() ? !values.empty() : access != BundleFiles::AccessMissing;
    computer.isKeyReadable = access != BundleFiles::AccessNone;
    computer.isKeyWritable = computer.isKeyReadable && access != BundleFiles::AccessRead;
    const Json doctor = DocumentIn(files, BundleFiles::Doctor);
    const auto findings = doctor.is_object() ? doctor.find("findings") : doctor.end();
    computer.findings = findings != doctor.end() && findings->is_array() ? *findings : Json();
    return computer;
}

OpenedBundle Open(const std::wstring& file) {
    const std::vector<archive::File> files = ReadFiles(file);
    RequireAsManifestSays(file, files);
    const char* const model = Find(files, BundleFiles::Model) != nullptr ? BundleFiles::Model : BundleFiles::MainCf;
    if (Find(files, model) == nullptr) {
        throw Failure(Errors::NotFound, "the bundle " + QuotedPath(file) + " holds no cluster")
            .Hint(std::string("Its ") + BundleFiles::Manifest + " says why.");
    }
    OpenedBundle opened;
    opened.folder = std::make_unique<PrivateFolder>(FolderName);
    try {
        for (const archive::File& each : files) {
            common::WriteWholeFile(opened.folder->File(common::ToUtf16(each.name)), each.bytes);
        }
    } catch (const common::FileError& error) {
        throw Failure::OfCode("cannot write the files of the bundle to " + QuotedPath(error.Path()), error.Code());
    }
    opened.model = opened.folder->File(common::ToUtf16(model));
    opened.computer = ComputerIn(files);
    return opened;
}

} // namespace

bool IsBundle(const std::wstring& file) {
    try {
        const common::Handle handle = common::OpenForReading(file);
        char begin[4] = {};
        DWORD count = 0;
        return ReadFile(handle.get(), begin, sizeof(begin), &count, nullptr) &&
               archive::LooksLikeZip(std::string(begin, count));
    } catch (const common::FileError& error) {
        throw Failure::OfCode("cannot read the model " + QuotedPath(file), error.Code());
    }
}

std::wstring ModelOfBundle(const std::wstring& file) {
    const auto known = OpenedBundles().find(file);
    return known != OpenedBundles().end() ? known->second.model
                                          : OpenedBundles().emplace(file, Open(file)).first->second.model;
}

const BundledComputer& ComputerOfBundle(const std::wstring& file) {
    ModelOfBundle(file);
    return OpenedBundles().at(file).computer;
}
