// A model in a file, in a folder of its own for each test.
#ifndef MODELFILEFIXTURE_H
#define MODELFILEFIXTURE_H

#include "ChildProgram.h"
#include "SimulatorTest.h"

#include "common/TemporaryFolder.h"

#include <nlohmann/json.hpp>

#include <string>

class ModelFile : public SimulatorTest {
protected:
    void TearDown() override; // nothing left beside the file

    void Write(const std::string& text);
    // Fails the test when there is no file at this moment.
    std::string Read() const;
    nlohmann::json ReadJson() const {
        return nlohmann::json::parse(Read());
    }

    // This process's cluster calls work on the file.
    void UseFile(const std::string& text = MailCluster);

    Variables OnFile() const {
        return {{L"CLUSSIM_FILE", m_path}};
    }

private:
    const common::TemporaryFolder m_folder{L"clussim"};

protected:
    const std::wstring m_path = m_folder.File(L"model.json");
    const std::wstring m_journal = m_folder.File(L"journal");
};

#endif
