// Reads texts as recordings: what is taken is written again and read as the same, and the model of VCS that is made of
// it is one that the simulator reads. Takes the bytes for what the cluster and its tools give, and hides in them what
// must not be in a recording.
#include "FuzzInput.h"

#include "Bytes.h"
#include "Recording.h"
#include "ToolText.h"
#include "VcsModelMaker.h"

#include "common/Text.h"

#include <CfDocument.h>
#include <State.h>

#include <string>

namespace {

std::string Written(const recording::Recording& recording) {
    std::string text = LineOf(recording.header);
    for (const recording::RecordedCall& call : recording.calls) {
        text += LineOf(call);
    }
    for (const recording::RecordedTool& tool : recording.tools) {
        text += LineOf(tool);
    }
    return text + recording::EndLine(recording.calls.size(), recording.tools.size(), nullptr);
}

void CheckModel(const recording::Recording& recording) {
    try {
        const RecordedVcsModel model = MakeVcsModel(recording);
        const vcssim::CfDocument configuration(model.mainCf);
        FUZZ_CHECK(configuration.Groups().size() == model.groups);
        FUZZ_CHECK(configuration.Systems().size() == model.systems && model.systems != 0);
        vcssim::ReadState(common::DumpJson(model.states));
    } catch (const vcssim::CfError& error) { // of names that no configuration can have
        FUZZ_CHECK(error.what()[0] != '\0');
    }
}

// A run of a tool in each part: the command line, and behind it the output.
void CheckRuns(const std::string& text) {
    recording::Recording recording;
    recording.header.computer = "N";
    for (std::string part : PartsOf(text, '$')) {
        recording::RecordedTool run;
        run.commandLine = TakeLine(part);
        run.exitCode = part.empty() ? 1 : 0;
        run.output.push_back({part.empty(), part});
        recording.tools.push_back(run);
    }
    CheckModel(recording);
}

void CheckText(const std::string& text) {
    try {
        const recording::Recording taken = recording::ReadRecording(text);
        CheckModel(taken);
        const std::string written = Written(taken);
        const recording::Recording again = recording::ReadRecording(written);
        FUZZ_CHECK(!again.isCut && Written(again) == written);
    } catch (const common::JsonError& error) {
        FUZZ_CHECK(error.what()[0] != '\0');
    }
}

// Neither the size of bytes nor what follows a clean list changes, and cleaning twice is cleaning once.
void CheckBytes(const std::uint8_t* data, std::size_t size) {
    const recording::Rename rename = [](const std::wstring& name) { return std::wstring(name.size() + 1, L'n'); };
    for (const auto kind : {recording::ControlData::Properties, recording::ControlData::Disk,
                            recording::ControlData::Name, recording::ControlData::Unknown}) {
        recording::Bytes bytes(data, data + size);
        recording::Clean(bytes, kind, rename);
        recording::Bytes twice = bytes;
        recording::Clean(twice, kind, rename);
        FUZZ_CHECK(bytes.size() == size && twice == bytes);
    }
    FUZZ_CHECK(recording::PropertyListSize(data, size) <= size);
}

void CheckTools(const std::string& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string command = text.substr(0, end);
    const std::wstring masked = recording::MaskedCommand(common::ToUtf16(command));
    FUZZ_CHECK(recording::MaskedCommand(masked) == masked);
    recording::MaskedOutput(common::ToUtf16(command), common::ToUtf16(text.substr(end)));
    common::Anonymiser anonymiser;
    const recording::Printed printed = {!command.empty() && command.back() == 'e', text.substr(end)};
    const std::string anonymous = recording::AnonymousPrint(anonymiser).Of(printed);
    FUZZ_CHECK(recording::AnonymousPrint(anonymiser).Of(printed) == anonymous);
    recording::ReplayedOutput(common::ToUtf16(command), printed.text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = AsText(data, size);
    CheckText(text);
    CheckBytes(data, size);
    CheckTools(text);
    CheckRuns(text);
    return 0;
}
