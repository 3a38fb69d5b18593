// Measures what a call allocates: the C++ runtime's malloc and free (all standard containers and strings of all DLLs)
// and clusutil.dll's local heap calls are replaced in the import tables while one lives.
#ifndef MEMORYMETER_H
#define MEMORYMETER_H

#include <cstddef>
#include <memory>

namespace bench {

class MemoryMeter {
public:
    MemoryMeter();
    ~MemoryMeter();

    // False when the C++ runtime is not a DLL whose allocations can be watched; nothing is measured then.
    bool Works() const;

    void Start();
    void Stop();
    // Between Start and Stop.
    std::size_t PeakBytes() const;
    std::size_t Allocations() const;

private:
    struct Patches;
    std::unique_ptr<Patches> m_patches;
};

} // namespace bench

#endif
