// Files that eight processes write while they are killed: what models go by (whole files that replace
// others, each writer with a suffix of its own), and logs and journals (appended lines).
#include "ChildProgram.h"
#include "FolderTest.h"
#include "Kills.h"

#include "common/Files.h"

#include <array>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>

namespace {

const int Writers = 8;
const int UsualKills = 60;

// "TAG:TAG:...": some texts of one writer, each of them of one length.
bool IsWhole(const std::string& text, std::size_t length) {
    const std::string tag = text.substr(0, 4);
    std::size_t begin = 0;
    for (; begin < text.size() && text.compare(begin, tag.size(), tag) == 0; begin += tag.size()) {
    }
    return begin == length && text.size() == length;
}

} // namespace

class KilledWriters : public FolderTest {
protected:
    // `number`: that of the process, three digits.
    std::unique_ptr<Child> Start(int number) const {
        const std::wstring digits = std::to_wstring(1000 + number).substr(1);
        return std::make_unique<Child>(L"write \"" + Path(L"whole") + L"\" \"" + Path(L"lines") + L"\" " + digits);
    }
};

TEST_F(KilledWriters, LeaveWholeFilesAndWholeLines) {
    const int kills = harness::KillCount(UsualKills);
    std::mt19937 random(1);
    std::array<std::unique_ptr<Child>, Writers> children;
    int started = 0;
    for (auto& child : children) {
        child = Start(started++);
    }
    for (int attempt = 0; attempt < 3000 && !common::FileExists(Path(L"whole")); ++attempt) {
        Sleep(10);
    }
    std::string last;
    int changes = 0;
    for (int kill = 0; kill < kills; ++kill) {
        auto& child = children[random() % Writers];
        EXPECT_TRUE(child->RunsFor(random() % 20)) << "it ended by itself";
        child->Stop();
        const std::string whole = common::ReadWholeFile(Path(L"whole"));
        ASSERT_TRUE(IsWhole(whole, WholeFileLength)) << "after " << kill << " kills: " << whole.substr(0, 100);
        changes += whole != last ? 1 : 0;
        last = whole;
        child = Start(started++);
    }
    for (auto& child : children) {
        child->Stop();
    }
    EXPECT_GT(changes, kills / 2) << "nobody wrote";

    std::ifstream lines(Path(L"lines").c_str(), std::ios::binary);
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        ASSERT_TRUE(IsWhole(line, AppendedLineLength)) << "line " << count << ": " << line.substr(0, 100);
        EXPECT_FALSE(lines.eof()) << "the last line has no end";
    }
    EXPECT_GT(count, kills) << "nobody appended";
}
