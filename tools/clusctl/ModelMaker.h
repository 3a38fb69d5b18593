// The model of the failover cluster that a recording was made of.
#ifndef CLUSCTL_MODELMAKER_H
#define CLUSCTL_MODELMAKER_H

#include "ModelFromRecording.h"
#include "RecordedCluster.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

// The model that a snapshot would have been, in the same order, as far as the recording tells.
class ModelMaker {
public:
    typedef std::vector<std::string> Texts;

    explicit ModelMaker(const recording::Recording& recording)
        : m_recording(recording), m_cluster(HearRecording(recording)) {
    }

    RecordedModel Make();

private:
    void AddLists();
    Json Nodes();
    Json Groups();
    Json Resources();
    Json ResourceOf(const RecordedObject& resource, std::size_t number);
    void AddParts(const RecordedObject& resource, Json& model, Texts& untold);
    void AddRelated(const RecordedObject& resource, Json& model);
    void AddDisk(const RecordedObject& resource, const std::string& type, Json& model, Texts& untold);
    void AddType(const RecordedObject& resource, const std::string& type, Json& model);
    void AddUntoldTypes();
    void AddNetworks(Json& model);
    Json Behaviour();
    void ChooseClasses();
    bool IsDown(const std::string& node) const;
    std::string MadeUp(const std::string& what, const std::string& name, const std::string& otherwise);
    void Refused(const RecordedObject& object, const char* part, const char* what, Json& model);
    void Miss(const std::string& sentence) {
        m_missing.push_back(sentence);
    }
    // Parts of an object, told together with the others that lack the same.
    void Untold(const Texts& parts, const std::string& name);
    void MissUntold();

    const recording::Recording& m_recording;
    RecordedCluster m_cluster;
    Texts m_missing;
    std::vector<std::pair<std::string, Texts>> m_untold; // parts, and the names of the objects
    Json m_types = Json::array();
    std::map<std::string, Json> m_classes; // by type
    Texts m_typesWithoutClass;
    Texts m_ids;
    int m_idsMadeUp = 0;
    bool m_hasCore = false;
    bool m_downNodeOwns = false;
};

// "A, B and C".
std::string Joined(const ModelMaker::Texts& texts);

// In any letter case; null when there is none.
bool IsSameName(const std::string& first, const std::string& second);
const RecordedObject* Find(const std::vector<RecordedObject>& objects, const std::string& name);

#endif
