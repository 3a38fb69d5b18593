// The stack protector of a binary of this project, seen from outside.
#include "ChildProcess.h"

#include <gtest/gtest.h>

#include <string>

using namespace harness;

namespace {

const DWORD StackBufferOverrun = 0xC0000409; // STATUS_STACK_BUFFER_OVERRUN

std::wstring Child(const std::wstring& argument) {
    return L"\"" + ProgramFolder() + L"stack_guard_child.exe\" " + argument;
}

std::string CookieOfAProcess() {
    SECURITY_ATTRIBUTES inheritable = {sizeof(inheritable), nullptr, TRUE};
    HANDLE read = nullptr;
    HANDLE write = nullptr;
    if (!CreatePipe(&read, &write, &inheritable, 0)) {
        return "";
    }
    const common::Handle reader(read);
    common::Handle writer(write);
    ChildStreams streams;
    streams.output = write;
    ChildProcess child(Child(L""), {}, streams);
    EXPECT_EQ(child.Wait(), 0u);
    char text[17] = {};
    DWORD length = 0;
    ReadFile(read, text, 16, &length, nullptr);
    return std::string(text, length);
}

TEST(StackGuard, ABufferThatIsFilledToItsEndIsFine) {
    EXPECT_EQ(ChildProcess(Child(L"16")).Wait(), 0u);
}

TEST(StackGuard, AnOverrunEndsTheProcess) {
    EXPECT_EQ(ChildProcess(Child(L"40")).Wait(), StackBufferOverrun);
}

TEST(StackGuard, TheCookieIsAnotherInEachProcessAndBeginsWithAZeroByte) {
    const std::string first = CookieOfAProcess();
    const std::string second = CookieOfAProcess();
    ASSERT_EQ(first.size(), 16u);
    ASSERT_EQ(second.size(), 16u);
    EXPECT_NE(first, second);
    EXPECT_EQ(first.substr(14), "00") << "the lowest byte is the first in memory";
    EXPECT_NE(first.substr(0, 14), std::string(14, '0'));
}

} // namespace
