// Files that eight processes write while they are killed: what models go by (whole files that replace
// others, each writer with a suffix of its own), and logs and journals (appended lines).
#include "ChildProgram.h"
#include "FolderTest.h"
#include "KilledProcesses.h"

#include "common/Files.h"

#include <fstream>
#include <memory>

namespace {

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
    std::unique_ptr<Child> Start(const std::wstring& number) const {
        return std::make_unique<Child>(L"write \"" + Path(L"whole") + L"\" \"" + Path(L"lines") + L"\" " + number);
    }
};

TEST_F(KilledWriters, LeaveWholeFilesAndWholeLines) {
    harness::KilledProcesses writers([this](const std::wstring& number) { return Start(number); }, UsualKills);
    for (int attempt = 0; attempt < 3000 && !common::FileExists(Path(L"whole")); ++attempt) {
        Sleep(10);
    }
    std::string last;
    int changes = 0;
    while (writers.Count() < writers.Wanted()) {
        writers.KillOne(static_cast<DWORD>(writers.Random(20)));
        const std::string whole = common::ReadWholeFile(Path(L"whole"));
        ASSERT_TRUE(IsWhole(whole, WholeFileLength))
            << "after " << writers.Count() << " kills: " << whole.substr(0, 100);
        changes += whole != last ? 1 : 0;
        last = whole;
        writers.StartAnother();
    }
    writers.StopAll();
    EXPECT_GT(changes, writers.Wanted() / 2) << "nobody wrote";

    std::ifstream lines(Path(L"lines").c_str(), std::ios::binary);
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        ASSERT_TRUE(IsWhole(line, AppendedLineLength)) << "line " << count << ": " << line.substr(0, 100);
        EXPECT_FALSE(lines.eof()) << "the last line has no end";
    }
    EXPECT_GT(count, writers.Wanted()) << "nobody appended";
}
