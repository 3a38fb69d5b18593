#include "StatusCommand.h"

#include "CommandLine.h"
#include "Deployment.h"
#include "Status.h"
#include "StatusText.h"
#include "StatusWatch.h"
#include "Text.h"
#include "VcsSystems.h"

#include "picture/SystemsUnder.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>

using namespace picture;

namespace {

const char StatusName[] = "status";
const char CheckOption[] = "--check";

struct StatusOptions {
    bool isWatch = false;
    std::uint32_t interval = 5;
    bool isCheck = false;
};

ExitCode MonitoringCode(Level level) {
    switch (level) {
    case Level::Ok:
        return static_cast<ExitCode>(0);
    case Level::Warning:
        return static_cast<ExitCode>(1);
    case Level::Critical:
        return static_cast<ExitCode>(2);
    default:
        return UnknownToMonitoring;
    }
}

Report CheckReport(const std::string& line, Level level) {
    Report report;
    report.AddSentence("check", {{"level", NameOf(level)}, {"line", line}}, line);
    report.EndWith(MonitoringCode(level));
    return report;
}

// Whatever happens, the answer is one line and one of the four codes that monitoring systems know.
Report Check(const LogCapture& log) {
    try {
        Report unread;
        const Status status = ReadStatus(log, unread);
        const std::string line = status.cluster.kind == Kind::None
                                     ? "CLUSTER OK - this computer is in no cluster, and the product is configured for "
                                       "none"
                                     : MonitoringLine(status.cluster, status.health);
        Report report = CheckReport(line, status.health.level);
        for (const std::string& warning : unread.Warnings()) {
            report.AddWarning(warning);
        }
        return report;
    } catch (const Failure& failure) {
        if (failure.Kind().exitCode == ExitInterrupted) {
            throw;
        }
        return ::CheckReport(failure);
    }
}

Report Once(const LogCapture& log) {
    Report report;
    const Status status = ReadStatus(log, report);
    const Json document = StatusJson(status);
    for (const auto& member : document.items()) {
        report.AddMember(member.key().c_str(), member.value());
    }
    report.AddSentence("cluster", document["cluster"],
                       PageText(StatusPage(status.cluster, status.health), WantsColour()));
    for (const Group& group : status.cluster.groups) {
        if (RunningUnder(status.cluster, group.node) == NotRunning) {
            report.AddWarning(SaidToBeOn(group.name, group.state, group.node));
        }
    }
    return report;
}

Report ShowStatus(const LogCapture& log, const CommandLine& commandLine, const StatusOptions& options) {
    if (options.isCheck) {
        return Check(log);
    }
    if (options.isWatch) {
        WatchOptions watch;
        watch.interval = std::chrono::seconds(options.interval);
        watch.isJson = commandLine.Shared().json;
        return WatchStatus(log, watch);
    }
    return Once(log);
}

} // namespace

bool IsCheck(const CommandLine& commandLine) {
    return commandLine.ChosenName() == StatusName &&
           commandLine.Root().get_subcommand(StatusName)->get_option(CheckOption)->count() > 0;
}

// A cluster that ought to answer and does not is critical; what keeps from asking it is unknown.
Report CheckReport(const Failure& failure) {
    const std::string name = failure.Kind().name;
    const bool isDown =
        name == Errors::NoCluster.name || name == Errors::ClusterLost.name || name == Errors::EngineDown.name;
    std::string what = failure.what();
    what = what.substr(0, what.find('\n'));
    std::replace(what.begin(), what.end(), '|', '/');
    return CheckReport((isDown ? "CLUSTER CRITICAL - " : "CLUSTER UNKNOWN - ") + what,
                       isDown ? Level::Critical : Level::Unknown);
}

void AddStatusCommand(CommandLine& commandLine) {
    const auto options = std::make_shared<StatusOptions>();
    CLI::App& status = commandLine.Add(
        headings::TheCluster, StatusName, "Show how the cluster and its virtual servers are",
        [&commandLine, options](const LogCapture& log) { return ShowStatus(log, commandLine, *options); });
    const auto take = [options](const std::string& text) {
        options->isWatch = true;
        const bool isNumber = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
        if (isNumber && (text.size() > 7 || std::stoul(text) < 1 || std::stoul(text) > 4294967)) {
            throw CLI::ValidationError("--watch", "the seconds must be from 1 to 4294967");
        }
        if (!isNumber && !text.empty() && text != "true") { // what the parser gives for no value
            throw CLI::ValidationError("--watch", "must be a number of seconds: " + Quoted(text));
        }
        options->interval = isNumber ? static_cast<std::uint32_t>(std::stoul(text)) : options->interval;
    };
    CLI::Option* const watch =
        status
            .add_option_function<std::string>("--watch", take,
                                              "Show it again when something changes, and every so many seconds, from 1 "
                                              "to 4294967, 5 without a number; Ctrl+C ends")
            ->type_name("[SECONDS]")
            ->expected(0, 1);
    CLI::Option* const check =
        status
            .add_flag(
                CheckOption, options->isCheck,
                "For monitoring systems: one line with figures, and as exit code 0 for ok, 1 for a warning, 2 for "
                "critical, 3 for unknown")
            ->excludes(watch);
    AddExplain(status).excludes(watch)->excludes(check);
}
