// This test program as a child process.
#ifndef CHILDPROGRAM_H
#define CHILDPROGRAM_H

#include "ChildProcess.h"

#include <cstddef>
#include <string>
#include <vector>

// "files FOLDER TAG": until it is stopped, makes files NUMBER.html and folders NUMBER in it, of which the number is the
// same for all children at a time, each of the three letters TAG and a colon again and again.
// "record FILE TAG": until it is stopped, records calls of which the name is made so, and writes to FILE.count after
// each call how many there were, as text. "print TEXT": prints it on both outputs.
const std::size_t NewFileLength = 200000; // characters
const std::size_t FileInFolderLength = 40000;
const std::size_t RecordedNameLength = 2000;
const std::vector<std::wstring> NewFolderNames = {L"main.cf", L"types.cf", L"main.cf.state.json"};

// The text of a writer.
std::string TaggedText(const std::string& tag, std::size_t length);

std::wstring ChildCommand(const std::wstring& arguments);

class Child : public harness::ChildProcess {
public:
    explicit Child(const std::wstring& arguments) : ChildProcess(ChildCommand(arguments)) {
    }
};

#endif
