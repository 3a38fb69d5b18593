// A simulated cluster of its own for each test, and owners for its handles.
#ifndef SIMULATORTEST_H
#define SIMULATORTEST_H

#include "ClusSimControl.h"
#include "ExportedApi.h"

#include <gmock/gmock.h>

#include <string>
#include <type_traits>
#include <vector>

// What the simulator leaves behind where the API promises no last-error value.
const DWORD AfterSuccess = 0xC0DE;
const DWORD AfterFailure = 0xBAD1;

struct HandleCloser {
    void operator()(HCLUSTER handle) const {
        CloseCluster(handle);
    }
    void operator()(HRESOURCE handle) const {
        CloseClusterResource(handle);
    }
    void operator()(HGROUP handle) const {
        CloseClusterGroup(handle);
    }
    void operator()(HNODE handle) const {
        CloseClusterNode(handle);
    }
};

template <typename Handle> class Owner {
public:
    Owner() : m_handle(nullptr) {
    }
    explicit Owner(Handle handle) : m_handle(handle) {
    }
    ~Owner() {
        Close();
    }
    Owner(Owner&& other) noexcept : m_handle(other.m_handle) {
        other.m_handle = nullptr;
    }
    Owner& operator=(Owner&& other) noexcept {
        std::swap(m_handle, other.m_handle);
        return *this;
    }

    operator Handle() const {
        return m_handle;
    }
    void Close() {
        if (m_handle) {
            HandleCloser()(m_handle);
            m_handle = nullptr;
        }
    }

private:
    Handle m_handle;
};

typedef Owner<HCLUSTER> ClusterOwner;
typedef Owner<HRESOURCE> ResourceOwner;
typedef Owner<HGROUP> GroupOwner;
typedef Owner<HNODE> NodeOwner;

struct ListedName {
    DWORD type;
    std::wstring name;

    bool operator==(const ListedName& other) const {
        return type == other.type && name == other.name;
    }
};
std::ostream& operator<<(std::ostream& out, const ListedName& item);

typedef std::vector<unsigned char> Bytes;

// The cluster of most tests. NODE-A owns EVS1: IP and disk, name on the IP, attendant on name and disk, store on the
// attendant; the last two are offline. NODE-B is down; NODE-C is paused and owns EVS2 with one offline address.
extern const char* const MailCluster;

class SimulatorTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override; // no handle left open, no call with a handle that was not open

    // Fails the test when the text is malformed. Opens the cluster.
    void Load(const std::string& json = MailCluster);

    ResourceOwner Resource(const wchar_t* name);
    GroupOwner Group(const wchar_t* name);
    // The node that the cluster names for the group.
    static std::wstring OwnerOf(HGROUP group);
    NodeOwner Node(const wchar_t* name);
    int StateOf(const wchar_t* resource);

    // Calls with handles that are not open, which this test makes on purpose.
    void ExpectBadHandleCalls(std::size_t count) {
        m_badHandleCalls = count;
    }

    ClusterOwner m_cluster;

private:
    std::size_t m_badHandleCalls = 0;
};

std::string ReadModel();
std::string ReadJournal();
std::string LoadError(const std::string& json); // empty when it was accepted
bool Accepts(const char* fault);

// The text with `from`, which must be there once, replaced.
std::string Replaced(const std::string& text, const std::string& from, const std::string& to);

// The whole enumeration; the mask's own enumerator is opened and closed.
std::vector<ListedName> ListCluster(HCLUSTER cluster, DWORD mask);
std::vector<ListedName> ListGroup(HGROUP group, DWORD mask);
std::vector<ListedName> ListResource(HRESOURCE resource, DWORD mask);

// What a reading control gives; fails the test when it does not succeed.
Bytes Control(HRESOURCE resource, DWORD code);
DWORD SetControl(HRESOURCE resource, DWORD code, Bytes list);

Bytes TextOf(const std::wstring& text); // UTF-16 with its terminator
void Append(Bytes& bytes, DWORD number);
void AppendEntry(Bytes& bytes, DWORD syntax, const Bytes& value); // padded to 4 bytes

#endif
