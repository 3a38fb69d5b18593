// Recordings of eight processes that are killed: each can be read, and holds every call that its process has come back
// from.
#include "ChildProgram.h"
#include "Kills.h"

#include "common/Files.h"
#include "common/TemporaryFolder.h"

#include <Recording.h>

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <random>

namespace {

const int Writers = 8;
const int UsualKills = 24;

struct RecordingProcess {
    std::wstring file;
    std::string tag;
    std::unique_ptr<Child> child;
};

class KilledRecorders : public testing::Test {
protected:
    RecordingProcess Start() {
        RecordingProcess process;
        const std::wstring tag = std::to_wstring(1000 + m_started++).substr(1);
        process.file = m_folder.File(tag + L".rec");
        process.tag = std::string(tag.begin(), tag.end());
        process.child = std::make_unique<Child>(L"record \"" + process.file + L"\" " + tag);
        return process;
    }

    // Stops it, and looks at what it has recorded.
    void Stop(RecordingProcess& process) {
        process.child->Stop();
        const std::wstring counted = process.file + L".count";
        if (!common::FileExists(counted)) {
            return; // it had just been started
        }
        const std::string count = common::ReadWholeFile(counted);
        const auto recording = recording::ReadRecording(common::ReadWholeFile(process.file));
        EXPECT_TRUE(recording.isCut);
        EXPECT_GE(recording.calls.size(), count.empty() ? 0 : std::stoul(count));
        const std::string in = R"({"cluster":1,"name":")" + TaggedText(process.tag, RecordedNameLength) + R"("})";
        for (const recording::RecordedCall& call : recording.calls) {
            ASSERT_EQ(call.in, in);
        }
        m_calls += recording.calls.size();
    }

    std::size_t m_calls = 0;

private:
    common::TemporaryFolder m_folder{L"killed recorders"};
    int m_started = 0;
};

} // namespace

TEST_F(KilledRecorders, LeaveEveryCallThatWasAnswered) {
    const int kills = harness::KillCount(UsualKills);
    std::mt19937 random(1);
    std::array<RecordingProcess, Writers> processes;
    for (RecordingProcess& process : processes) {
        process = Start();
    }
    for (int kill = 0; kill < kills && !HasFailure(); ++kill) {
        RecordingProcess& process = processes[random() % Writers];
        EXPECT_TRUE(process.child->RunsFor(random() % 100)) << "it ended by itself";
        ASSERT_NO_THROW(Stop(process)) << "after " << kill << " kills";
        process = Start();
    }
    for (RecordingProcess& process : processes) {
        Stop(process);
    }
    EXPECT_GT(m_calls, static_cast<std::size_t>(kills)) << "nobody recorded";
}
