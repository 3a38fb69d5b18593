// A resource object and its handle; deleting.
#include "ClusterFixture.h"

using namespace harness;

namespace {

class ResourceHandle : public ClusterTest {
protected:
    HRESOURCE OpenRaw(const wchar_t* name) {
        const HRESOURCE handle = OpenClusterResource(cluster.GetHandle(), name);
        EXPECT_NE(handle, nullptr);
        return handle;
    }

    OpenedCluster cluster{*this};
};

TEST_F(ResourceHandle, StartsWithoutOne) {
    {
        CClusterResource resource;
        EXPECT_EQ(resource.GetResourceHandle(), nullptr);
        resource.Close();
    }
    EXPECT_EQ(TakeJournal(), "");
    EXPECT_EQ(TakeLog(), "");
}

TEST_F(ResourceHandle, OneTakenOverIsClosedOnDestruction) {
    const HRESOURCE handle = OpenRaw(L"EVS1 IP");
    Platform().Label(handle, "EVS1 IP");
    {
        CClusterResource resource(handle);
        EXPECT_EQ(resource.GetResourceHandle(), handle);
    }
    EXPECT_EQ(TakeJournal(), Lines({"CloseClusterResource(EVS1 IP)"}));
}

TEST_F(ResourceHandle, OneOwnedElsewhereIsNeverClosed) {
    const HRESOURCE handle = OpenRaw(L"EVS1 IP");
    {
        CClusterResource resource(handle, false);
        EXPECT_STREQ(resource.GetSystemStringProperty(CClusterResource::RES_PROP_TYPE, false), L"IP Address");
        Forget();
        resource.Close();
        EXPECT_EQ(resource.GetResourceHandle(), handle);
        EXPECT_STREQ(resource.GetSystemStringProperty(CClusterResource::RES_PROP_TYPE, false), L"IP Address");
    }
    EXPECT_EQ(TakeJournal(), "") << "the cache stays as well";
    EXPECT_TRUE(CloseClusterResource(handle));
}

TEST_F(ResourceHandle, AutoCloseCanBeSwitched) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    resource.SetAutoClose(false);
    resource.Close();
    EXPECT_NE(resource.GetResourceHandle(), nullptr);
    resource.SetAutoClose(true);
    resource.Close();
    EXPECT_EQ(resource.GetResourceHandle(), nullptr);
    EXPECT_EQ(TakeJournal(), Lines({"CloseClusterResource(EVS1 IP)"}));
}

TEST_F(ResourceHandle, CloseIsRepeatable) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    resource.Close();
    resource.Close();
    EXPECT_EQ(TakeJournal(), Lines({"CloseClusterResource(EVS1 IP)"}));
    EXPECT_EQ(TakeLog(), "");
}

TEST_F(ResourceHandle, AFailingCloseIsLoggedAndTheHandleForgotten) {
    Platform().FailCall("CloseClusterResource", 6);
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    SetLastError(ImpossibleCode);
    resource.Close();
    EXPECT_EQ(GetLastError(), ImpossibleCode);
    EXPECT_EQ(resource.GetResourceHandle(), nullptr);
    EXPECT_EQ(TakeLog(), Lines({"E Warning, calling CloseClusterResource returns FALSE"}));
}

TEST_F(ResourceHandle, ClosingKeepsTheLastError) {
    const auto patch = PatchImport(clusapi, CloseClusterResource, [](HRESOURCE h) -> BOOL {
        const BOOL result = ::CloseClusterResource(h);
        SetLastError(5);
        return result;
    });
    {
        CClusterResource closed;
        CClusterResource destroyed;
        cluster.Open(closed, L"EVS1 IP");
        cluster.Open(destroyed, L"EVS1 Name");
        SetLastError(ImpossibleCode);
        closed.Close();
        EXPECT_EQ(GetLastError(), ImpossibleCode);
    }
    EXPECT_EQ(GetLastError(), ImpossibleCode);
    EXPECT_EQ(TakeLog(), "");
}

TEST_F(ResourceHandle, CloseForgetsTheCachedProperties) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 IP");
    EXPECT_STREQ(resource.GetSystemStringProperty(CClusterResource::RES_PROP_NAME, false), L"EVS1 IP");
    resource.Close();
    cluster.Open(resource, L"EVS1 Disk");
    EXPECT_STREQ(resource.GetSystemStringProperty(CClusterResource::RES_PROP_NAME, false), L"EVS1 Disk");
}

// Deleting
// ----------------------------------------------------------------------------------------------------------------

class ResourceDeletion : public ClusterTest {
protected:
    bool Exists(const wchar_t* name) {
        const HRESOURCE handle = OpenClusterResource(cluster.GetHandle(), name);
        return handle && CloseClusterResource(handle);
    }

    OpenedCluster cluster{*this, ExchangeCluster().IpAddress("Spare IP", "192.168.1.99").State("Offline")};
};

TEST_F(ResourceDeletion, DeletesAndCloses) {
    CClusterResource resource;
    cluster.Open(resource, L"Spare IP");
    EXPECT_TRUE(resource.DeleteResource());
    EXPECT_EQ(resource.GetResourceHandle(), nullptr);
    EXPECT_EQ(TakeLog(), Lines({"> CClusterResource::DeleteResource"}));
    EXPECT_EQ(TakeJournal(), Lines({"DeleteClusterResource(Spare IP)", "CloseClusterResource(Spare IP)"}));
    EXPECT_FALSE(Exists(L"Spare IP"));
}

TEST_F(ResourceDeletion, WithAutoCloseOffTheHandleStays) {
    CClusterResource resource;
    cluster.Open(resource, L"Spare IP");
    const HRESOURCE handle = resource.GetResourceHandle();
    resource.SetAutoClose(false);
    EXPECT_TRUE(resource.DeleteResource());
    EXPECT_EQ(resource.GetResourceHandle(), handle);
    EXPECT_EQ(TakeJournal(), Lines({"DeleteClusterResource(Spare IP)"}));
    EXPECT_FALSE(Exists(L"Spare IP"));
    EXPECT_TRUE(CloseClusterResource(handle));
}

TEST_F(ResourceDeletion, OfAnOnlineResourceFailsWithAWarningAndKeepsTheHandle) {
    CClusterResource resource;
    cluster.Open(resource, L"EVS1 Name");
    EXPECT_FALSE(resource.DeleteResource());
    EXPECT_NE(resource.GetResourceHandle(), nullptr);
    EXPECT_EQ(TakeLog(),
              Lines({"> CClusterResource::DeleteResource", "W Calling DeleteClusterResource error, code: 5019"}));
    EXPECT_EQ(TakeJournal(), Lines({"DeleteClusterResource(EVS1 Name)=5019"}));
    EXPECT_TRUE(Exists(L"EVS1 Name"));
}

TEST_F(ResourceDeletion, WithoutAHandleIsLogged) {
    CClusterResource resource;
    EXPECT_FALSE(resource.DeleteResource());
    EXPECT_EQ(TakeLog(),
              Lines({"> CClusterResource::DeleteResource", "E Resource handle is NULL", "< CCluster::DeleteResource"}));
    EXPECT_EQ(TakeJournal(), "");
}

TEST_F(ResourceDeletion, AFailingCloseAfterwardsIsStillSuccess) {
    Platform().FailCall("CloseClusterResource", 6);
    CClusterResource resource;
    cluster.Open(resource, L"Spare IP");
    EXPECT_TRUE(resource.DeleteResource());
    EXPECT_EQ(TakeLog(),
              Lines({"> CClusterResource::DeleteResource", "E Warning, calling CloseClusterResource returns FALSE"}));
}

} // namespace
