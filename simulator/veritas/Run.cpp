#include "Run.h"

#include "ClusterEngine.h"
#include "ControlEvents.h"
#include "Secrets.h"
#include "ToolFaults.h"
#include "ToolTurn.h"
#include "Tools.h"

#include "common/AppendFile.h"
#include "common/FileLock.h"
#include "common/Files.h"
#include "common/Json.h"

#include <algorithm>
#include <memory>
#include <new>

namespace vcssim {

namespace {

void RunOnCluster(const std::string& tool, const Arguments& arguments, const std::wstring& mainCf, Output& output) {
    const ClusterFiles files(mainCf);
    const ToolTurn turn(files);
    Store store(files);
    Cluster cluster = store.Load();
    LetTimePass(cluster, output.Switches());
    Context context = {cluster, store, output};
    RunTool(context, tool, arguments);
    store.Save(cluster);
}

void WriteJournal(const std::wstring& path, const std::string& tool, const std::vector<std::string>& arguments,
                  const common::Json& exit, const std::vector<OutputPiece>& pieces) {
    if (path.empty()) {
        return;
    }
    common::Json entry;
    entry["tool"] = tool;
    entry["arguments"] = WithoutSecrets(tool, arguments);
    entry["exit"] = exit;
    std::string streams[2];
    std::string output;
    for (const OutputPiece& piece : pieces) {
        streams[piece.toErrors ? 1 : 0] += piece.text;
        output += piece.text;
    }
    entry["output"] = output;
    if (!streams[1].empty()) {
        entry["standardOutput"] = streams[0];
        entry["standardError"] = streams[1];
    }
    common::AppendFile(path).Append(common::DumpJsonLine(entry) + "\n"); // no run fails because of its line
}

// The clock of the cluster. A state that cannot be read is told by who needs it, and has the computer's.
Progress ClockOf(const Environment& environment) {
    Progress progress;
    const std::wstring file = ClusterFiles(environment.mainCf).State();
    try {
        if (!environment.mainCf.empty() && common::FileExists(file)) {
            progress.clock = ReadState(common::ReadWholeFile(file)).progress.clock;
        }
    } catch (const common::FileError&) {
    } catch (const StateError&) {
    }
    return progress;
}

// How long the run lets simulated time pass.
Seconds PassedBy(const std::string& tool, const std::vector<std::string>& arguments, const Progress& clock) {
    const bool isWait = clock.clock && tool == "vcssim" && arguments.size() == 2 && arguments.front() == "wait";
    return isWait ? SecondsIn(arguments.back()).value_or(0) : 0;
}

struct Hits {
    std::unique_ptr<common::Fault> fault; // of this run, or null
    std::vector<TimedEvent> events;       // that the clock reaches before the run, or in it
};

// The counts of earlier runs lie beside the file.
Hits FindHits(const Environment& environment, const std::string& tool, const std::vector<std::string>& arguments) {
    const std::wstring& path = environment.faults;
    Hits hits;
    if (path.empty()) {
        return hits;
    }
    common::FileLock lock(path);
    const common::FileLock::Turn turn(lock);
    ToolFaults faults(common::ReadWholeFile(path));
    const std::wstring countsPath = path + L".counts";
    if (common::FileExists(countsPath)) {
        faults.SetCounts(common::ReadWholeFile(countsPath));
    }
    const common::Fault* const hit = faults.Hit(tool, arguments);
    const bool setsClock = !arguments.empty() && arguments.front() == "clock" && tool == "vcssim";
    if (faults.HaveTimes() && !setsClock) { // before it the time is that of another clock
        const Progress clock = ClockOf(environment);
        const bool isDone = !hit || (!hit->hangs && !TakesItsPlace(*hit));
        hits.events = faults.TakeDue(clock.Now(), clock.Now() + (isDone ? PassedBy(tool, arguments, clock) : 0));
    }
    common::WriteWholeFile(countsPath, faults.Counts());
    hits.fault = hit ? std::make_unique<common::Fault>(*hit) : nullptr;
    return hits;
}

bool WriteBytes(DWORD stream, const char* bytes, std::size_t count) {
    while (count != 0) {
        DWORD written = 0;
        const DWORD block = static_cast<DWORD>(std::min<std::size_t>(count, 1 << 20));
        if (!WriteFile(GetStdHandle(stream), bytes, block, &written, nullptr) || written == 0) {
            return false;
        }
        bytes += written;
        count -= written;
    }
    return true;
}

// Writes up to `limit` bytes. What nobody reads is no failure of the tool.
void WritePieces(const std::vector<OutputPiece>& pieces, std::size_t limit) {
    for (const OutputPiece& piece : pieces) {
        const std::size_t count = std::min(limit, piece.text.size());
        if (!WriteBytes(piece.toErrors ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE, piece.text.data(), count)) {
            return;
        }
        limit -= count;
    }
}

int Finish(const Environment& environment, const std::string& tool, const std::vector<std::string>& arguments,
           const std::vector<OutputPiece>& pieces, int exitCode, const common::Fault* fault) {
    std::size_t size = 0;
    for (const OutputPiece& piece : pieces) {
        size += piece.text.size();
    }
    const bool killed = fault && fault->kill;
    const std::size_t printed = killed ? static_cast<std::size_t>(std::min<std::uint64_t>(size, *fault->kill)) : size;
    // A secret that is printed in part is none of the journal's business either: masked first, cut then.
    std::vector<OutputPiece> shown = pieces;
    std::size_t room = printed;
    for (OutputPiece& piece : shown) {
        piece.text = WithoutSecrets(tool, arguments, piece.text);
        if (killed) {
            piece.text.resize(std::min(piece.text.size(), room));
            room -= piece.text.size();
        }
    }
    WriteJournal(environment.journal, tool, arguments, exitCode, shown);
    WritePieces(pieces, printed);
    if (killed) {
        TerminateProcess(GetCurrentProcess(), static_cast<UINT>(exitCode));
    }
    return exitCode;
}

// Whether the tools of this computer find no engine. A state that cannot be read is told by who needs it.
bool IsEngineStopped(const Environment& environment) {
    const std::wstring file = ClusterFiles(environment.mainCf).State();
    try {
        return !environment.mainCf.empty() && common::FileExists(file) &&
               ReadState(common::ReadWholeFile(file)).isEngineStopped;
    } catch (const common::FileError&) {
        return false;
    } catch (const StateError&) {
        return false;
    }
}

// Lets the event of a fault happen. Empty, or why it does not.
std::string Happen(const std::string& event, const Environment& environment) {
    const Output happened = RunCommand("vcssim", WordsOfEvent(event), environment);
    common::Json entry = {{"event", event}, {"exit", happened.ExitCode()}, {"output", happened.Joined()}};
    if (!environment.journal.empty()) {
        common::AppendFile(environment.journal).Append(common::DumpJsonLine(entry) + "\n");
    }
    if (happened.ExitCode() == 0) {
        return std::string();
    }
    const std::string said = happened.Joined();
    return "event \"" + event + "\": " + said.substr(0, said.find_first_of("\r\n"));
}

// Lets the events of the clock happen, in a run that lets time pass each in its time: `arguments` become what is left
// of it, `pieces` what it has printed. Empty, or why one does not happen.
std::string LetHappen(const std::vector<TimedEvent>& events, const Environment& environment, const std::string& tool,
                      std::vector<std::string>& arguments, std::vector<OutputPiece>& pieces) {
    std::string why;
    for (auto event = events.begin(); event != events.end() && why.empty(); ++event) {
        const Progress clock = ClockOf(environment);
        const Seconds left = PassedBy(tool, arguments, clock);
        const Seconds first = event->due - clock.Now();
        if (first > 0 && first <= left) {
            const std::vector<OutputPiece> waited =
                RunCommand(tool, {"wait", std::to_string(first)}, environment).Pieces();
            pieces.insert(pieces.end(), waited.begin(), waited.end());
            arguments.back() = std::to_string(left - first);
        }
        why = Happen(event->event, environment);
    }
    return why;
}

} // namespace

Output RunCommand(const std::string& tool, const std::vector<std::string>& arguments, const Environment& environment) {
    Output output(environment.options);
    try {
        if (!arguments.empty() && arguments.front() == "-help") {
            output.Print(std::string("usage: ") + UsageOf(tool) + "\n");
        } else if (tool == "hacf") {
            RunHacf(output, Arguments(arguments));
        } else if (tool != "vcssim" && (!environment.options.engineIsUp || IsEngineStopped(environment))) {
            output.EngineDown();
            if (tool == "hastatus") {
                output.Simulated("11046", "The state of the local system is not available");
            }
        } else if (environment.options.engineStarts && tool != "vcssim") {
            output.Warning("11030", "HAD not ready (simulated)"); // how it goes on is not known
        } else if (tool == "vcsencrypt") {
            RunVcsencrypt(output, Arguments(arguments));
        } else if (environment.mainCf.empty()) {
            output.Failure("VCSSIM_MAIN_CF is not set");
        } else {
            RunOnCluster(tool, Arguments(arguments), environment.mainCf, output);
        }
    } catch (const UsageError&) {
        output.Usage(UsageOf(tool));
    } catch (const common::FileError& error) {
        output.Failure(error.what());
    } catch (const StoreError& error) {
        output.Failure(error.what());
    } catch (const CfError& error) {
        output.Failure(std::string("the change cannot be written: ") + error.what());
    }
    return output;
}

int RunTool(const std::string& tool, const std::vector<std::string>& arguments) {
    Environment environment;
    Hits hits;
    try {
        environment = ReadEnvironment();
        hits = FindHits(environment, tool, arguments);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        Output output(environment.options);
        output.Failure(error.what());
        return Finish(environment, tool, arguments, output.Pieces(), 2, nullptr);
    }
    std::vector<std::string> left = arguments;
    std::vector<OutputPiece> pieces;
    std::string why = LetHappen(hits.events, environment, tool, left, pieces);
    const common::Fault* const fault = hits.fault.get();
    if (fault && fault->event && why.empty()) {
        why = Happen(*fault->event, environment);
    }
    if (!why.empty()) {
        Output output(environment.options);
        output.Failure(why);
        return Finish(environment, tool, arguments, output.Pieces(), 2, nullptr);
    }
    if (fault) {
        if (fault->delayMs > 0) {
            SetConsoleCtrlHandler(nullptr, TRUE);
            Sleep(fault->delayMs);
        }
        if (fault->hangs) {
            WriteJournal(environment.journal, tool, arguments, nullptr, {});
            Sleep(INFINITE);
        }
        if (TakesItsPlace(*fault)) {
            return Finish(environment, tool, arguments, {{fault->toErrors, PrintedBy(*fault)}},
                          static_cast<int>(fault->code.value_or(0)), fault);
        }
    }
    const Output output = RunCommand(tool, left, environment);
    const std::vector<OutputPiece> printed = output.Pieces();
    pieces.insert(pieces.end(), printed.begin(), printed.end());
    return Finish(environment, tool, arguments, pieces, output.ExitCode(), fault);
}

} // namespace vcssim
