#include "SimulatedTool.h"

#include "Tools.h"

#include <algorithm>
#include <sstream>
#include <vector>

namespace {

std::vector<std::string> Split(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

} // namespace

ToolOutput RunSimulatedTool(const std::wstring& mainCf, const vcssim::Options& options, const std::string& tool,
                            const std::string& arguments) {
    vcssim::Output output(options);
    if (arguments == "-help") {
        output.Print(std::string("usage: ") + vcssim::UsageOf(tool) + "\n");
    } else {
        vcssim::Store store{vcssim::ClusterFiles(mainCf)};
        vcssim::Cluster cluster = store.Load();
        vcssim::Context context = {cluster, store, output};
        vcssim::RunTool(context, tool, vcssim::Arguments(Split(arguments)));
        store.Save(cluster);
    }
    ToolOutput answer;
    for (const vcssim::OutputPiece& piece : output.Pieces()) {
        (piece.toErrors ? answer.errors : answer.raw) += piece.text;
    }
    answer.output = answer.raw;
    for (std::string* text : {&answer.output, &answer.errors}) {
        text->erase(std::remove(text->begin(), text->end(), '\r'), text->end());
    }
    answer.exitCode = static_cast<unsigned long>(output.ExitCode());
    return answer;
}
