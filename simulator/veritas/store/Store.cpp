#include "Store.h"

#include "StateCheck.h"

#include "common/Files.h"
#include "common/Text.h"

namespace vcssim {

namespace {

using common::FileExists;
using common::ReadWholeFile;
using common::ToUtf8;
using common::WriteWholeFile;

[[noreturn]] void Malformed(const std::wstring& path, const CfError& error) {
    throw StoreError(path, {error.Line(), error.Column()}, error.what());
}

} // namespace

StoreError::StoreError(const std::wstring& file, const CfPlace& place, const std::string& reason)
    : std::runtime_error(ToUtf8(file) + (place.line == 0 ? "" : ", line " + std::to_string(place.line)) + ": " +
                         reason),
      m_file(file), m_place(place), m_reason(reason) {
}

void Store::ReadTypes(Cluster& cluster) const {
    for (const std::string& include : cluster.configuration.Includes()) {
        const std::wstring path = m_files.Included(include);
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

void Store::ReadConfiguration(Cluster& cluster, const std::wstring& path) {
    m_loadedText = ReadWholeFile(path);
    try {
        cluster.configuration = CfDocument(m_loadedText);
    } catch (const CfError& error) {
        Malformed(path, error);
    }
    ReadTypes(cluster);
}

Cluster Store::LoadConfiguration() {
    Cluster cluster;
    ReadConfiguration(cluster, m_files.Running());
    return cluster;
}

Cluster Store::LoadWritten() {
    Cluster cluster;
    ReadConfiguration(cluster, m_files.MainCf());
    return cluster;
}

Cluster Store::Load() {
    Cluster cluster = LoadConfiguration();
    const std::wstring statePath = m_files.State();
    if (FileExists(statePath)) {
        try {
            cluster.state = ReadState(ReadWholeFile(statePath));
        } catch (const StateError& error) {
            throw StoreError(statePath, {}, error.what());
        }
        const std::vector<std::string> contradictions = ContradictionsIn(cluster);
        if (!contradictions.empty()) {
            throw StoreError(statePath, {}, contradictions.front());
        }
    }
    m_loadedState = WriteState(cluster.state);
    return cluster;
}

void Store::Save(const Cluster& cluster) {
    if (cluster.configuration.Text() != m_loadedText) {
        WriteWholeFile(m_files.Live(), cluster.configuration.Text());
        m_loadedText = cluster.configuration.Text();
    }
    const std::string state = WriteState(cluster.state);
    if (state != m_loadedState) {
        WriteWholeFile(m_files.State(), state);
        m_loadedState = state;
    }
}

void Store::Dump(const Cluster& cluster) {
    if (FileExists(m_files.Live())) {
        WriteWholeFile(m_files.Previous(), ReadWholeFile(m_files.MainCf()));
        common::MoveFileOver(m_files.Live(), m_files.MainCf());
    }
    Save(cluster);
}

} // namespace vcssim
