// resutils.dll: finding properties in lists, dependencies by type and class, comparing types.
#include "SimulatorTest.h"

#include <cstring>

namespace {

// A list with one property of each of the four most used kinds.
Bytes SampleList() {
    Bytes list;
    Append(list, 4);
    const auto add = [&list](const wchar_t* name, DWORD syntax, const Bytes& value) {
        AppendEntry(list, 0x00040003, TextOf(name));
        AppendEntry(list, syntax, value);
        Append(list, 0);
    };
    add(L"Path", 0x00010003, TextOf(L"F:\\data"));
    add(L"Large", 0x00010006, Bytes(8, 1)); // of a kind the finders do not know
    add(L"Expand", 0x00010004, TextOf(L"%TEMP%"));
    add(L"Count", 0x00010002, {42, 0, 0, 0});
    return list;
}

// Bytes that end where memory ends: one byte too far ends the test.
class GuardedBytes {
public:
    explicit GuardedBytes(const Bytes& bytes) {
        const std::size_t page = 65536;
        m_pages = static_cast<unsigned char*>(VirtualAlloc(nullptr, 2 * page, MEM_RESERVE, PAGE_NOACCESS));
        VirtualAlloc(m_pages, page, MEM_COMMIT, PAGE_READWRITE);
        m_data = m_pages + page - bytes.size();
        if (!bytes.empty()) {
            std::memcpy(m_data, bytes.data(), bytes.size());
        }
    }
    ~GuardedBytes() {
        VirtualFree(m_pages, 0, MEM_RELEASE);
    }
    GuardedBytes(const GuardedBytes&) = delete;
    GuardedBytes& operator=(const GuardedBytes&) = delete;

    void* get() const {
        return m_data;
    }

private:
    unsigned char* m_pages;
    unsigned char* m_data;
};

DWORD FindNumber(const Bytes& list, const wchar_t* name, DWORD& number) {
    const GuardedBytes bytes(list);
    return ResUtilFindDwordProperty(bytes.get(), static_cast<DWORD>(list.size()), name, &number);
}

DWORD FindText(const Bytes& list, const wchar_t* name, std::wstring& text) {
    const GuardedBytes bytes(list);
    LPWSTR found = nullptr;
    const DWORD code = ResUtilFindSzProperty(bytes.get(), static_cast<DWORD>(list.size()), name, &found);
    if (code == ERROR_SUCCESS) {
        text = found;
        EXPECT_EQ(LocalFree(found), nullptr);
    } else {
        EXPECT_EQ(found, nullptr);
    }
    return code;
}

} // namespace

class PropertyFinder : public SimulatorTest {};

TEST_F(PropertyFinder, FindsWithoutCaseAndPastKindsItDoesNotKnow) {
    std::wstring text;
    DWORD number = 0;
    EXPECT_EQ(FindText(SampleList(), L"PATH", text), 0u);
    EXPECT_EQ(text, L"F:\\data");
    EXPECT_EQ(FindNumber(SampleList(), L"count", number), 0u);
    EXPECT_EQ(number, 42u);
}

TEST_F(PropertyFinder, WithoutAPlaceForTheTextItOnlyTellsThatItIsThere) {
    Bytes list = SampleList();
    EXPECT_EQ(ResUtilFindSzProperty(list.data(), static_cast<DWORD>(list.size()), L"Path", nullptr), 0u);
}

