#include "VcsToolCalls.h"

#include "Json.h"
#include "Text.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <sstream>

namespace {

const unsigned long NeverEnded = 0xffffffff;

bool IsChange(const std::string& tool, const std::vector<std::string>& arguments) {
    static const char* const verbs[] = {"-add",    "-modify",   "-local",   "-global", "-link",  "-unlink",
                                        "-delete", "-online",   "-offline", "-clear",  "-probe", "-switch",
                                        "-freeze", "-unfreeze", "-makerw",  "-dump"};
    return tool != "vcsencrypt" && !arguments.empty() &&
           std::any_of(std::begin(verbs), std::end(verbs),
                       [&arguments](const char* verb) { return arguments.front() == verb; });
}

// As people write it.
std::string Word(const std::string& argument) {
    return argument.empty() || argument.find(' ') != std::string::npos ? Quoted(argument) : Printable(argument);
}

std::string FirstLine(const std::string& output) {
    return Printable(output.substr(0, output.find_first_of("\r\n")));
}

} // namespace

std::vector<ClusterCall> ReadToolCalls(const std::string& journal) {
    std::vector<ClusterCall> calls;
    std::map<std::string, std::size_t> counts;
    std::istringstream lines(journal);
    for (std::string text; std::getline(lines, text);) {
        const Json line = Json::parse(text, nullptr, false);
        if (!line.is_object() || !line.contains("tool")) {
            continue;
        }
        ClusterCall call;
        call.isTool = true;
        call.call = line.at("tool").get<std::string>();
        call.occurrence = ++counts[call.call];
        call.text = call.call;
        const auto arguments = line.at("arguments").get<std::vector<std::string>>();
        for (const std::string& argument : arguments) {
            call.text.append(" ").append(Word(argument));
        }
        const Json exit = line.value("exit", Json());
        call.code = exit.is_number() ? exit.get<unsigned long>() : NeverEnded;
        call.said = call.code == 0 ? std::string() : FirstLine(line.value("output", ""));
        call.changes = IsChange(call.call, arguments);
        calls.push_back(call);
    }
    return calls;
}
