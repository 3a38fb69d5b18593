// Runs arbitrary command lines of the VCS tools on a small cluster whose files are in memory. Whatever they are, the
// files stay readable, and the journal does not show what vcsencrypt was given.
#include "FuzzInput.h"

#include "ClusterEngine.h"
#include "Process.h"
#include "Secrets.h"
#include "Tools.h"

#include "common/Files.h"

#include <algorithm>

namespace {

using namespace vcssim;

const wchar_t MainCf[] = L"main.cf";
const std::size_t MostRuns = 12;

const char Configuration[] = R"(include "types.cf"
cluster CL (
	)
system N1 (
	)
system N2 (
	)
group G (
	SystemList = { N1 = 0, N2 = 1 }
	AutoStartList = { N1 }
	)
	IP I (
		Address @N1 = "10.0.0.1"
		Address @N2 = "10.0.0.2"
		Enabled = 1
		)
	Lanman L (
		VirtualName = V
		Password = abc
		)
	L requires I
group H (
	SystemList = { N1 = 0 }
	Parallel = 1
	)
requires group G online local firm
)";

const char States[] = R"({"mode": "rw", "systems": {"N2": "EXITED"}, "resources": {"I": {"N1": "ONLINE"}}, "clock": 5,
    "times": {"*": {"online": 10, "offline": 5}}})";

// One word each; in double quotes with blanks.
std::vector<std::string> WordsOf(const std::string& line) {
    std::vector<std::string> words;
    bool isQuoted = false;
    bool isInWord = false;
    for (const char c : line) {
        if (c == '"') {
            isQuoted = !isQuoted;
            if (!isInWord) {
                words.emplace_back();
            }
            isInWord = true;
        } else if (c == ' ' && !isQuoted) {
            isInWord = false;
        } else {
            if (!isInWord) {
                words.emplace_back();
            }
            isInWord = true;
            words.back() += c;
        }
    }
    return words;
}

void RunLine(const std::string& line) {
    std::vector<std::string> arguments = WordsOf(line);
    if (arguments.empty()) {
        return;
    }
    const std::string tool = arguments.front();
    arguments.erase(arguments.begin());
    Output output((Options()));
    try {
        Store store{ClusterFiles(MainCf)};
        Cluster cluster = store.Load();
        LetTimePass(cluster, output.Switches());
        Context context = {cluster, store, output};
        if (tool == "vcsencrypt") {
            RunVcsencrypt(output, Arguments(arguments));
        } else {
            RunTool(context, tool, Arguments(arguments));
        }
        store.Save(cluster);
    } catch (const UsageError&) {
        output.Usage(UsageOf(tool));
    } catch (const CfError& error) {
        output.Failure(error.what());
    } catch (const StoreError& error) { // no tool of this name
        output.Failure(error.what());
    }
    FUZZ_CHECK(output.ExitCode() >= 0 && output.ExitCode() <= 2);
    const std::vector<std::string> shown = WithoutSecrets(tool, arguments);
    FUZZ_CHECK(shown.size() == arguments.size());
    if (tool == "vcsencrypt" && arguments.size() > 1) {
        FUZZ_CHECK(std::all_of(shown.begin() + 1, shown.end(), [](const std::string& argument) {
            return argument == "***" || argument == "-agent" || argument == "-vcs" || argument == "-help";
        }));
    }
    WithoutSecrets(tool, arguments, output.Joined());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    platform::Process& process = platform::ThisProcess();
    process = platform::Process();
    process.files[MainCf] = Configuration;
    process.files[std::wstring(MainCf) + L".state.json"] = States;
    std::size_t runs = 0;
    for (const std::string& line : PartsOf(AsText(data, size), '\n')) {
        RunLine(line);
        if (++runs == MostRuns) {
            break;
        }
    }
    // A next run reads what is there.
    Store store{ClusterFiles(MainCf)};
    const Cluster cluster = store.Load();
    FUZZ_CHECK(!cluster.configuration.Groups().empty());
    FUZZ_CHECK(!WriteState(cluster.state).empty());
    return 0;
}
