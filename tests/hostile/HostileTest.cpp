// Every public operation of the library, in random order, on a platform that answers at random: nothing is overrun,
// kept or used after its end, and everything ends. What goes wrong is told with the seed, which brings it about again:
//
//     CLUSUTIL_HOSTILE_SEED=7 CLUSUTIL_HOSTILE_OPERATIONS=100000 hostile_test
#include "GuardedMemory.h"
#include "Operations.h"
#include "Platform.h"
#include "Watchdog.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <new>

namespace hostile {

namespace {

const std::size_t OperationsBetweenFreshObjects = 100;

bool isReentered = false;

const Operation& SomeOperation(Chance& chance) {
    const std::vector<Operation>* const families[] = {&ClusterOperations(), &ServerOperations(), &VeritasOperations()};
    const std::vector<Operation>& family = *chance.Of(families);
    return family[chance.Below(family.size())];
}

unsigned long long Setting(const char* name, unsigned long long otherwise) {
    const char* const text = std::getenv(name);
    return text && *text ? std::strtoull(text, nullptr, 10) : otherwise;
}

LONG CALLBACK TellException(EXCEPTION_POINTERS* exception) {
    switch (exception->ExceptionRecord->ExceptionCode) {
    case EXCEPTION_ACCESS_VIOLATION:
    case EXCEPTION_ILLEGAL_INSTRUCTION:
    case EXCEPTION_INT_DIVIDE_BY_ZERO:
    case EXCEPTION_PRIV_INSTRUCTION:
    case EXCEPTION_STACK_OVERFLOW:
        break;
    default:
        return EXCEPTION_CONTINUE_SEARCH;
    }
    char text[128];
    std::snprintf(text, sizeof(text), "exception %lx at %p, clusutil.dll is at %p",
                  exception->ExceptionRecord->ExceptionCode, exception->ExceptionRecord->ExceptionAddress,
                  static_cast<void*>(harness::LibraryModule()));
    TheAttack().Fail(text);
}

// The handles of the shared objects that are open: what may be left after an operation.
bool IsShared(SharedObjects& shared, const void* handle, Kind kind) {
    if (kind == Kind::Cluster) {
        return handle == shared.cluster.GetHandle();
    }
    if (kind == Kind::Resource) {
        for (CClusterResource& resource : shared.resources) {
            if (handle == resource.GetResourceHandle()) {
                return true;
            }
        }
    }
    if (kind == Kind::Group) {
        for (CClusterGroup& group : shared.groups) {
            if (handle == group.GetGroupHandle()) {
                return true;
            }
        }
    }
    return false;
}

class HostilePlatform : public ::testing::TestWithParam<const char*> {
protected:
    HostilePlatform() {
        SetAttack(&m_attack);
        isCluster = GetParam() == std::string("Cluster");
    }
    ~HostilePlatform() override {
        SetAttack(nullptr);
    }

    void CheckAfterOperation(SharedObjects& shared) {
        const Outside outside;
        for (const auto& handle : m_attack.Handles()) {
            if (!IsShared(shared, handle.first, handle.second)) {
                m_attack.Fail("a handle is left open");
            }
        }
        if (OpenReaders() != 0) {
            m_attack.Fail("a tool's output is left open");
        }
        if (m_heaps.local.Live() != 0) {
            m_attack.Fail("a block of the local heap is left");
        }
        if (m_attack.winsockStarts != 1) { // that of the shared objects
            m_attack.Fail("Windows Sockets are not started as often as stopped");
        }
    }

    void CheckAfterAll() {
        const Outside outside;
        if (!m_attack.Handles().empty()) {
            m_attack.Fail("a handle of a shared object is left open");
        }
        if (m_heaps.runtime.Live() != 0) {
            m_attack.Fail("memory of the C++ runtime is left");
        }
        if (m_attack.winsockStarts != 0) {
            m_attack.Fail("Windows Sockets are left started");
        }
    }

    // One operation; gives whether it was left by an exception, which only memory may be the reason for.
    void Run(SharedObjects& shared, std::size_t number) {
        const Operation& operation = SomeOperation(m_attack.chance);
        m_attack.StartOperation(number, operation.name);
        isReentered = false;
        m_heaps.isFailing = true;
        try {
            operation.run(shared);
        } catch (const std::bad_alloc&) {
            ++m_outOfMemory;
        } catch (...) {
            m_attack.Fail("an exception other than for want of memory");
        }
        m_heaps.isFailing = false;
        m_mostCalls = std::max(m_mostCalls, m_attack.Calls());
        m_calls += m_attack.Calls();
        CheckAfterOperation(shared);
    }

    // A number of operations on one set of shared objects.
    void RunOnFreshObjects(std::size_t first, std::size_t count) {
        std::unique_ptr<harness::Watchdog> watchdog;
        {
            const Outside outside;
            watchdog = std::make_unique<harness::Watchdog>("operation " + std::to_string(first) + " or one of the " +
                                                           std::to_string(count - 1) + " behind it, seed " +
                                                           std::to_string(seed));
        }
        {
            const auto shared = std::make_unique<SharedObjects>();
            for (std::size_t number = first; number < first + count; ++number) {
                Run(*shared, number);
            }
            SetVeritasToolRunCallback(nullptr, nullptr);
        }
        CheckAfterAll();
    }

    const unsigned long long seed = Setting("CLUSUTIL_HOSTILE_SEED", 1);
    const std::size_t operations = Setting("CLUSUTIL_HOSTILE_OPERATIONS", 3000);

    Attack m_attack{seed, GetParam()};
    GuardedHeaps m_heaps;
    Replacements m_replacements;
    std::size_t m_outOfMemory = 0;
    std::size_t m_calls = 0;
    std::size_t m_mostCalls = 0;
};

TEST_P(HostilePlatform, IsWithstood) {
    {
        const Outside outside; // what is made once belongs to the process
        AddVectoredExceptionHandler(1, &TellException);
        ReplaceCluster(m_replacements);
        ReplaceResourceUtilities(m_replacements, m_heaps);
        ReplaceSystem(m_replacements);
        ReplaceTools(m_replacements);
        ClusterOperations();
        ServerOperations();
        VeritasOperations();
        ASSERT_EQ(CVirtualServerUtil::CheckIsClusterByRegKey(), isCluster) << "read before, in this process";
    }
    for (std::size_t first = 1; first <= operations; first += OperationsBetweenFreshObjects) {
        RunOnFreshObjects(first, std::min(OperationsBetweenFreshObjects, operations - first + 1));
    }
    const Outside outside;
    std::cout << operations << " operations, seed " << seed << ": " << m_calls << " platform calls, at most "
              << m_mostCalls << " of one operation; guarded blocks: " << m_heaps.local.Count() << " of the local heap, "
              << m_heaps.runtime.Count() << " of the C++ runtime; ended for want of memory: " << m_outOfMemory << "\n";
    EXPECT_GT(m_calls, operations);
}

INSTANTIATE_TEST_SUITE_P(Of, HostilePlatform, ::testing::Values("Cluster", "PlainServer"),
                         [](const auto& deployment) { return std::string(deployment.param); });

} // namespace

void Reenter() {
    if (isReentered) {
        return;
    }
    isReentered = true;
    SharedObjects own;
    SomeOperation(TheAttack().chance).run(own);
    isReentered = false;
}

} // namespace hostile
