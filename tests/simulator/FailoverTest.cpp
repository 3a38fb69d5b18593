// The failover scenarios: each a model with changes, events, and the time line that they lead to. See
// scenarios/README.md; CLUSSIM_UPDATE_SCENARIOS=1 in the environment writes the time lines anew.
#include "SimulatorTest.h"

#include "common/Environment.h"
#include "common/Files.h"
#include "common/Json.h"
#include "common/Text.h"

#include <cstdio>
#include <sstream>

using common::Json;

namespace {

const std::int64_t Start = 12999942400000; // clock milliseconds; a morning, 7:06

std::wstring PathOf(const std::string& file) {
    return common::ToUtf16(SCENARIOS "/" + file);
}

std::string ReadFile(const std::string& file) {
    const std::wstring path = PathOf(file);
    return common::ReadToEnd(common::OpenForReading(path), path);
}

// Words between blanks; quotes keep blanks.
std::vector<std::string> Words(const std::string& line) {
    std::vector<std::string> words;
    bool isInside = false;
    bool isQuoted = false;
    for (const char c : line) {
        if (c == '"') {
            isQuoted = !isQuoted;
            if (isQuoted) {
                words.emplace_back();
            }
            isInside = isQuoted;
        } else if (c == ' ' && !isQuoted) {
            isInside = false;
        } else {
            if (!isInside) {
                words.emplace_back();
                isInside = true;
            }
            words.back() += c;
        }
    }
    return words;
}

// The object of that name in one of the model's lists; "cluster" is the cluster itself.
Json& ObjectNamed(Json& model, const std::string& name) {
    if (name == "cluster") {
        return model["cluster"];
    }
    for (const char* list : {"nodes", "groups", "resources"}) {
        for (Json& object : model[list]) {
            if (object["name"] == name) {
                return object;
            }
        }
    }
    throw std::runtime_error("no object " + name);
}

std::string Happening(const std::vector<std::string>& words) {
    char error[200] = "";
    const unsigned long code = ClusSimHappen(words.at(1).c_str(), words.size() > 2 ? words[2].c_str() : nullptr,
                                             words.size() > 3 ? words[3].c_str() : nullptr, error, sizeof(error));
    if (error[0] != '\0') {
        return std::string("! ") + error;
    }
    return code == ERROR_SUCCESS || code == ERROR_IO_PENDING ? "" : "! refused with " + std::to_string(code);
}

template <typename Read> std::string TextOf(Read read) {
    std::string text(read(nullptr, 0), '\0');
    read(&text[0], text.size());
    text.pop_back();
    return text;
}

void AddTimeLine(std::vector<std::string>& lines) {
    std::istringstream events(TextOf(ClusSimReadEvents));
    for (std::string line; std::getline(events, line);) {
        const Json event = common::ParseJson(line);
        char time[32];
        std::snprintf(time, sizeof(time), "> %8.3f  ",
                      static_cast<double>(event["at"].get<std::int64_t>() - Start) / 1000);
        const std::string why = event["why"].get<std::string>();
        lines.push_back(time + event["kind"].get<std::string>() + " " + event["name"].get<std::string>() + " " +
                        event["what"].get<std::string>() + (why.empty() ? "" : " (" + why + ")"));
    }
    ClusSimRecordEvents(1);
}

// Where the groups are in the end, and what of them is not online.
void AddOutcome(std::vector<std::string>& lines) {
    const Json model = common::ParseJson(ReadModel());
    for (const Json& group : model["groups"]) {
        std::string rest;
        for (const Json& resource : model["resources"]) {
            if (resource["group"] == group["name"] && resource["state"] != "Online") {
                rest += (rest.empty() ? "; " : ", ") + resource["name"].get<std::string>() + " " +
                        resource["state"].get<std::string>();
            }
        }
        lines.push_back("= " + group["name"].get<std::string>() + " on " + group["owner"].get<std::string>() +
                        (rest.empty() ? ", all online" : rest));
    }
}

} // namespace

class Failover : public SimulatorTest {
protected:
    // Plays every scenario of the file.
    void PlayAll(const std::string& file) {
        std::istringstream text(ReadFile(file));
        std::string played;
        std::size_t count = 0;
        for (std::string line; std::getline(text, line);) {
            if (line.rfind("> ", 0) == 0 || line.rfind("= ", 0) == 0 || line.rfind("! ", 0) == 0) {
                m_expected.push_back(line);
                continue;
            }
            if (line.rfind("== ", 0) == 0) {
                played += Finish();
                m_title = line;
                ++count;
            }
            Take(line);
            played += line.empty() ? "" : line + "\n";
        }
        played += Finish();
        EXPECT_GT(count, 0u);
        if (!common::EnvironmentVariable(L"CLUSSIM_UPDATE_SCENARIOS").empty()) {
            common::WriteWholeFile(PathOf(file), played);
        }
    }

private:
    void Take(const std::string& line) {
        const std::vector<std::string> words = Words(line);
        if (words.empty() || words[0] == "==" || words[0] == "#") {
            return;
        }
        if (words[0] == "model") {
            m_model = common::ParseJson(ReadFile(words.at(1)));
            m_model["cluster"]["clock"] = Start;
        } else if (words[0] == "with") {
            const std::string change = line.substr(line.find('{'));
            ObjectNamed(m_model, words.at(1)).merge_patch(common::ParseJson(change));
        } else if (words[0] == "do") {
            if (!m_isLoaded) {
                m_isLoaded = true;
                ASSERT_EQ(LoadError(m_model.dump()), "") << m_title;
                ClusSimRecordEvents(1);
            }
            const std::string refusal = Happening(words);
            AddTimeLine(m_lines);
            if (!refusal.empty()) {
                m_lines.push_back(refusal);
            }
        } else {
            FAIL() << "not understood: " << line;
        }
    }

