#include "Answer.h"

#include "RehearsedRun.h"
#include "Text.h"

#include <utility>

namespace {

Json NullIfEmpty(const std::string& text) {
    return text.empty() ? Json() : Json(text);
}

} // namespace

void Print(const Stream& output, const std::string& text) {
    const DWORD code = output.Write(text);
    if (code != ERROR_SUCCESS) {
        throw Failure(Errors::OutputFailed, "cannot write the output: " + ErrorText(code));
    }
}

Json ErrorJson(const Failure& failure) {
    Json error;
    error["code"] = failure.Kind().name;
    error["message"] = failure.what();
    error["reason"] = failure.Win32() == 0 ? Json() : NullIfEmpty(SystemText(failure.Win32()));
    error["win32"] = failure.Win32() == 0 ? Json() : Json(failure.Win32());
    error["hint"] = NullIfEmpty(failure.Hint());
    return {{"error", error}};
}

std::string ErrorText(const Failure& failure) {
    const std::string text = std::string("clusctl: ") + failure.what() + "\n";
    return failure.Hint().empty() ? text : text + "  " + failure.Hint() + "\n";
}

Answer::Answer(const Stream& output, const Stream& errors, bool isJson, bool isRehearsal)
    : m_output(output), m_errors(errors), m_isJson(isJson), m_isRehearsal(isRehearsal) {
}

void Answer::SetBesides(const Simulation& simulation, bool isSimulated, const std::vector<std::string>& log) {
    const std::wstring& rehearsed = RehearsedRun::Rehearsed();
    const std::wstring& file = rehearsed.empty() ? simulation.File() : rehearsed;
    if (m_isRehearsal) {
        m_errors.Write("clusctl: simulated: a rehearsal on a copy of " + QuotedPath(file) + "\n");
    } else if (isSimulated && !RehearsedRun::IsOne()) { // of a rehearsed command the rehearsal says it
        m_errors.Write("clusctl: simulated: the answers come from " +
                       (file.empty()
                            ? "a simulator without a file: " + Printable(simulation.Variable()) + " does not name one"
                            : QuotedPath(file)) +
                       "\n");
    }
    m_log = log;
    m_besides = {
        {"log", log},
        {"simulated", !isSimulated && !m_isRehearsal ? Json() : Json(file.empty() ? std::wstring(L"no file") : file)}};
    m_besides.update(m_tools);
}

void Answer::SetDeployment(const Deployment& deployment) {
    m_deployment = {{"deployment", DeploymentJson(deployment)}};
}

void Answer::SetTools(const std::vector<VcsToolFile>& tools) {
    Json records = Json::array();
    for (const VcsToolFile& tool : tools) {
        records.push_back({{"name", tool.tool}, {"file", TextOrNull(tool.path)}});
        m_errors.Write("clusctl: " + Printable(tool.tool) + " is " +
                       (tool.path.empty() ? "not on the search path" : QuotedPath(tool.path)) + "\n");
    }
    m_tools = {{"tools", records}};
}

void Answer::Show(Report report) const {
    Warn(report.Warnings());
    ShowLog();
    if (!report.IsPrinted()) {
        Print(m_output, m_isJson ? std::move(report).ToJson(m_besides) : report.ToText());
    }
}

bool Answer::TryShow(Report report, bool hasChanged) const {
    try {
        Show(std::move(report));
        return true;
    } catch (const Failure& unwritten) {
        m_errors.Write(ErrorText(Failure(unwritten.what() + std::string(hasChanged ? "; the work was done" : ""))));
        return false;
    }
}

void Answer::Show(const Failure& failure, const Report& shown) const {
    Json besides = ErrorJson(failure);
    besides.update(m_deployment);
    besides.update(m_besides);
    try {
        Print(m_output, m_isJson ? Report(shown).ToJson(besides) : shown.ToText());
    } catch (const Failure& unwritten) {
        m_errors.Write(ErrorText(unwritten)); // the failure itself is told all the same
    }
    Warn(shown.Warnings());
    m_errors.Write(ErrorText(failure));
    ShowLog();
}

void Answer::Warn(const std::vector<std::string>& warnings) const {
    for (const std::string& warning : warnings) {
        m_errors.Write("clusctl: warning: " + warning + "\n");
    }
}

void Answer::ShowLog() const {
    for (const std::string& line : m_log) {
        m_errors.Write("clusctl: log: " + line + "\n");
    }
}
