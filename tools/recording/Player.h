// Answers from a recording, in the place of a cluster.
#ifndef RECORDING_PLAYER_H
#define RECORDING_PLAYER_H

#include "CallData.h"
#include "Interception.h"
#include "Recording.h"
#include "ThreadNumbers.h"

#include <functional>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace recording {

// Comes out of a call of the cluster API, or of the start of a tool, that the recording does not hold.
class NotRecorded : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The same call with the same inputs on the same thread gets the same answers in the same order. Threads are counted in
// the order of their first calls.
class Player : public Interceptor {
public:
    explicit Player(Recording recording);
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    Slot Answer(const Call& call, const Slot* slots, Invocation invoke) override;
    BOOL StartProcess(const wchar_t* program, wchar_t* commandLine, DWORD flags, STARTUPINFOW* startup,
                      PROCESS_INFORMATION* information) override;
    BOOL ExitCodeOf(HANDLE process, DWORD* exitCode) override;
    std::wstring ComputerName() const override;
    bool TakesChangesByName() const override {
        return true; // nothing reaches a cluster
    }

    const Header& Head() const {
        return m_recording.header;
    }
    bool IsCut() const {
        return m_recording.isCut;
    }
    // The first call that was not recorded; empty when there was none. A call that closes something never ends the
    // command, but is named here too.
    std::string Missing() const;
    // Whether anything has been asked.
    bool HasAnswered() const;
    // Whether a run of the tool was recorded.
    bool HasRunOf(const std::string& tool) const;

private:
    // What is asked: a call's name and its inputs, or the command line of a tool and nothing.
    struct Question {
        std::string_view what;
        std::string_view in;
        bool operator==(const Question& other) const {
            return what == other.what && in == other.in;
        }
    };
    struct Hash {
        std::size_t operator()(const Question& question) const {
            const std::hash<std::string_view> hash;
            return hash(question.what) * 31 + hash(question.in);
        }
    };
    struct Answers {
        std::vector<std::size_t> indexes; // into the recording
        std::size_t given = 0;            // so many of them
    };
    typedef std::unordered_map<Question, Answers, Hash> Book; // the texts are the recording's

    static std::string Shown(const Question& question);
    // The next index; throws NotRecorded.
    std::size_t Next(std::map<unsigned, Book>& books, const Question& question);
    Slot HandleOf(std::int64_t number);
    Slot Missed(const Call& call);

    Recording m_recording;
    mutable std::mutex m_mutex;
    std::map<unsigned, Book> m_calls; // by thread
    std::map<unsigned, Book> m_tools;
    ThreadNumbers m_threads;
    std::map<HANDLE, DWORD> m_exitCodes;
    std::string m_missing;
    bool m_hasAnswered = false;
};

} // namespace recording

#endif
