// Each file of the folder "scenarios" gives the time line that stands in it. The rules are told by the files' names and
// first sentences.
#include "Scenario.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <fstream>
#include <sstream>

#include <dirent.h>

namespace {

std::vector<std::string> ScenarioNames() {
    std::vector<std::string> names;
    DIR* const folder = opendir(SCENARIO_FOLDER);
    while (const dirent* const entry = folder ? readdir(folder) : nullptr) {
        const std::string name = entry->d_name;
        if (name.size() > 4 && name.compare(name.size() - 4, 4, ".txt") == 0) {
            names.push_back(name.substr(0, name.size() - 4));
        }
    }
    if (folder) {
        closedir(folder);
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string PathOf(const std::string& name) {
    return std::string(SCENARIO_FOLDER) + "/" + name + ".txt";
}

std::string TextOf(const std::string& name) {
    std::ifstream file(PathOf(name), std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// "a-system-goes-down" -> "ASystemGoesDown"
std::string TestName(const ::testing::TestParamInfo<std::string>& info) {
    std::string name;
    bool begins = true;
    for (const char c : info.param) {
        if (c != '-') {
            name += begins ? static_cast<char>(std::toupper(static_cast<unsigned char>(c))) : c;
        }
        begins = c == '-';
    }
    return name;
}

int Update() {
    for (const std::string& name : ScenarioNames()) {
        const std::string played = scenario::Play(scenario::Read(TextOf(name)), scenario::Engines::OneForEach);
        std::ofstream(PathOf(name), std::ios::binary) << played;
    }
    return 0;
}

} // namespace

class VcsScenario : public ::testing::TestWithParam<std::string> {};

TEST_P(VcsScenario, HasItsTimeLine) {
    const std::string text = TextOf(GetParam());
    const scenario::Scenario read = scenario::Read(text);
    EXPECT_EQ(scenario::Play(read, scenario::Engines::OneForEach), text);
    EXPECT_EQ(scenario::Play(read, scenario::Engines::OneForEach), text) << "the second time";
    EXPECT_EQ(scenario::Play(read, scenario::Engines::OneForAll), text) << "with one engine for all requests";
}

INSTANTIATE_TEST_SUITE_P(Of, VcsScenario, ::testing::ValuesIn(ScenarioNames()), TestName);

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--update") == 0) {
        return Update();
    }
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
