// Looks for secrets behind the masks of the library, of clusctl and of the VCS simulator's journal. The input is a
// secret, a command line, and what a tool prints.
#include "FuzzInput.h"

#include "Secrets.h"
#include "core/ToolSecrets.h"
#include "masks/ClusctlSecrets.h"

#include <algorithm>

namespace {

const std::size_t ShortestLogged = 6; // clusctl looks for no shorter ones in other lines

// A mask that is put in can make up no secret of these.
bool CanBeLookedFor(const std::wstring& secret) {
    return secret.find(L'*') == std::wstring::npos && !clus::WithoutQuotesAround(secret).empty();
}

bool Holds(const std::wstring& text, std::wstring_view secret) {
    return text.find(secret) != std::wstring::npos;
}

std::size_t LineCount(const std::wstring& text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), L'\n'));
}

void CheckOutput(const std::wstring& secret, const std::wstring& output) {
    const clus::ToolSecret sought(secret);
    const std::wstring masked = clus::WithoutSecrets(output, sought);
    FUZZ_CHECK(!Holds(masked, secret));
    FUZZ_CHECK(!Holds(masked, clus::WithoutQuotesAround(secret)));
    FUZZ_CHECK(LineCount(masked) == LineCount(output));
    const std::wstring messages = clus::MessagesWithoutSecrets(output, sought);
    FUZZ_CHECK(messages.empty() == output.empty());
}

void CheckCommandLine(const std::wstring& commandLine, const std::wstring& output) {
    const std::size_t begin = clus::FindSecret(commandLine);
    LogSecrets log;
    const std::wstring logged = L"Command line: " + commandLine;
    const std::wstring masked = log.Masked(logged);
    if (begin == std::wstring::npos) {
        FUZZ_CHECK(masked == logged);
        return;
    }
    FUZZ_CHECK(begin < commandLine.size());
    const std::wstring secret(clus::WithoutQuotesAround(std::wstring_view(commandLine).substr(begin)));
    FUZZ_CHECK(!secret.empty());
    if (CanBeLookedFor(secret) && secret.size() >= ShortestLogged) {
        FUZZ_CHECK(!Holds(masked, secret));
        FUZZ_CHECK(!Holds(log.Masked(output), secret));
    }
}

void CheckJournal(const std::string& secret, const std::string& output) {
    const std::vector<std::vector<std::string>> runs = {
        {"-agent", secret}, {"-modify", "R1", "Password", secret}, {"-list", "UserPassword=" + secret}};
    for (const std::vector<std::string>& arguments : runs) {
        const char* const tool = arguments.size() == 2 && arguments[0] == "-agent" ? "vcsencrypt" : "hares";
        const bool isOption = !secret.empty() && secret.front() == '-';
        if (isOption || (std::string(tool) == "vcsencrypt" && secret.empty())) {
            continue; // the tool takes it for an option
        }
        for (const std::string& argument : vcssim::WithoutSecrets(tool, arguments)) {
            FUZZ_CHECK(argument.find(secret) == std::string::npos);
        }
        FUZZ_CHECK(vcssim::WithoutSecrets(tool, arguments, output).find(secret) == std::string::npos);
    }
}

void CheckConfiguration(const std::string& secret, const std::string& output) {
    std::vector<std::string> lines = PartsOf(output, '\n');
    lines.push_back("\t\tPassword = \"" + secret + "\"");
    lines.push_back("UserPassword @NODE1 = " + secret);
    const std::vector<std::string> masked = MaskedConfiguration(lines);
    FUZZ_CHECK(masked.size() == lines.size());
    for (std::size_t i = lines.size() - 2; i < lines.size(); ++i) {
        FUZZ_CHECK(masked[i].substr(masked[i].find('=')) == "= ***");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string output = AsText(data, size);
    const std::string secret = TakeLine(output);
    const std::string commandLine = TakeLine(output);
    if (CanBeLookedFor(WideOf(secret))) {
        CheckOutput(WideOf(secret), WideOf(output));
        if (secret.find_first_of("\" \t\r=") == std::string::npos) {
            // Attribute names and options of the command line itself are no secrets.
            const bool isOfTheLine =
                std::string("-agent -modify -list R1 UserPassword= ").find(secret) != std::string::npos;
            if (!isOfTheLine) {
                CheckJournal(secret, output);
            }
            CheckConfiguration(secret, output);
        }
    }
    CheckCommandLine(WideOf(commandLine), WideOf(output));
    return 0;
}
