// The operations on the product's own resource and on the SMTP instance, with each of their platform calls and
// allocations failing.
#include "CreationCalls.h"
#include "FaultSweep.h"

#include <list>
#include <string>

using namespace harness;

namespace {

bool Has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

ModelBuilder SmtpServer() {
    return GivenCluster()
        .Node("NODE-A")
        .Node("NODE-B")
        .Group("EVS1", "NODE-A")
        .NetworkName("EVS1 Name", "EVS1")
        .Resource("SMTP", SmtpType)
        .Raw("offlineMs", "2000");
}

class ProductSweep : public ClusterTest {
protected:
    // `check` sees every run, those that threw included.
    void SweepOver(const ModelBuilder& model, const std::function<bool()>& operation,
                   const std::function<void(const SweepRun&)>& check) {
        Sweep sweep;
        sweep.prepare = [&] {
            Load(model);
            Platform().sleeps.clear();
        };
        sweep.body = [&] { return std::string(operation() ? "true" : "false"); };
        sweep.check = [&](const SweepRun& run) {
            if (!run.faulted) {
                EXPECT_EQ(run.result, "true");
            }
            check(run);
        };
        FaultSweep(*this, sweep);
        EventSweep(*this, sweep);
    }
};

TEST_F(ProductSweep, CreateKOVAResource) {
    for (const Creation& way : EveryWay) {
        SweepOver(
            ExchangeServer(), [&] { return way.Run(); },
            [&](const SweepRun& run) {
                EXPECT_EQ(Has(run.log, RollBackLine), run.result != "true");
                // Only a deletion that fails as well leaves the resource.
                const bool left = run.result != "true" && Has(run.journal, "DeleteClusterResource(KOVA)=");
                EXPECT_EQ(ResourceInModel(Cluster(), "KOVA").empty(), run.result != "true" && !left);
                for (const DWORD duration : Platform().sleeps) {
                    EXPECT_EQ(duration, 5000u);
                }
                EXPECT_LE(Platform().sleeps.size(), 2u * 59);
            });
    }
}

TEST_F(ProductSweep, TurnOnAndOffKOVAResource) {
    const struct {
        bool (*run)(const wchar_t* server, bool wait, DWORD timeout);
        const char* from;
        const char* target;
        const char* success;
        const char* call;
    } directions[] = {
        {&CVirtualServerUtil::TurnOnKOVAResourceOnCurrentNode, "Offline", "Online",
         "I Resource: KOVA, is online/online pending", "\nOnlineClusterResource(KOVA)"},
        {&CVirtualServerUtil::TurnOffKOVAResourceOnCurrentNode, "Online", "Offline",
         "I Resource: KOVA, is offline/offline pending", "\nOfflineClusterResource(KOVA)"},
    };
    for (const auto& direction : directions) {
        for (const char* type : {"clusRDLL", "clusRDLLCCR"}) {
            SweepOver(
                ProductServer(type).State(direction.from).Raw("onlineMs", "1500").Raw("offlineMs", "1500"),
                [&] { return direction.run(L"EVS1", true, 3000); },
                [&](const SweepRun& run) {
                    // Success is never claimed without the state.
                    if (Has(run.log, direction.success)) {
                        EXPECT_TRUE(Has(run.journal, direction.call));
                        if (!run.isEvent) {
                            EXPECT_EQ(StateInModel(Cluster(), "KOVA"), direction.target);
                        }
                    }
                    EXPECT_LE(Platform().sleeps.size(), 3u);
                });
        }
    }
}

TEST_F(ProductSweep, DeleteKOVAResurce) {
    for (const char* state : {"Offline", "Online"}) {
        SweepOver(
            ProductServer().State(state).Raw("offlineMs", "10000").Resource("Second", "clusRDLL").State(state),
            [] { return CVirtualServerUtil::DeleteKOVAResurceOnCurrentNode(L"EVS1"); },
            [&](const SweepRun& run) {
                for (const char* name : {"KOVA", "Second"}) {
                    if (Has(run.log, std::string("I Deleting resource ") + name + " successful")) {
                        EXPECT_EQ(StateInModel(Cluster(), name), "gone");
                    }
                    if (!run.faulted) {
                        EXPECT_EQ(StateInModel(Cluster(), name), "gone");
                    }
                }
                if (!run.isEvent) {
                    EXPECT_EQ(StateInModel(Cluster(), "EVS1 Name"), "Online");
                }
                EXPECT_LE(Platform().sleeps.size(), 2u * 30);
            });
    }
}

TEST_F(ProductSweep, FindKOVAResources) {
    typedef std::list<std::wstring> Found;
    for (const char* type : {"clusRDLL", "clusRDLLCCR"}) {
        bool complete = false;
        bool right = false;
        SweepOver(
            ProductServer(type).Resource("Second", type),
            [&] {
                Found names = {L"before"};
                const bool result = CVirtualServerUtil::FindKOVAResources(L"EVS1", names);
                complete = names == Found{L"KOVA", L"Second"};
                // A resource whose type cannot be read is passed over, as switching and deletion do.
                const bool inPart = names == Found{L"KOVA"} || names == Found{L"Second"} || names.empty();
                right = result ? complete || inPart : names == Found{L"before"};
                return result;
            },
            [&](const SweepRun& run) {
                EXPECT_TRUE(run.faulted || complete);
                EXPECT_TRUE(run.threw || right);
            });
    }
}

TEST_F(ProductSweep, FindSmtpVirtualServerInstanceResource) {
    bool complete = false;
    bool right = false;
    SweepOver(
        SmtpServer(),
        [&] {
            std::wstring name = L"before";
            const bool result = CVirtualServerUtil::FindSmtpVirtualServerInstanceResourceOnCurrentNode(name);
            complete = name == L"SMTP";
            right = result ? complete || name.empty() : name == L"before";
            return result;
        },
        [&](const SweepRun& run) {
            EXPECT_TRUE(run.faulted || complete);
            EXPECT_TRUE(run.threw || right);
        });
}

TEST_F(ProductSweep, RestartSmtpVirtualServerInstanceResource) {
    SweepOver(
        SmtpServer(), [] { return CVirtualServerUtil::RestartSmtpVirtualServerInstanceResourceOnCurrentNode(); },
        [&](const SweepRun& run) {
            if (!run.threw) {
                EXPECT_EQ(run.result == "true", Has(run.log, "I Resource SMTP is offlined, online it again."));
            }
            // Once taken offline and seen so, it is not left there, unless the cluster refuses the switch-on.
            if (run.result == "true" && !Has(run.journal, "OnlineClusterResource(SMTP)=") && !run.isEvent) {
                EXPECT_EQ(StateInModel(Cluster(), "SMTP"), "Online");
            }
            EXPECT_LE(Platform().sleeps.size(), 120u);
        });
}

} // namespace
