#include "Replay.h"

#include "CommandLine.h"
#include "Text.h"

#include "common/Text.h"

#include <Player.h>

#include <memory>
#include <utility>

namespace {

const char CutHint[] = "Its end is missing: the command that it was made of was ended by force.";
const char CutWarning[] = "the end of the recording is missing: the command that it was made of was ended by force";

struct Replay {
    explicit Replay(recording::Recording recording) : player(std::move(recording)) {
    }
    recording::Player player;
    std::unique_ptr<recording::Interception> interception;
};

std::unique_ptr<Replay> g_replay; // to the end of the process: its answers may be asked for until then

Failure NotRecordedFailure(const recording::Player& player) {
    return Failure(Errors::NotRecorded,
                   "the recording holds no answer to " + Shortened(Printable(player.Missing()), 300))
        .Hint(player.IsCut() ? CutHint
                             : "It answers only what was asked when it was made: " +
                                   Printable(common::DumpJsonLine(player.Head().command)));
}

} // namespace

bool IsRecording(const std::string& text) {
    return recording::IsRecording(text);
}

bool IsRecordingOfVcs(const std::string& text) {
    try {
        return recording::ReadRecording(text.substr(0, text.find('\n') + 1)).header.cluster == "vcs";
    } catch (const common::JsonError&) {
        return false; // whoever takes it says what is wrong
    }
}

void UseRecording(const std::wstring& file, const std::string& text, Answering asked) {
    recording::Recording recording;
    try {
        recording = recording::ReadRecording(text);
    } catch (const common::JsonError& error) {
        throw Failure("cannot read the recording " + Quoted(file) + ": " + Printable(error.what()));
    }
    const std::string wanted = asked == Answering::Vcs ? "vcs" : "failover";
    if (!recording.header.cluster.empty() && recording.header.cluster != wanted) {
        throw WrongUsage(Quoted(file) + (asked == Answering::Vcs
                                             ? " is a recording of a failover cluster, and this command asks VCS"
                                             : " is a recording of VCS, and this command asks a failover cluster"));
    }
    g_replay = std::make_unique<Replay>(std::move(recording));
}

bool IsReplaying() {
    return g_replay != nullptr;
}

void BeginReplay() {
    g_replay->interception = std::make_unique<recording::Interception>(
        g_replay->player, std::vector<HMODULE>{nullptr, GetModuleHandleW(L"clusutil.dll")});
}

bool HasReplayed() {
    return g_replay->player.HasAnswered();
}

Json ReplayedSettings() {
    return g_replay->player.Head().settings;
}

bool IsToolRecorded(const std::string& tool) {
    return g_replay->player.HasRunOf(tool);
}

std::vector<VcsToolFile> ReplayedTools() {
    std::vector<VcsToolFile> tools;
    for (const Json& tool : g_replay->player.Head().tools) {
        tools.push_back(
            {common::ToUtf16(tool["name"].get<std::string>()), common::ToUtf16(tool.value("file", std::string()))});
    }
    return tools;
}

Report WorkReplayed(const std::function<Report()>& work) {
    const recording::Player& player = g_replay->player;
    Report report;
    try {
        report = work();
    } catch (const WrongUsage&) {
        throw;
    } catch (const FailureWithReport& halfway) {
        if (player.Missing().empty()) {
            throw;
        }
        throw FailureWithReport(NotRecordedFailure(player), halfway.Shown());
    } catch (const std::exception&) { // also the one that told of it
        if (player.Missing().empty()) {
            throw;
        }
        throw NotRecordedFailure(player);
    }
    if (!player.Missing().empty()) {
        throw FailureWithReport(NotRecordedFailure(player), report);
    }
    if (player.IsCut()) {
        report.AddWarning(CutWarning);
    }
    return report;
}
