// How files and folders that clusctl makes get their names: at once, by a move. A copy would be seen half made.
#include "NewFile.h"

#include "common/Handle.h"
#include "common/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

using testing::ElementsAre;

namespace {

const DWORD LongestWait = 30000;

// What happens to the names in a folder.
class NamesOf {
public:
    explicit NamesOf(const std::wstring& folder)
        : m_folder(CreateFileW(folder.c_str(), FILE_LIST_DIRECTORY,
                               FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                               FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OVERLAPPED, nullptr)),
          m_changed(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {
        Listen();
    }
    ~NamesOf() {
        DWORD cb = 0;
        CancelIo(m_folder.get());
        GetOverlappedResult(m_folder.get(), &m_overlapped, &cb, TRUE);
    }
    NamesOf(const NamesOf&) = delete;
    NamesOf& operator=(const NamesOf&) = delete;

    // What happened to the name (FILE_ACTION_...) until another one was added.
    std::vector<DWORD> ActionsUntil(const std::wstring& name, const std::wstring& last) {
        std::vector<DWORD> actions;
        for (;;) {
            if (WaitForSingleObject(m_changed.get(), LongestWait) != WAIT_OBJECT_0) {
                ADD_FAILURE() << "nothing was told of the last name";
                return actions;
            }
            bool isLast = false;
            for (std::size_t at = 0;;) {
                const auto* const entry = reinterpret_cast<const FILE_NOTIFY_INFORMATION*>(m_buffer + at);
                const std::wstring changed(entry->FileName, entry->FileNameLength / sizeof(wchar_t));
                if (changed == name) {
                    actions.push_back(entry->Action);
                }
                isLast = isLast || changed == last;
                if (entry->NextEntryOffset == 0) {
                    break;
                }
                at += entry->NextEntryOffset;
            }
            Listen();
            if (isLast) {
                return actions;
            }
        }
    }

private:
    void Listen() {
        m_overlapped = {};
        m_overlapped.hEvent = m_changed.get();
        EXPECT_TRUE(ReadDirectoryChangesW(m_folder.get(), m_buffer, sizeof(m_buffer), FALSE,
                                          FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_DIR_NAME |
                                              FILE_NOTIFY_CHANGE_SIZE | FILE_NOTIFY_CHANGE_LAST_WRITE,
                                          nullptr, &m_overlapped, nullptr))
            << GetLastError();
    }

    const common::Handle m_folder;
    const common::Handle m_changed;
    OVERLAPPED m_overlapped = {};
    alignas(DWORD) char m_buffer[16384] = {};
};

class NewFiles : public testing::Test {
protected:
    ~NewFiles() override {
        names.reset();
        for (const std::wstring& name : folder.Entries()) {
            common::RemoveFolder(folder.File(name));
        }
        EXPECT_TRUE(folder.Remove()) << GetLastError();
    }

    std::vector<DWORD> ActionsOn(const std::wstring& name) {
        CreateDirectoryW(folder.File(L"last").c_str(), nullptr);
        return names->ActionsUntil(name, L"last");
    }

    common::TemporaryFolder folder{L"new files"};
    std::unique_ptr<NamesOf> names = std::make_unique<NamesOf>(folder.Path());
};

} // namespace

TEST_F(NewFiles, GetTheirNameByAMove) {
    WriteNewFile(folder.File(L"page.html"), std::string(200000, 'x'));
    EXPECT_THAT(ActionsOn(L"page.html"), ElementsAre(static_cast<DWORD>(FILE_ACTION_RENAMED_NEW_NAME)));
}

TEST_F(NewFiles, FoldersDoSoWithTheirFiles) {
    WriteNewFolder(folder.File(L"copy"), {{L"main.cf", "include"}, {L"types.cf", "type"}});
    EXPECT_THAT(ActionsOn(L"copy"), ElementsAre(static_cast<DWORD>(FILE_ACTION_RENAMED_NEW_NAME)));
}

TEST_F(NewFiles, ACopyWouldBeSeen) {
    WriteNewFile(folder.File(L"from"), "x");
    CopyFileW(folder.File(L"from").c_str(), folder.File(L"to").c_str(), TRUE);
    EXPECT_THAT(ActionsOn(L"to"), testing::Contains(static_cast<DWORD>(FILE_ACTION_ADDED)));
}
