#include "Progress.h"

#include "LogCapture.h"
#include "StateNames.h"
#include "Text.h"

#include <chrono>
#include <exception>

namespace {

const std::chrono::milliseconds Interval(250);
const std::chrono::seconds Quiet(2);
const size_t LongestName = 48; // the line has to fit into a narrow terminal: one that wraps cannot be erased

// Who has the terminal, which is the command's own line only when nothing else is shown.
std::mutex Terminal;
int Shown = 0;
Progress* CommandsOwn = nullptr;

// The platform's own calls: the library's would fill the log with the polling.
CLUSTER_RESOURCE_STATE ReadState(HCLUSTER cluster, const std::wstring& name) {
    const HRESOURCE resource = OpenClusterResource(cluster, name.c_str());
    if (resource == nullptr) {
        return ClusterResourceStateUnknown;
    }
    const CLUSTER_RESOURCE_STATE state = GetClusterResourceState(resource, nullptr, nullptr, nullptr, nullptr);
    CloseClusterResource(resource);
    return state;
}

bool IsPending(CLUSTER_RESOURCE_STATE state) {
    return state == ClusterResourcePending || state == ClusterResourceOnlinePending ||
           state == ClusterResourceOfflinePending;
}

// The first resource that is on its way, or the first of all.
std::string StateOf(const Names& resources) {
    const HCLUSTER cluster = OpenCluster(nullptr);
    std::wstring name = resources.front();
    CLUSTER_RESOURCE_STATE state = ClusterResourceStateUnknown;
    if (cluster != nullptr) {
        state = ReadState(cluster, name);
        for (auto next = resources.begin(); next != resources.end() && !IsPending(state); ++next) {
            const CLUSTER_RESOURCE_STATE candidate = ReadState(cluster, *next);
            if (IsPending(candidate)) {
                name = *next;
                state = candidate;
            }
        }
        CloseCluster(cluster);
    }
    if (name.size() > LongestName) {
        name = name.substr(0, LongestName - 3) + L"...";
    }
    const std::string word = StateWord(state);
    return Printable(name) + ": " + (word == "unknown" ? "state unknown" : word);
}

} // namespace

bool Progress::IsWanted(const LogCapture& log) {
    return !log.IsShown() && Stream(STD_ERROR_HANDLE).IsConsole();
}

Progress::Progress(const LogCapture& log, const Names& resources)
    : Progress(
          log, resources.empty() ? std::function<std::string()>() : [resources]() { return StateOf(resources); }) {
}

Progress::Progress(const LogCapture& log, const std::function<std::string()>& describe)
    : Progress(log, describe, Patience::None) {
}

Progress::Progress(const LogCapture& log, const std::function<std::string()>& describe, Patience patience)
    : m_describe(describe), m_patience(patience), m_errors(STD_ERROR_HANDLE) {
    if (m_describe && IsWanted(log)) {
        if (m_patience == Patience::None) {
            m_shown = std::make_unique<const OtherShown>();
        } else {
            const std::lock_guard<std::mutex> terminal(Terminal);
            CommandsOwn = this;
        }
        m_thread = std::thread([this]() {
            try {
                Run();
            } catch (const std::exception&) {
                // Out of memory: no more progress is shown, the work goes on.
            }
        });
    }
}

Progress::~Progress() {
    if (m_thread.joinable()) {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_isDone = true;
        }
        m_wake.notify_one();
        m_thread.join();
        const std::lock_guard<std::mutex> terminal(Terminal);
        CommandsOwn = CommandsOwn == this ? nullptr : CommandsOwn;
        Erase();
    }
}

void Progress::Run() {
    const auto start = std::chrono::steady_clock::now();
    auto quietSince = start;
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_wake.wait_for(lock, Interval, [this]() { return m_isDone; })) {
        lock.unlock();
        const auto now = std::chrono::steady_clock::now();
        const std::string line = m_describe() + ", " +
                                 std::to_string(std::chrono::duration_cast<std::chrono::seconds>(now - start).count()) +
                                 " s";
        if (m_patience == Patience::None) {
            Draw(line);
        } else {
            const std::lock_guard<std::mutex> terminal(Terminal);
            quietSince = Shown != 0 ? now : quietSince;
            if (now - quietSince >= Quiet) {
                Draw(line);
            }
        }
        lock.lock();
    }
}

void Progress::Draw(const std::string& line) {
    const size_t length = CharacterCount(line);
    m_errors.Write("\r" + line + std::string(length < m_drawn ? m_drawn - length : 0, ' '));
    m_drawn = length > m_drawn ? length : m_drawn;
}

void Progress::Erase() {
    if (m_drawn != 0) {
        m_errors.Write("\r" + std::string(m_drawn, ' ') + "\r");
        m_drawn = 0;
    }
}

OtherShown::OtherShown() {
    const std::lock_guard<std::mutex> terminal(Terminal);
    ++Shown;
    if (CommandsOwn != nullptr) {
        CommandsOwn->Erase();
    }
}

OtherShown::~OtherShown() {
    const std::lock_guard<std::mutex> terminal(Terminal);
    --Shown;
}

CountedProgress::CountedProgress(const LogCapture& log, const char* objects, size_t total)
    : m_progress(log, [this, objects, total]() {
          return std::string("reading ") + objects + ": " + std::to_string(m_done) + " of " + std::to_string(total);
      }) {
}

void CountedProgress::Next() {
    ++m_done;
}
