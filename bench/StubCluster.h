// A cluster API whose calls do next to nothing: they hand out names and types, and read nothing of size. What a loop
// over it costs is the loop's own.
#ifndef STUBCLUSTER_H
#define STUBCLUSTER_H

#include "platform/ClusterApi.h"

#include <cstddef>
#include <functional>
#include <memory>

namespace bench {

// Takes the place of clusapi.dll for the library and for this program while it lives; one at a time. No resource is on
// this node, one in StubTypes is the product's.
class StubCluster {
public:
    explicit StubCluster(std::size_t resources);
    ~StubCluster();
    StubCluster(const StubCluster&) = delete;
    StubCluster& operator=(const StubCluster&) = delete;

    // The number of calls that `run` makes.
    std::size_t CallsOf(const std::function<void()>& run) const;

private:
    struct Patches;
    std::unique_ptr<Patches> m_patches;
};

// Resources of this type are one in ten.
const wchar_t StubStoreType[] = L"Microsoft Exchange Information Store";
const std::size_t StubTypes = 10;
const std::size_t StubStores = 4; // the first of them

// Stores the name of a resource, if it fits with its terminator; its length.
DWORD StubName(DWORD index, wchar_t* text, DWORD capacity);

} // namespace bench

#endif
