// Files and folders that clusctl makes (reports, support bundles, snapshots of VCS), while eight processes make such
// under the same names and are killed: whatever has its name is whole, and of one writer.
#include "ChildProgram.h"
#include "Kills.h"

#include "common/Files.h"
#include "common/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <random>

namespace {

const int Writers = 8;
const int UsualKills = 30;

bool EndsWith(const std::wstring& name, const std::wstring& ending) {
    return name.size() >= ending.size() && name.compare(name.size() - ending.size(), ending.size(), ending) == 0;
}

class KilledWritersOfNewFiles : public testing::Test {
protected:
    ~KilledWritersOfNewFiles() override { // what is left unfinished among it
        for (const std::wstring& name : m_folder.Entries()) {
            common::RemoveFolder(m_folder.File(name));
        }
        EXPECT_TRUE(m_folder.Remove()) << GetLastError();
    }

    // `number`: that of the process, three digits.
    std::unique_ptr<Child> Start(int number) const {
        const std::wstring digits = std::to_wstring(1000 + number).substr(1);
        return std::make_unique<Child>(L"files \"" + m_folder.Path() + L"\" " + digits);
    }

    // The tag of a whole text; empty when it is not.
    static std::string TagOf(const std::wstring& path, std::size_t length) {
        const std::string text = common::ReadWholeFile(path);
        const std::string tag = text.substr(0, 3);
        return text == TaggedText(tag, length) ? tag : std::string();
    }

    // Looks at everything that has its name, and removes it.
    void LookAtAll() {
        for (const std::wstring& name : m_folder.Entries()) {
            const std::wstring path = m_folder.File(name);
            if (EndsWith(name, L".html")) {
                EXPECT_NE(TagOf(path, NewFileLength), "") << "of a file";
                DeleteFileW(path.c_str());
                ++m_files;
            } else if (name.compare(0, 8, L"clusctl-") != 0) { // under way, or left so
                const std::string tag = TagOf(path + L"\\" + NewFolderNames.front(), FileInFolderLength);
                EXPECT_NE(tag, "") << "of a file in a folder";
                for (const std::wstring& file : NewFolderNames) {
                    EXPECT_EQ(TagOf(path + L"\\" + file, FileInFolderLength), tag);
                }
                EXPECT_TRUE(common::RemoveFolder(path)) << GetLastError();
                ++m_folders;
            }
        }
    }

    common::TemporaryFolder m_folder{L"killed writers"};
    int m_files = 0;
    int m_folders = 0;
};

} // namespace

TEST_F(KilledWritersOfNewFiles, LeaveWholeFilesAndWholeFolders) {
    const int kills = harness::KillCount(UsualKills);
    std::mt19937 random(1);
    std::array<std::unique_ptr<Child>, Writers> children;
    int started = 0;
    for (auto& child : children) {
        child = Start(started++);
    }
    for (int attempt = 0; attempt < 3000 && m_folder.Entries().empty(); ++attempt) {
        Sleep(10);
    }
    for (int kill = 0; kill < kills && !HasFailure(); ++kill) {
        auto& child = children[random() % Writers];
        // Whoever writes meanwhile is seen at it.
        for (const DWORD begin = GetTickCount(), wait = random() % 40;
             GetTickCount() - begin < wait && !HasFailure();) {
            ASSERT_NO_THROW(LookAtAll()) << "after " << kill << " kills";
        }
        EXPECT_TRUE(child->RunsFor(0)) << "it ended by itself";
        child->Stop();
        ASSERT_NO_THROW(LookAtAll()) << "after " << kill << " kills";
        child = Start(started++ % 1000);
    }
    for (auto& child : children) {
        child->Stop();
    }
    LookAtAll();
    EXPECT_GT(m_files, kills / 4) << "nobody made files";
    EXPECT_GT(m_folders, kills / 4) << "nobody made folders";
}
