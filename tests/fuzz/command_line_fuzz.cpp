// Takes arbitrary words for clusctl's command line: what is wrong is refused with a sentence, never with an exception
// of another kind, and no message can steer a terminal. The sub-commands stand for all of clusctl's: one for each kind
// of option and argument that these have.
#include "FuzzInput.h"

#include "CommandLine.h"
#include "Embedded.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace {

struct Taken {
    std::wstring text;
    std::wstring name;
    std::wstring choice = L"none";
    TextPairs pairs;
    std::vector<std::wstring> names;
    unsigned seconds = 0;
    bool flag = false;
};

void AddCommands(CommandLine& line, Taken& taken) {
    const Action action = [](const LogCapture&) { return Report(); };
    CLI::App& query = line.Add("Servers", "query", "Look a server up", action);
    CommandLine::AddText(query, "server", taken.text, "NAME|ADDRESS", "The server").required();
    query.add_flag("--plain", taken.flag, "A flag");

    CLI::App& resource = line.AddFamily("Resources", "resource", "Resources");
    CLI::App& create = line.AddTo(resource, "create", "Create one", action);
    CommandLine::AddText(create, "--type", taken.text, "TYPE", "The type").required();
    CommandLine::AddChoice(create, "--state", taken.choice, {"online", "offline"}, "The state");
    create.add_option("--timeout", taken.seconds, "Seconds")->type_name("SECONDS")->check(CLI::Range(1u, 86400u));

    CLI::App& vcs = line.AddFamily("VCS", "vcs", "VCS");
    CLI::App& product = CommandLine::AddFamilyTo(vcs, "product", "The product");
    CLI::App& add = line.AddTo(product, "create", "Create it", action);
    CommandLine::AddVcsName(add, "group", taken.name, "GROUP", "The group").required();
    CommandLine::AddPairs(add, "--set", taken.pairs, "Attributes");
    add.add_flag("--rw", taken.flag, "Open the configuration");

    line.AddTelling("Help", "version", "The version", [] { return std::string("1\n"); });
}

// Nothing in it moves a cursor or ends a line early.
bool IsPrintable(const std::string& text) {
    return std::none_of(text.begin(), text.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return (byte < 0x20 && c != '\n') || byte == 0x7f;
    });
}

bool IsVcsName(const std::wstring& name) {
    return !name.empty() && name.front() != L'-' && name.find_first_of(L" \t\r\n\"") == std::wstring::npos;
}

} // namespace

std::string EmbeddedText(const wchar_t*) {
    static const std::string manual = [] {
        std::ifstream file(CLUSUTIL_SOURCE_DIR "/tools/clusctl/Manual.md.in");
        std::ostringstream text;
        text << file.rdbuf();
        return text.str();
    }();
    return manual;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<std::string> words = PartsOf(AsText(data, size), '\n');
    words.resize(std::min<std::size_t>(words.size(), 32));
    const auto isJson = [](const std::string& word) { return word.compare(0, 6, "--json") == 0; };
    const auto mark = std::find(words.begin(), words.end(), "--"); // words behind it are plain
    const bool saysJson = std::find(words.begin(), mark, "--json") != mark;
    CommandLine line;
    Taken taken;
    AddCommands(line, taken);
    try {
        const std::string told = line.Parse(words);
        FUZZ_CHECK(told.empty() ? static_cast<bool>(line.Chosen()) : told.back() == '\n');
        if (told.empty()) {
            FUZZ_CHECK(!line.ChosenName().empty());
            FUZZ_CHECK(!line.OpensConfiguration() || taken.flag);
            FUZZ_CHECK(line.ChosenName() != "vcs product create" || IsVcsName(taken.name));
            FUZZ_CHECK(line.ChosenName() != "query" || !taken.text.empty());
            FUZZ_CHECK(std::all_of(taken.pairs.begin(), taken.pairs.end(),
                                   [](const auto& pair) { return IsVcsName(pair.first); }));
            FUZZ_CHECK(taken.choice == L"none" || taken.choice == L"online" || taken.choice == L"offline");
        }
    } catch (const WrongUsage& wrong) {
        const std::string usage = line.UsageText(wrong.what());
        FUZZ_CHECK(IsPrintable(usage));
        FUZZ_CHECK(std::count(usage.begin(), usage.end(), '\n') >= 3 && usage.back() == '\n');
        FUZZ_CHECK(!saysJson || line.Shared().json);
    }
    FUZZ_CHECK(!line.Shared().json || std::any_of(words.begin(), mark, isJson));
    return 0;
}
