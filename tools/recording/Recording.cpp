#include "Recording.h"

#include "CallLine.h"

#include "common/Text.h"

#include <cmath>
#include <limits>
#include <string_view>

namespace recording {

using common::Json;
using common::JsonError;
using common::ObjectReader;

namespace {

const char Mark[] = "{\"recording\":";
const std::uint64_t MostMilliseconds = std::numeric_limits<std::uint32_t>::max();

std::string PlaceOf(std::size_t line) {
    return "line " + std::to_string(line);
}

Json Rounded(double milliseconds) {
    return static_cast<double>(std::llround(milliseconds * 1000)) / 1000;
}

double Milliseconds(ObjectReader& reader, const char* name) {
    const Json* const value = reader.Member(name);
    if (value == nullptr || !value->is_number() || value->get<double>() < 0 ||
        value->get<double>() > static_cast<double>(MostMilliseconds)) {
        throw JsonError(reader.Place(name), "a number of milliseconds is expected");
    }
    return value->get<double>();
}

std::uint32_t Number(ObjectReader& reader, const char* name) {
    return static_cast<std::uint32_t>(reader.NumberOr(name, 0, std::numeric_limits<std::uint32_t>::max()));
}

const Json& ObjectOf(ObjectReader& reader, const char* name) {
    static const Json none = Json::object();
    const Json* const value = reader.Member(name);
    if (value != nullptr && !value->is_object()) {
        throw JsonError(reader.Place(name), "an object is expected");
    }
    return value == nullptr ? none : *value;
}

Json ListOf(ObjectReader& reader, const char* name) {
    const Json* const value = reader.Member(name);
    if (value != nullptr && !value->is_array()) {
        throw JsonError(reader.Place(name), "a list is expected");
    }
    return value == nullptr ? Json::array() : *value;
}

Header ReadHeader(const Json& line, const std::string& place) {
    ObjectReader reader(line, place);
    if (reader.NumberOr("recording", 0, 1000) != FormatVersion) {
        throw JsonError(place, "a recording of version " + std::to_string(FormatVersion) + " is expected");
    }
    Header header;
    header.program = reader.Text("program");
    header.begun = reader.Text("begun");
    header.command = ListOf(reader, "command");
    reader.Each("command", [](const Json& word, const std::string& at) { common::TextItem(word, at); });
    header.cluster = reader.TextOr("cluster", "");
    header.computer = reader.Text("computer");
    const Json* const settings = reader.Member("settings");
    if (settings != nullptr && !settings->is_null() && !settings->is_object()) {
        throw JsonError(reader.Place("settings"), "an object or null is expected");
    }
    header.settings = settings == nullptr ? Json() : *settings;
    if (header.settings.is_object()) {
        for (const auto& setting : header.settings.items()) {
            if (!setting.value().is_string() && !setting.value().is_number_unsigned()) {
                throw JsonError(reader.Place("settings") + "." + setting.key(), "a text or a number is expected");
            }
        }
    }
    header.tools = ListOf(reader, "tools");
    reader.Each("tools", [](const Json& tool, const std::string& at) {
        ObjectReader file(tool, at);
        file.Text("name");
        file.TextOr("file", "");
        file.Done();
    });
    header.isAnonymised = reader.FlagOr("anonymised", false);
    header.allowsChanges = reader.FlagOr("allowsChanges", false);
    reader.Each("unseen", [&header](const Json& name, const std::string& at) {
        header.unseen.push_back(common::TextItem(name, at));
    });
    reader.Done();
    return header;
}

RecordedCall ReadCall(const Json& line, const std::string& place) {
    ObjectReader reader(line, place);
    RecordedCall call;
    call.name = reader.Text("call");
    call.in = common::DumpJsonLine(ObjectOf(reader, "in"));
    call.out = common::DumpJsonLine(ObjectOf(reader, "out"));
    const Json* const result = reader.Member("result");
    if (result == nullptr || !result->is_number_integer()) {
        throw JsonError(reader.Place("result"), "a whole number is expected");
    }
    call.result = result->get<std::int64_t>();
    if (reader.Member("lastError") != nullptr) {
        call.lastError = Number(reader, "lastError");
    }
    call.isRefused = reader.FlagOr("refused", false);
    call.thread = Number(reader, "thread");
    call.time = Milliseconds(reader, "time");
    call.took = Milliseconds(reader, "took");
    reader.Done();
    return call;
}

RecordedTool ReadTool(const Json& line, const std::string& place) {
    ObjectReader reader(line, place);
    RecordedTool tool;
    tool.commandLine = reader.Text("tool");
    tool.startError = Number(reader, "startError");
    tool.exitCode = Number(reader, "exitCode");
    reader.Each("output", [&tool](const Json& item, const std::string& at) {
        ObjectReader piece(item, at);
        const bool isError = piece.Member("err") != nullptr;
        tool.output.push_back({isError, piece.Text(isError ? "err" : "out")});
        piece.Done();
    });
    tool.isRefused = reader.FlagOr("refused", false);
    tool.thread = Number(reader, "thread");
    tool.time = Milliseconds(reader, "time");
    tool.took = Milliseconds(reader, "took");
    reader.Done();
    return tool;
}

void TakeLine(std::string_view text, std::size_t number, Recording& recording) {
    RecordedCall call;
    if (ReadPlainCall(text, call)) {
        recording.calls.push_back(std::move(call));
        return;
    }
    const std::string place = PlaceOf(number);
    Json line;
    try {
        line = common::ParseJson(std::string(text));
    } catch (const JsonError& error) {
        throw JsonError(place, error.what());
    }
    if (line.is_object() && line.contains("call")) {
        recording.calls.push_back(ReadCall(line, place));
    } else if (line.is_object() && line.contains("tool")) {
        recording.tools.push_back(ReadTool(line, place));
    } else if (line.is_object() && line.contains("end")) {
        ObjectReader reader(line, place);
        const Json end = ObjectOf(reader, "end");
        reader.Done();
        ObjectReader counts(end, place + ".end");
        const std::uint64_t most = std::numeric_limits<std::uint32_t>::max();
        if (counts.NumberOr("calls", 0, most) != recording.calls.size() ||
            counts.NumberOr("tools", 0, most) != recording.tools.size()) {
            throw JsonError(place, "lines are missing");
        }
        counts.Member("exitCode");
        counts.Done();
        recording.isCut = false;
    } else {
        throw JsonError(place, "a call, a tool or the end is expected");
    }
}

} // namespace

std::string LineOf(const Header& header) {
    Json line;
    line["recording"] = FormatVersion;
    line["program"] = header.program;
    line["begun"] = header.begun;
    line["command"] = header.command;
    line["cluster"] = header.cluster;
    line["computer"] = header.computer;
    line["settings"] = header.settings;
    line["tools"] = header.tools;
    line["anonymised"] = header.isAnonymised;
    line["allowsChanges"] = header.allowsChanges;
    if (!header.unseen.empty()) {
        line["unseen"] = header.unseen;
    }
    return common::DumpJsonLine(line) + "\n";
}

std::string LineOf(const RecordedTool& tool) {
    Json line;
    line["tool"] = tool.commandLine;
    if (tool.startError != 0) {
        line["startError"] = tool.startError;
    }
    line["exitCode"] = tool.exitCode;
    line["output"] = Json::array();
    for (const Printed& printed : tool.output) {
        line["output"].push_back({{printed.isError ? "err" : "out", printed.text}});
    }
    if (tool.isRefused) {
        line["refused"] = true;
    }
    line["thread"] = tool.thread;
    line["time"] = Rounded(tool.time);
    line["took"] = Rounded(tool.took);
    return common::DumpJsonLine(line) + "\n";
}

std::string EndLine(std::uint64_t calls, std::uint64_t tools, const Json& exitCode) {
    return common::DumpJsonLine({{"end", {{"calls", calls}, {"tools", tools}, {"exitCode", exitCode}}}}) + "\n";
}

std::string BytesOfText(const std::string& text) {
    std::string bytes;
    for (const wchar_t c : common::ToUtf16(text)) {
        bytes += static_cast<char>(static_cast<unsigned char>(c));
    }
    return bytes;
}

bool IsRecording(const std::string& text) {
    return text.compare(0, sizeof(Mark) - 1, Mark) == 0;
}

Recording ReadRecording(const std::string& text) {
    if (!IsRecording(text)) {
        throw JsonError("line 1", "the first line of a recording is expected");
    }
    Recording recording;
    std::size_t number = 0;
    for (std::size_t begin = 0, end = 0; (end = text.find('\n', begin)) != std::string::npos; begin = end + 1) {
        const std::string_view line = std::string_view(text).substr(begin, end - begin);
        ++number;
        if (number == 1) {
            recording.header = ReadHeader(common::ParseJson(std::string(line)), PlaceOf(number));
            recording.isCut = true; // until the end is seen
        } else if (!recording.isCut) {
            throw JsonError(PlaceOf(number), "something follows the end");
        } else {
            TakeLine(line, number, recording);
        }
    }
    if (number == 0) {
        throw JsonError("line 1", "it is cut");
    }
    return recording;
}

} // namespace recording
