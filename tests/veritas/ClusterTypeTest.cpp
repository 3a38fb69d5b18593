// Which third-party cluster the product is configured for.
#include "ProductNames.h"
#include "VeritasTest.h"

using namespace harness;

namespace {

const std::wstring Value = L"ThirdPartyClusterType";

class VeritasClusterType : public VeritasTest {
protected:
    VeritasClusterType() {
        Registry();
    }

    // With an odd last-error value, which only the log shows.
    int Ask() {
        Forget();
        SetLastError(ImpossibleCode);
        return cluster.GetThirdPartyClusterType();
    }

    const std::string cannotQuery =
        "W Cannot query registry value ThirdPartyClusterType, Last err:" + std::to_string(ImpossibleCode);
    const std::string cannotOpen =
        "W Cannot open registry " + ProductKeyText + ", Last err:" + std::to_string(ImpossibleCode);
};

TEST_F(VeritasClusterType, IsTheNumberInTheRegistry) {
    Registry().SetNumber(ProductKey, Value, 2);
    EXPECT_EQ(Ask(), 2);
    EXPECT_EQ(TakeLog(), Lines({"I GetThirdPartyClusterType: returns: 2"}));
    EXPECT_EQ(TakeJournal(), Lines({"RegOpenKeyExW(" + ProductKeyText + ")", "RegQueryValueExW(ThirdPartyClusterType)",
                                    "RegCloseKey()"}));
    EXPECT_EQ(tools.CommandLines(), CommandList());
}

TEST_F(VeritasClusterType, TheKeyIsOpenedForReadingAndTheValueHasFourBytes) {
    Registry().SetNumber(ProductKey, Value, 1);
    typedef ImportPatch<std::remove_pointer_t<decltype(&RegOpenKeyExW)>, struct OpenTag> OpenPatch;
    typedef ImportPatch<std::remove_pointer_t<decltype(&RegQueryValueExW)>, struct QueryTag> QueryPatch;
    OpenPatch* open = nullptr;
    QueryPatch* query = nullptr;
    OpenPatch openPatch(FindImports(LibraryModule(), "advapi32.dll", "RegOpenKeyExW"),
                        [&](HKEY parent, LPCWSTR path, DWORD options, REGSAM access, PHKEY result) {
                            EXPECT_EQ(parent, HKEY_LOCAL_MACHINE);
                            EXPECT_EQ(options, 0u);
                            EXPECT_EQ(access, REGSAM(KEY_READ));
                            return open->Next(parent, path, options, access, result);
                        });
    QueryPatch queryPatch(FindImports(LibraryModule(), "advapi32.dll", "RegQueryValueExW"),
                          [&](HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD size) {
                              EXPECT_EQ(reserved, nullptr);
                              EXPECT_EQ(*size, 4u);
                              EXPECT_EQ(data[0] | data[1] | data[2] | data[3], 0);
                              return query->Next(key, name, reserved, type, data, size);
                          });
    open = &openPatch;
    query = &queryPatch;
    EXPECT_EQ(Ask(), 1);
}

TEST_F(VeritasClusterType, AnyNumberIsReturnedAsItIs) {
    for (const DWORD number : {0u, 1u, 3u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        Registry().SetNumber(ProductKey, Value, number);
        EXPECT_EQ(static_cast<DWORD>(Ask()), number);
        const std::string shown = std::to_string(static_cast<int>(number));
        EXPECT_EQ(TakeLog(), Lines({"I GetThirdPartyClusterType: returns: " + shown}));
    }
}

TEST_F(VeritasClusterType, AMissingValueIsNoneAndLogged) {
    Registry().SetNumber(ProductKey, L"ThirdPartyCluster", 7);
    EXPECT_EQ(Ask(), THIRD_PARTY_CLUSTER_TYPE_NONE);
    EXPECT_EQ(TakeLog(), Lines({cannotQuery, "I GetThirdPartyClusterType: returns: 0"}));
    EXPECT_EQ(TakeJournal(), Lines({"RegOpenKeyExW(" + ProductKeyText + ")",
                                    "RegQueryValueExW(ThirdPartyClusterType)=2", "RegCloseKey()"}));
}

TEST_F(VeritasClusterType, AMissingKeyIsNoneAndLogged) {
    Registry().SetNumber(L"SOFTWARE\\Plinthcore\\Zyntra Gate", Value, 7);
    EXPECT_EQ(Ask(), 0);
    EXPECT_EQ(TakeLog(), Lines({cannotOpen, "I GetThirdPartyClusterType: returns: 0"}));
    EXPECT_EQ(TakeJournal(), Lines({"RegOpenKeyExW(" + ProductKeyText + ")=2"}));
}

TEST_F(VeritasClusterType, TheStoredTypeIsNotChecked) {
    Registry().SetBytes(ProductKey, Value, REG_BINARY, "\x04\x03\x02\x01", 4);
    EXPECT_EQ(Ask(), 0x01020304);
    Registry().SetBytes(ProductKey, Value, REG_SZ, L"A", 4);
    EXPECT_EQ(Ask(), 0x41);
    Registry().SetBytes(ProductKey, Value, REG_NONE, "\x05\0\0\0", 4);
    EXPECT_EQ(Ask(), 5);
    EXPECT_EQ(TakeLog(), Lines({"I GetThirdPartyClusterType: returns: 5"}));
}

TEST_F(VeritasClusterType, AShortValueGivesItsLowBytes) {
    Registry().SetBytes(ProductKey, Value, REG_BINARY, "\x02\x01", 2);
    EXPECT_EQ(Ask(), 0x0102);
    Registry().SetBytes(ProductKey, Value, REG_DWORD, "\xFF", 1);
    EXPECT_EQ(Ask(), 0xFF);
    Registry().SetBytes(ProductKey, Value, REG_BINARY, "", 0);
    EXPECT_EQ(Ask(), 0);
    EXPECT_EQ(TakeLog(), Lines({"I GetThirdPartyClusterType: returns: 0"}));
}

TEST_F(VeritasClusterType, ALongValueIsNoneAndLogged) {
    Registry().SetBytes(ProductKey, Value, REG_QWORD, "\x01\x02\x03\x04\x05\x06\x07\x08", 8);
    EXPECT_EQ(Ask(), 0);
    EXPECT_EQ(TakeLog(), Lines({cannotQuery, "I GetThirdPartyClusterType: returns: 0"}));
}

TEST_F(VeritasClusterType, AFailureIsLoggedWithTheLastErrorAndNotWithItsOwnCode) {
    Registry().SetNumber(ProductKey, Value, 2);
    Platform().FailCall("RegOpenKeyExW", ERROR_ACCESS_DENIED);
    EXPECT_EQ(Ask(), 0);
    EXPECT_EQ(TakeLog(), Lines({cannotOpen, "I GetThirdPartyClusterType: returns: 0"}));
    EXPECT_EQ(TakeJournal(), Lines({"RegOpenKeyExW(" + ProductKeyText + ")=5"}));
    Platform().FailCall("RegQueryValueExW", ERROR_ACCESS_DENIED);
    EXPECT_EQ(Ask(), 0);
    EXPECT_EQ(TakeLog(), Lines({cannotQuery, "I GetThirdPartyClusterType: returns: 0"}));
    EXPECT_EQ(TakeJournal(), Lines({"RegOpenKeyExW(" + ProductKeyText + ")",
                                    "RegQueryValueExW(ThirdPartyClusterType)=5", "RegCloseKey()"}));
}

TEST_F(VeritasClusterType, AFailingCloseIsNoMatter) {
    Registry().SetNumber(ProductKey, Value, 2);
    Platform().FailCall("RegCloseKey", ERROR_INVALID_HANDLE);
    EXPECT_EQ(Ask(), 2);
    EXPECT_EQ(TakeLog(), Lines({"I GetThirdPartyClusterType: returns: 2"}));
}

TEST_F(VeritasClusterType, EachCallReadsAnew) {
    Registry().SetNumber(ProductKey, Value, 2);
    EXPECT_EQ(Ask(), 2);
    Registry().SetNumber(ProductKey, Value, 1);
    EXPECT_EQ(Ask(), 1);
}

} // namespace
