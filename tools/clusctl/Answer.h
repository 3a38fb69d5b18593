// What a command says in the end: its answer, or why it is not the one that was asked for, in the form that was asked
// for.
#ifndef CLUSCTL_ANSWER_H
#define CLUSCTL_ANSWER_H

#include "Deployment.h"
#include "Report.h"
#include "Simulation.h"
#include "Stream.h"
#include "VcsToolFiles.h"

#include <string>
#include <vector>

// Throws Failure (OutputFailed) when it cannot be written.
void Print(const Stream& output, const std::string& text);

// "error" of a document, and the same for people.
Json ErrorJson(const Failure& failure);
std::string ErrorText(const Failure& failure);

class Answer {
public:
    Answer(const Stream& output, const Stream& errors, bool isJson, bool isRehearsal);

    // Said whatever comes of the command: who answered, and the library's own lines, which are detail only.
    void SetBesides(const Simulation& simulation, bool isSimulated, const std::vector<std::string>& log);

    // The deployment that a command believed in that could not do its work.
    void SetDeployment(const Deployment& deployment);

    // The files of the VCS tools that the command runs.
    void SetTools(const std::vector<VcsToolFile>& tools);

    void Show(Report report) const;

    // The same for the last thing that is shown: false when it could not be written, which is said.
    bool TryShow(Report report, bool hasChanged) const;

    // `shown`: what there is to show of the work done until then, if anything.
    void Show(const Failure& failure, const Report& shown) const;

private:
    void Warn(const std::vector<std::string>& warnings) const;
    void ShowLog() const;

    const Stream& m_output;
    const Stream& m_errors;
    bool m_isJson;
    bool m_isRehearsal;
    std::vector<std::string> m_log;
    Json m_besides = {{"log", Json::array()}, {"simulated", nullptr}};
    Json m_tools = Json::object();
    Json m_deployment = Json::object();
};

#endif
