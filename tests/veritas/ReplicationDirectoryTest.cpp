// The folder into which a RegRep resource replicates, as creation and listing of the product's set derive it.
#include "SetCreation.h"

#include <cstdlib>

using namespace harness;

namespace {

class VeritasReplicationDirectory : public VeritasTest {
protected:
    VeritasReplicationDirectory() {
        tools.AnswerPrefix(L"hares -list ", "");
    }

    // What a creation for this path gives the RegRep resource; "refused " in front when the path cannot be split.
    std::string OfCreation(const std::wstring& path) {
        set.info.sDataPath = path;
        EXPECT_TRUE(set.Create());
        const std::string prefix = "$ hares -modify EVS1-RegRep  ReplicationDirectory ";
        return Directory(path, prefix, " ");
    }

    // What the list of the product's resources is asked for with this data root.
    std::string OfListing(const std::wstring& path) {
        Registry().SetText(ProductKey, L"DataRootPath", path);
        Names names;
        EXPECT_TRUE(cluster.CollectKOVAResNames(names));
        return Directory(path, "$ hares -list  Type=RegRep  ReplicationDirectory=", " ");
    }

    std::string Of(const std::wstring& path) {
        const std::string created = OfCreation(path);
        EXPECT_EQ(OfListing(path), created);
        return created;
    }

    // The directory part of a path as the runtime library of this system gives it, with room for what it may be.
    static std::wstring RuntimesDirectory(const std::wstring& path) {
        wchar_t drive[1024] = {};
        wchar_t directory[1024] = {};
        wchar_t name[1024] = {};
        wchar_t extension[1024] = {};
        _wsplitpath(path.c_str(), drive, directory, name, extension);
        return directory;
    }

    SetCreation set{*this};

private:
    std::string Directory(const std::wstring& path, const std::string& prefix, const std::string& end) {
        std::string found = "nothing was run";
        bool refused = false;
        for (const std::string& line : Split(Told(*this))) {
            if (BeginsWith(line, prefix)) {
                found = line.substr(prefix.size(), line.size() - prefix.size() - end.size());
            }
            refused = refused || line == "W Cannot split path " + Utf8(path);
        }
        return (refused ? "refused " : "") + found;
    }
};

TEST_F(VeritasReplicationDirectory, IsRegRepBesideTheLastNameWithoutTheDrive) {
    EXPECT_EQ(Of(L"F:\\Data\\Store"), "\\Data\\RegRep");
    EXPECT_EQ(Of(L"f:\\Data\\Deeper\\Store.dat"), "\\Data\\Deeper\\RegRep");
    EXPECT_EQ(Of(L"F:\\Store"), "\\RegRep");
}

TEST_F(VeritasReplicationDirectory, IsRegRepInAFolderThatEndsInABackslash) {
    EXPECT_EQ(Of(L"F:\\Data\\Store\\"), "\\Data\\Store\\RegRep");
    EXPECT_EQ(Of(L"F:\\Data\\"), "\\Data\\RegRep");
}

TEST_F(VeritasReplicationDirectory, OfADrivesRootIsRegRep) {
    EXPECT_EQ(Of(L"F:\\"), "\\RegRep");
    EXPECT_EQ(Of(L"\\"), "\\RegRep");
}

TEST_F(VeritasReplicationDirectory, OfABareDriveIsEmptyAndTold) {
    EXPECT_EQ(Of(L"F:"), "refused ");
}

TEST_F(VeritasReplicationDirectory, OfABareNameIsEmptyAndTold) {
    EXPECT_EQ(Of(L"Store"), "refused ");
    EXPECT_EQ(Of(L"F:Store"), "refused ");
    EXPECT_EQ(Of(L".."), "refused ");
}

TEST_F(VeritasReplicationDirectory, OfAnEmptyPathIsEmptyAndTold) {
    EXPECT_EQ(Of(L""), "refused ");
}

TEST_F(VeritasReplicationDirectory, OfAMissingDataRootIsEmptyAndTold) {
    Names names;
    EXPECT_TRUE(cluster.CollectKOVAResNames(names));
    const std::string told = Told(*this);
    EXPECT_THAT(told, ::testing::HasSubstr("W Cannot split path \n"));
    EXPECT_THAT(told, ::testing::HasSubstr("$ hares -list  Type=RegRep  ReplicationDirectory= \n"));
}

TEST_F(VeritasReplicationDirectory, OfARelativePathBeginsWithABackslash) {
    EXPECT_EQ(Of(L"Data\\Store"), "\\Data\\RegRep");
    EXPECT_EQ(Of(L"F:Data\\Store"), "\\Data\\RegRep");
}

TEST_F(VeritasReplicationDirectory, OfAUncPathHasOneBackslashInFront) {
    EXPECT_EQ(Of(L"\\\\server\\share\\Store"), "\\server\\share\\RegRep");
    EXPECT_EQ(Of(L"\\\\server\\share\\"), "\\server\\share\\RegRep");
    EXPECT_EQ(Of(L"\\\\server"), "\\RegRep");
}

TEST_F(VeritasReplicationDirectory, TakesEitherSlashAndJoinsWithOneBackslash) {
    EXPECT_EQ(Of(L"F:/Data/Store"), "\\Data\\RegRep");
    EXPECT_EQ(Of(L"F:/Data\\Store/"), "\\Data\\Store\\RegRep");
    EXPECT_EQ(Of(L"F:\\Data/Deep\\Store"), "\\Data/Deep\\RegRep");
    EXPECT_EQ(Of(L"F://Data\\\\"), "\\Data\\RegRep");
}

TEST_F(VeritasReplicationDirectory, KeepsBlanksAndDotsOfFolders) {
    EXPECT_EQ(Of(L"F:\\My Data\\v1.2\\Store.dat"), "\\My Data\\v1.2\\RegRep");
}

TEST_F(VeritasReplicationDirectory, HoldsAFolderOf255Characters) {
    const std::wstring folder = L"\\" + std::wstring(253, L'd') + L"\\";
    EXPECT_EQ(Of(L"F:" + folder), Utf8(folder) + "RegRep");
    EXPECT_EQ(Of(L"F:" + folder + L"Store"), Utf8(folder) + "RegRep");
}

// The splitter of one system's runtime library cuts a part that is too long, that of another gives nothing at all.
TEST_F(VeritasReplicationDirectory, OfALongerFolderIsWhatTheRuntimesSplitterMakesOfIt) {
    for (const std::size_t length : {256u, 257u, 300u, 600u}) {
        const std::wstring path = L"F:\\" + std::wstring(length - 2, L'd') + L"\\";
        const std::wstring directory = RuntimesDirectory(path);
        ASSERT_LT(directory.size(), 256u);
        EXPECT_EQ(Of(path), directory.empty() ? "refused " : Utf8(directory) + "\\RegRep") << length;
    }
}

TEST_F(VeritasReplicationDirectory, OfALongerNameIsWhatTheRuntimesSplitterMakesOfIt) {
    for (const std::size_t length : {255u, 256u, 300u}) {
        const std::wstring path = L"F:\\Data\\" + std::wstring(length, L'n');
        EXPECT_EQ(Of(path), RuntimesDirectory(path).empty() ? "refused " : "\\Data\\RegRep") << length;
    }
    EXPECT_EQ(RuntimesDirectory(L"F:\\Data\\" + std::wstring(255, L'n')), L"\\Data\\");
}

} // namespace
