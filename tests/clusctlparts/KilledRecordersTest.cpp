// Recordings of eight processes that are killed: each can be read, and holds every call that its process has come back
// from.
#include "ChildProgram.h"
#include "KilledProcesses.h"

#include "common/Files.h"
#include "common/TemporaryFolder.h"
#include "common/Text.h"

#include <Recording.h>

#include <gtest/gtest.h>

#include <memory>

namespace {

const int UsualKills = 24;

class KilledRecorders : public testing::Test {
protected:
    std::unique_ptr<Child> Start(const std::wstring& number) const {
        return std::make_unique<Child>(L"record \"" + File(number) + L"\" " + number);
    }

    // Looks at what a process has recorded that was killed.
    void LookAt(const std::wstring& number) {
        const std::wstring counted = File(number) + L".count";
        if (!common::FileExists(counted)) {
            return; // it had just been started
        }
        const std::string count = common::ReadWholeFile(counted);
        const auto recording = recording::ReadRecording(common::ReadWholeFile(File(number)));
        EXPECT_TRUE(recording.isCut);
        EXPECT_GE(recording.calls.size(), count.empty() ? 0 : std::stoul(count));
        const std::string in =
            R"({"cluster":1,"name":")" + TaggedText(common::ToUtf8(number), RecordedNameLength) + R"("})";
        for (const recording::RecordedCall& call : recording.calls) {
            ASSERT_EQ(call.in, in);
        }
        m_calls += recording.calls.size();
    }

    std::size_t m_calls = 0;

private:
    std::wstring File(const std::wstring& number) const {
        return m_folder.File(number + L".rec");
    }

    common::TemporaryFolder m_folder{L"killed recorders"};
};

} // namespace

TEST_F(KilledRecorders, LeaveEveryCallThatWasAnswered) {
    harness::KilledProcesses recorders([this](const std::wstring& number) { return Start(number); }, UsualKills);
    while (recorders.Count() < recorders.Wanted() && !HasFailure()) {
        const std::wstring killed = recorders.KillOne(static_cast<DWORD>(recorders.Random(100)));
        ASSERT_NO_THROW(LookAt(killed)) << "after " << recorders.Count() << " kills";
        recorders.StartAnother();
    }
    for (const std::wstring& number : recorders.StopAll()) {
        LookAt(number);
    }
    EXPECT_GT(m_calls, static_cast<std::size_t>(recorders.Wanted())) << "nobody recorded";
}
