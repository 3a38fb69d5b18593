// The model of the failover cluster that a recording was made of.
#ifndef CLUSCTL_MODELMAKER_H
#define CLUSCTL_MODELMAKER_H

#include "MissingParts.h"
#include "ModelFromRecording.h"
#include "RecordedCluster.h"

#include <map>
#include <string>
#include <vector>

// The model that a snapshot would have been, in the same order, as far as the recording tells.
class ModelMaker {
public:
    typedef MissingParts::Texts Texts;

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
    Json Behaviour(Json& cluster); // marks there what was refused
    void ChooseClasses();
    bool IsDown(const std::string& node) const;
    std::string MadeUp(const std::string& what, const std::string& name, const std::string& otherwise);
    void Refused(const RecordedObject& object, const char* part, const char* what, Json& model);
    void Miss(const std::string& sentence) {
        m_missing.Miss(sentence);
    }

    const recording::Recording& m_recording;
    RecordedCluster m_cluster;
    MissingParts m_missing;
    Json m_types = Json::array();
    std::map<std::string, Json> m_classes; // by type
    Texts m_typesWithoutClass;
    Texts m_ids;
    int m_idsMadeUp = 0;
    bool m_hasCore = false;
    bool m_downNodeOwns = false;
};

// In any letter case; null when there is none.
const RecordedObject* Find(const std::vector<RecordedObject>& objects, const std::string& name);

#endif
