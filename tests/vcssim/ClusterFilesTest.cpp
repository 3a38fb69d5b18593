// Which files a cluster consists of, and whose turn it is.
#include "ToolTest.h"

#include "ToolTurn.h"

#include "common/Files.h"

using ::testing::ElementsAre;

using vcssim::ClusterFiles;
using vcssim::ToolTurn;

class ToolClusterFiles : public ToolTest {
protected:
    ToolClusterFiles() : m_files(Path(L"")) {
    }

    ClusterFiles m_files;
};

TEST_F(ToolClusterFiles, LieBesideTheMainCf) {
    EXPECT_EQ(m_files.Folder() + L"main.cf", Path(L""));
    EXPECT_EQ(m_files.Included("main.cf.types"), Path(L".types"));
    EXPECT_EQ(ClusterFiles(L"main.cf").Folder(), L"");
    EXPECT_EQ(ClusterFiles(L"main.cf").Included("types.cf"), L"types.cf");
    EXPECT_EQ(ClusterFiles(L"D:main.cf").Folder(), L"D:");
    EXPECT_EQ(ClusterFiles(L"conf/main.cf").Included("\xC3\xA4.cf"), L"conf/\u00e4.cf");
}

TEST_F(ToolClusterFiles, TheRunningConfigurationIsTheLiveOneWhileItDiffers) {
    EXPECT_EQ(m_files.Running(), m_files.MainCf());
    Run("hares", "-modify G-IP Address 1");
    EXPECT_EQ(m_files.Running(), m_files.Live());
    Run("haconf", "-dump -makero");
    EXPECT_EQ(m_files.Running(), m_files.MainCf());
    EXPECT_EQ(ReadFile(L".previous"), Sample);
    EXPECT_EQ(m_files.Previous(), Path(L".previous"));
}

TEST_F(ToolClusterFiles, ACopyNeedsThoseThatExist) {
    EXPECT_THAT(m_files.Names(), ElementsAre(L"main.cf", L"main.cf.state.json")) << "there are no types.cf";
    WriteFile(L".types", "");
    WriteFile(L"", "include \"main.cf.types\"\ninclude \"absent.cf\"\ninclude \"main.cf.types\"\nsystem NODE1\n");
    Run("haconf", "-makerw");
    WriteFile(L".live", ReadFile(L""));
    EXPECT_THAT(m_files.Names(), ElementsAre(L"main.cf", L"main.cf.live", L"main.cf.state.json", L"main.cf.types"));
}

TEST_F(ToolClusterFiles, AMalformedConfigurationIncludesNothing) {
    WriteFile(L".types", "");
    WriteFile(L"", "include \"main.cf.types\"\ngroup G (\n");
    EXPECT_THAT(m_files.Names(), ElementsAre(L"main.cf", L"main.cf.state.json"));
    EXPECT_THROW(ClusterFiles(Path(L".absent")).Names(), common::FileError);
}

TEST_F(ToolClusterFiles, ATurnShowsAndKeepsOthersAway) {
    common::FileLock lock(m_files.Lock());
    {
        const ToolTurn turn(m_files);
        EXPECT_TRUE(HasFile(L".lock"));
        const common::Handle other(CreateThread(
            nullptr, 0,
            [](void* context) -> DWORD {
                return common::FileLock::Turn(*static_cast<common::FileLock*>(context), 50).Code();
            },
            &lock, 0, nullptr));
        WaitForSingleObject(other.get(), INFINITE);
        DWORD code = 0;
        EXPECT_TRUE(GetExitCodeThread(other.get(), &code));
        EXPECT_EQ(code, static_cast<DWORD>(WAIT_TIMEOUT));
    }
    EXPECT_FALSE(HasFile(L".lock"));
    EXPECT_TRUE(common::FileLock::Turn(lock, 0));
}
