#include "StatusWatch.h"

#include "ClusterInUse.h"
#include "ClusterNotices.h"
#include "Deployment.h"
#include "Interruption.h"
#include "Simulation.h"
#include "Status.h"
#include "StatusText.h"
#include "StrayOutput.h"
#include "Stream.h"
#include "Text.h"

#include "picture/Changes.h"

#include "common/UtcTime.h"

#include <algorithm>
#include <memory>
#include <utility>

using namespace picture;

namespace {

void Print(const Stream& output, const std::string& text) {
    const DWORD code = output.Write(text);
    if (code != ERROR_SUCCESS) {
        throw Failure(Errors::OutputFailed, "cannot write the output: " + ErrorText(code));
    }
}

// What is shown, in one of three forms. `problem`: why the cluster, or a part of it, cannot be read at present; empty
// when it can.
class View {
public:
    View() = default;
    virtual ~View() = default;
    View(const View&) = delete;
    View& operator=(const View&) = delete;

    virtual void Show(const Status& status, const std::string& problem) = 0;
};

std::vector<StyledLine> PageOf(const Status& status, const std::string& problem) {
    std::vector<StyledLine> lines = StatusPage(status.cluster, status.health);
    if (!problem.empty()) {
        lines.insert(lines.begin(), {"Not up to date: " + problem, Styles::Red});
    }
    return lines;
}

// Draws over what it drew before.
class TerminalView : public View {
public:
    explicit TerminalView(std::chrono::seconds interval) : m_interval(interval) {
    }

    void Show(const Status& status, const std::string& problem) override {
        const HANDLE console = StrayOutput::Own(STD_OUTPUT_HANDLE);
        CONSOLE_SCREEN_BUFFER_INFO screen = {};
        GetConsoleScreenBufferInfo(console, &screen);
        const auto width = static_cast<size_t>(std::max(1, screen.srWindow.Right - screen.srWindow.Left + 1));
        const auto height = static_cast<size_t>(std::max(1, screen.srWindow.Bottom - screen.srWindow.Top + 1));
        if (!m_isPlaced) { // below what stands there: at the window's top once it has been scrolled there
            Print(m_output, std::string(height - 1, '\n'));
            GetConsoleScreenBufferInfo(console, &screen);
            m_isPlaced = true;
        }
        SetConsoleCursorPosition(console, {screen.srWindow.Left, screen.srWindow.Top});
        const std::string heading =
            common::UtcNow() + ", at least every " + std::to_string(m_interval.count()) + " s; Ctrl+C ends";
        Print(m_output, m_page.Draw(heading, PageOf(status, problem), width, height, WantsColour()));
    }

private:
    const std::chrono::seconds m_interval;
    const Stream m_output{STD_OUTPUT_HANDLE};
    TerminalPage m_page;
    bool m_isPlaced = false;
};

// Each page that differs from the one before, with its time.
class TextView : public View {
public:
    void Show(const Status& status, const std::string& problem) override {
        const std::string page = PageText(PageOf(status, problem), false);
        if (page != m_last) {
            Print(m_output, (m_last.empty() ? "" : "\n") + ("[" + common::UtcNow() + "]\n") + page + "\n");
            m_last = page;
        }
    }

private:
    const Stream m_output{STD_OUTPUT_HANDLE};
    std::string m_last;
};

// The status in the first line, then a line for each change.
class JsonView : public View {
public:
    void Show(const Status& status, const std::string& problem) override {
        if (!m_hasBegun) {
            const Simulation simulation(ClusterInUse());
            Json line = {{"time", common::UtcNow()}};
            line.update(StatusJson(status));
            line["deployment"] = DeploymentJson(DeploymentAsked());
            line["simulated"] = TextOrNull(simulation.HasAnswered(true) ? simulation.File() : std::wstring());
            Write(line);
            m_hasBegun = true;
            m_last = status;
        }
        WriteChange("cluster", m_last.cluster.name, "answer", m_problem, problem);
        WriteChanges(ChangesBetween(m_last.cluster, status.cluster));
        WriteChanges(ChangesBetween(m_last.health, status.health));
        WriteChange("cluster", status.cluster.name, "health", NameOf(m_last.health.level), NameOf(status.health.level));
        m_last = status;
        m_problem = problem;
    }

private:
    void WriteChanges(const std::vector<Change>& changes) const {
        for (const Change& change : changes) {
            WriteChange(change.kind, change.name, change.what, change.from, change.to);
        }
    }

    void WriteChange(const char* kind, const std::string& name, const char* what, const std::string& from,
                     const std::string& to) const {
        if (from != to) {
            Write({{"time", common::UtcNow()},
                   {"kind", kind},
                   {"name", name.empty() ? Json() : Json(name)},
                   {"what", what},
                   {"from", from.empty() ? Json() : Json(from)},
                   {"to", to.empty() ? Json() : Json(to)}});
        }
    }

    void Write(const Json& line) const {
        Print(m_output, common::DumpJsonLine(line) + "\n");
    }

    const Stream m_output{STD_OUTPUT_HANDLE};
    bool m_hasBegun = false;
    Status m_last;
    std::string m_problem;
};

std::unique_ptr<View> MakeView(const WatchOptions& options) {
    if (options.isJson) {
        return std::make_unique<JsonView>();
    }
    if (Stream(STD_OUTPUT_HANDLE).IsConsole()) {
        return std::make_unique<TerminalView>(options.interval);
    }
    return std::make_unique<TextView>();
}

// Why not all of what is shown is as the cluster is now; empty when it is.
std::string ProblemOf(const Report& unread) {
    const std::vector<std::string>& warnings = unread.Warnings();
    if (unread.IsComplete() || warnings.empty()) {
        return std::string();
    }
    return warnings.size() == 1 ? warnings.front()
                                : warnings.front() + ", and " + std::to_string(warnings.size() - 1) + " more";
}

// A part that cannot be read now is shown as it was, instead of taking its server away. `status`: of the time before.
std::string ReadAgain(const LogCapture& log, Status& status) {
    Report unread;
    Status now = ReadStatus(log, unread);
    if (!unread.IsComplete()) {
        KeepKnown(status.cluster, now.cluster);
        now.health = HealthOf(now.cluster, false);
    }
    status = std::move(now);
    return ProblemOf(unread);
}

} // namespace

Report WatchStatus(const LogCapture& log, const WatchOptions& options) {
    const std::unique_ptr<View> view = MakeView(options);
    Report unread;
    try {
        ClusterNotices notices(ClusterInUse() == Answering::FailoverCluster);
        Status status = ReadStatus(log, unread);
        view->Show(status, ProblemOf(unread));
        for (;;) {
            notices.Await(options.interval);
            std::string problem;
            try {
                problem = ReadAgain(log, status);
            } catch (const Interrupted&) {
                throw;
            } catch (const Failure& failure) { // the cluster may come back
                problem = failure.what();
            }
            view->Show(status, problem);
        }
    } catch (const Interrupted&) {
        return Report::Printed(ExitInterrupted);
    }
}
