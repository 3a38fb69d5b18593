// The line of a call in a recording, written and read without a JSON document in between: of a large cluster there are
// many thousands.
#ifndef RECORDING_CALLLINE_H
#define RECORDING_CALLLINE_H

#include "Recording.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace recording {

// The members of a JSON object, added one by one.
class ObjectText {
public:
    ObjectText();
    void Add(const char* name, const std::string& value);
    // The whole object; nothing can be added any more.
    std::string Take();

private:
    std::string m_text;
};

// UTF-8 as JSON has it.
std::string QuotedText(const std::string& utf8);

// Takes apart a line as LineOf writes it. False for every other one, which has to be read as JSON, right or wrong: one
// with blanks, members in another order or twice, characters beyond ASCII, numbers written otherwise.
bool ReadPlainCall(std::string_view line, RecordedCall& call);

} // namespace recording

#endif
