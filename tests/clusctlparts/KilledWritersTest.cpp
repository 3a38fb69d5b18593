// Files and folders that clusctl makes (reports, support bundles, snapshots of VCS), while eight processes make such
// under the same names and are killed: whatever has its name is whole, and of one writer.
#include "ChildProgram.h"
#include "KilledProcesses.h"

#include "common/Files.h"
#include "common/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

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

    std::unique_ptr<Child> Start(const std::wstring& number) const {
        return std::make_unique<Child>(L"files \"" + m_folder.Path() + L"\" " + number);
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
    harness::KilledProcesses writers([this](const std::wstring& number) { return Start(number); }, UsualKills);
    for (int attempt = 0; attempt < 3000 && m_folder.Entries().empty(); ++attempt) {
        Sleep(10);
    }
    while (writers.Count() < writers.Wanted() && !HasFailure()) {
        // Whoever writes meanwhile is seen at it.
        for (const DWORD begin = GetTickCount(), wait = static_cast<DWORD>(writers.Random(40));
             GetTickCount() - begin < wait && !HasFailure();) {
            ASSERT_NO_THROW(LookAtAll()) << "after " << writers.Count() << " kills";
        }
        writers.KillOne(0);
        ASSERT_NO_THROW(LookAtAll()) << "after " << writers.Count() << " kills";
        writers.StartAnother();
    }
    writers.StopAll();
    LookAtAll();
    EXPECT_GT(m_files, writers.Wanted() / 4) << "nobody made files";
    EXPECT_GT(m_folders, writers.Wanted() / 4) << "nobody made folders";
}