    // What the scenario has led to, as the file shows it.
    std::string Finish() {
        if (m_title.empty()) {
            return "";
        }
        AddOutcome(m_lines);
        EXPECT_EQ(m_lines, m_expected) << m_title;
        std::string shown;
        for (const std::string& line : m_lines) {
            shown += line + "\n";
        }
        m_lines.clear();
        m_expected.clear();
        m_isLoaded = false;
        return shown + "\n";
    }

    Json m_model;
    std::string m_title;
    bool m_isLoaded = false;
    std::vector<std::string> m_lines;
    std::vector<std::string> m_expected;
};

TEST_F(Failover, OfNodesThatAreLostAndComeBack) {
    PlayAll("nodes.txt");
}

TEST_F(Failover, OfEightNodes) {
    PlayAll("eight-nodes.txt");
}

TEST_F(Failover, OfNodesThatArePaused) {
    PlayAll("paused.txt");
}

TEST_F(Failover, OfAClusterThatHasItsQuorumOrHasNot) {
    PlayAll("quorum.txt");
}

TEST_F(Failover, OfTheClustersOwnGroup) {
    PlayAll("core.txt");
}

TEST_F(Failover, OfResourcesThatFail) {
    PlayAll("failures.txt");
}

TEST_F(Failover, ByHandAndBack) {
    PlayAll("moves.txt");
}

TEST_F(Failover, OfSeveralThingsAtOnce) {
    PlayAll("together.txt");
}

namespace {

// So many floors of two resources, each of which depends on both of the floor below.
Json Diamonds(int floors) {
    Json model =
        common::ParseJson(R"({"cluster": {"name": "C", "coreGroup": "none", "behaviour": {"failures": "acted-on"}},
        "nodes": [{"name": "N1"}, {"name": "N2"}], "groups": [{"name": "G", "owner": "N1"}]})");
    for (int floor = 0; floor < floors; ++floor) {
        for (const char* side : {"a", "b"}) {
            const std::string name = side + std::to_string(floor);
            Json resource = {
                {"name", name}, {"type", "Generic Service"}, {"id", name}, {"group", "G"}, {"state", "Online"}};
            if (floor > 0) {
                resource["dependsOn"] = {"a" + std::to_string(floor - 1), "b" + std::to_string(floor - 1)};
            }
            model["resources"].push_back(resource);
        }
    }
    return model;
}

bool IsAllOnline(const Json& model) {
    for (const Json& resource : model["resources"]) {
        if (resource["state"] != "Online") {
            return false;
        }
    }
    return true;
}

} // namespace

// There are 2 to the power of 60 ways through the diamonds.
TEST_F(Failover, LooksAtEachResourceOfDiamondsOfDependenciesOnce) {
    Load(Diamonds(60).dump());
    EXPECT_EQ(ClusSimHappen("fail", "a0", nullptr, nullptr, 0), 0u);
    EXPECT_TRUE(IsAllOnline(common::ParseJson(ReadModel())));
    EXPECT_EQ(ClusSimHappen("move", "G", "N2", nullptr, 0), 0u);
    EXPECT_TRUE(IsAllOnline(common::ParseJson(ReadModel())));
    EXPECT_EQ(ClusSimHappen("node-down", "N2", nullptr, nullptr, 0), 0u);
    const Json model = common::ParseJson(ReadModel());
    EXPECT_TRUE(IsAllOnline(model));
    EXPECT_EQ(model["groups"][0]["owner"], "N1");
    EXPECT_EQ(ClusSimHappen("offline", "a0", nullptr, nullptr, 0), 0u);
    EXPECT_FALSE(IsAllOnline(common::ParseJson(ReadModel())));
}

TEST_F(Failover, IsShownByManyScenariosEachWithASentence) {
    std::size_t count = 0;
    for (const char* file : {"core", "eight-nodes", "failures", "moves", "nodes", "paused", "quorum", "together"}) {
        std::istringstream text(ReadFile(std::string(file) + ".txt"));
        for (std::string line; std::getline(text, line);) {
            if (line.rfind("== ", 0) == 0) {
                ++count;
                EXPECT_GE(Words(line).size(), 6u) << line;
            }
        }
    }
    EXPECT_GE(count, 80u);
}
