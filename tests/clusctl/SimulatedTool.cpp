#include "SimulatedTool.h"

#include "Tools.h"
#include "Words.h"

#include <algorithm>

ToolOutput RunSimulatedTool(const std::wstring& mainCf, const vcssim::Options& options, const std::string& tool,
                            const std::string& arguments) {
    vcssim::Output output(options);
    if (arguments == "-help") {
        output.Print(std::string("usage: ") + vcssim::UsageOf(tool) + "\n");
    } else {
        vcssim::Store store{vcssim::ClusterFiles(mainCf)};
        vcssim::Cluster cluster = store.Load();
        vcssim::Context context = {cluster, store, output};
        vcssim::RunTool(context, tool, vcssim::Arguments(harness::Words(arguments)));
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
