#include "Store.h"

#include "Files.h"

#include "../cluster/Text.h"

namespace vcssim {

namespace {

using clussim::Utf8;
using clussim::Wide;

[[noreturn]] void Malformed(const std::wstring& path, const CfError& error) {
    throw FileError(Utf8(path) + ", line " + std::to_string(error.Line()) + ": " + error.what());
}

} // namespace

std::wstring Store::Beside(const std::string& name) const {
    const std::size_t separator = m_mainCf.find_last_of(L"\\/:");
    return separator == std::wstring::npos ? Wide(name) : m_mainCf.substr(0, separator + 1) + Wide(name);
}

void Store::ReadTypes(Cluster& cluster) const {
    for (const std::string& include : cluster.configuration.Includes()) {
        const std::wstring path = Beside(include);
        if (!FileExists(path)) {
            continue; // the types known without it will do
        }
        try {
            cluster.types.Read(ReadWholeFile(path));
        } catch (const CfError& error) {
            Malformed(path, error);
        }
    }
    for (const CfGroup& group : cluster.configuration.Groups()) {
        for (const CfBlock& resource : group.resources) {
            cluster.types.Add(resource.keyword);
        }
    }
}

Cluster Store::Load() {
    Cluster cluster;
    const std::wstring live = m_mainCf + L".live";
    const std::wstring path = FileExists(live) ? live : m_mainCf;
    m_loadedText = ReadWholeFile(path);
    try {
        cluster.configuration = CfDocument(m_loadedText);
    } catch (const CfError& error) {
        Malformed(path, error);
    }
    ReadTypes(cluster);
    const std::wstring statePath = m_mainCf + L".state.json";
    if (FileExists(statePath)) {
        try {
            cluster.state = ReadState(ReadWholeFile(statePath));
        } catch (const StateError& error) {
            throw FileError(Utf8(statePath) + ": " + error.what());
        }
    }
    m_loadedState = WriteState(cluster.state);
    return cluster;
}

void Store::Save(const Cluster& cluster) {
    if (cluster.configuration.Text() != m_loadedText) {
        WriteWholeFile(m_mainCf + L".live", cluster.configuration.Text());
        m_loadedText = cluster.configuration.Text();
    }
    const std::string state = WriteState(cluster.state);
    if (state != m_loadedState) {
        WriteWholeFile(m_mainCf + L".state.json", state);
        m_loadedState = state;
    }
}

void Store::Dump(const Cluster& cluster) {
    const std::wstring live = m_mainCf + L".live";
    if (FileExists(live)) {
        WriteWholeFile(m_mainCf + L".previous", ReadWholeFile(m_mainCf));
        MoveFileOver(live, m_mainCf);
    }
    Save(cluster);
}

} // namespace vcssim