TEST_F(PropertyFinder, AbsentPropertiesAndOtherKindsAreToldApart) {
    std::wstring text;
    DWORD number = 7;
    EXPECT_EQ(FindText(SampleList(), L"Absent", text), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(FindText({0, 0, 0, 0}, L"Path", text), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(FindText(SampleList(), L"Count", text), static_cast<DWORD>(ERROR_INVALID_DATA));
    EXPECT_EQ(FindText(SampleList(), L"Expand", text), static_cast<DWORD>(ERROR_INVALID_DATA));
    EXPECT_EQ(FindNumber(SampleList(), L"Path", number), static_cast<DWORD>(ERROR_INVALID_DATA));
    EXPECT_EQ(FindNumber(SampleList(), L"Large", number), static_cast<DWORD>(ERROR_INVALID_DATA));
    EXPECT_EQ(number, 7u);
}

TEST_F(PropertyFinder, AListCutShortAnywhereIsMalformed) {
    const Bytes list = SampleList();
    for (std::size_t cb = 0; cb < list.size(); ++cb) {
        const Bytes cut(list.begin(), list.begin() + static_cast<std::ptrdiff_t>(cb));
        DWORD number = 0;
        EXPECT_EQ(FindNumber(cut, L"Count", number), static_cast<DWORD>(ERROR_INVALID_DATA)) << cb << " bytes";
    }
}

TEST_F(PropertyFinder, LyingLengthsAreMalformedAndNothingIsReadBehindTheList) {
    const Bytes list = SampleList();
    for (std::size_t offset = 0; offset + 4 <= list.size(); offset += 4) {
        for (const unsigned char value : Bytes{0x7F, 0xFF}) {
            Bytes lying = list;
            std::fill_n(lying.begin() + static_cast<std::ptrdiff_t>(offset), 4, value);
            DWORD number = 0;
            std::wstring text;
            const DWORD found = FindNumber(lying, L"NotThere", number);
            EXPECT_TRUE(found == ERROR_INVALID_DATA || found == ERROR_FILE_NOT_FOUND) << offset;
            FindText(lying, L"Path", text);
            EXPECT_LE(text.size(), list.size());
        }
    }
    Bytes lying = list;
    lying[8] = 0xF0; // the first name's length
    lying[9] = 0xFF;
    std::wstring text;
    EXPECT_EQ(FindText(lying, L"Path", text), static_cast<DWORD>(ERROR_INVALID_DATA));
}

TEST_F(PropertyFinder, ATextWithoutATerminatorEndsWithItsEntry) {
    Bytes list;
    Append(list, 1);
    AppendEntry(list, 0x00040003, TextOf(L"A"));
    AppendEntry(list, 0x00010003, {'x', 0, 'y', 0});
    Append(list, 0);
    std::wstring text;
    EXPECT_EQ(FindText(list, L"A", text), 0u);
    EXPECT_EQ(text, L"xy");
}

TEST_F(PropertyFinder, ALengthThatIncludesThePaddingIsAccepted) {
    Bytes list;
    Append(list, 1);
    AppendEntry(list, 0x00040003, TextOf(L"A"));
    Bytes padded = TextOf(L"10.1.2.3");
    padded.resize(20);
    AppendEntry(list, 0x00010003, padded);
    Append(list, 0);
    std::wstring text;
    EXPECT_EQ(FindText(list, L"A", text), 0u);
    EXPECT_EQ(text, L"10.1.2.3");
}

TEST_F(PropertyFinder, ReadsWhatTheClusterAnswers) {
    Load();
    const Bytes list = Control(Resource(L"EVS1 IP"), CLUSCTL_RESOURCE_GET_PRIVATE_PROPERTIES);
    std::wstring text;
    EXPECT_EQ(FindText(list, L"Address", text), 0u);
    EXPECT_EQ(text, L"10.1.2.3");
}

class DependencyFinder : public SimulatorTest {
protected:
    static Bytes NameOf(HRESOURCE resource) {
        return resource ? Control(resource, CLUSCTL_RESOURCE_GET_NAME) : Bytes();
    }

    ResourceOwner OfType(const wchar_t* resource, std::wstring type) {
        return ResourceOwner(ResUtilGetResourceDependency(static_cast<HRESOURCE>(Resource(resource)), &type[0]));
    }

    ResourceOwner OfClass(const wchar_t* resource, CLUSTER_RESOURCE_CLASS wanted, BOOL recurse) {
        CLUS_RESOURCE_CLASS_INFO info = {};
        info.rc = wanted;
        return ResourceOwner(
            ResUtilGetResourceDependencyByClass(m_cluster, static_cast<HRESOURCE>(Resource(resource)), &info, recurse));
    }
};

TEST_F(DependencyFinder, FindsADirectDependencyOfTheType) {
    Load();
    EXPECT_EQ(NameOf(OfType(L"EVS1 SA", L"physical disk")), TextOf(L"EVS1 Disk"));
    const ResourceOwner attendant = Resource(L"EVS1 SA");
    WCHAR type[] = L"IP Address";
    EXPECT_EQ(ResUtilGetResourceDependency(static_cast<HRESOURCE>(attendant), type), nullptr) << "it is no direct one";
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_RESOURCE_NOT_FOUND));
}

TEST_F(DependencyFinder, ABadHandleIsToldAsSuch) {
    Load();
    WCHAR type[] = L"IP Address";
    EXPECT_EQ(ResUtilGetResourceDependency(nullptr, type), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    ExpectBadHandleCalls(1);
}

TEST_F(DependencyFinder, ComparesTheClassOnlyAndRecursesWhenAsked) {
    Load();
    EXPECT_EQ(NameOf(OfClass(L"EVS1 SA", CLUS_RESCLASS_STORAGE, FALSE)), TextOf(L"EVS1 Disk"));
    EXPECT_EQ(NameOf(OfClass(L"EVS1 Store", CLUS_RESCLASS_STORAGE, FALSE)), Bytes());
    EXPECT_EQ(NameOf(OfClass(L"EVS1 Store", CLUS_RESCLASS_STORAGE, TRUE)), TextOf(L"EVS1 Disk"));
    EXPECT_EQ(NameOf(OfClass(L"EVS1 Name", CLUS_RESCLASS_STORAGE, TRUE)), Bytes());
}

TEST_F(DependencyFinder, TypesAreComparedWithoutCase) {
    Load();
    WCHAR type[] = L"NETWORK NAME";
    EXPECT_TRUE(ResUtilResourceTypesEqual(type, Resource(L"EVS1 Name")));
    EXPECT_FALSE(ResUtilResourceTypesEqual(type, Resource(L"EVS1 IP")));
    EXPECT_FALSE(ResUtilResourceTypesEqual(nullptr, Resource(L"EVS1 Name")));
    EXPECT_FALSE(ResUtilResourceTypesEqual(type, nullptr));
    ASSERT_TRUE(Accepts("ClusterResourceControl=5"));
    EXPECT_FALSE(ResUtilResourceTypesEqual(type, Resource(L"EVS1 Name")));
}
