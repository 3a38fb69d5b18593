// The doctor's look into a support bundle: what only the computer that it was made on could show.
#include "DoctorCodes.h"
#include "DoctorParts.h"
#include "ModelInUse.h"
#include "Text.h"
#include "ThisComputer.h"

#include "common/Text.h"

#include <algorithm>
#include <iterator>

namespace {

const struct {
    RecordedPart part;
    const char* begin; // of the codes
} Codes[] = {{RecordedPart::Machine, "library"},
             {RecordedPart::Machine, "log-not-handed-out"},
             {RecordedPart::Machine, "run-ended"},
             {RecordedPart::Machine, "capture-files-left"},
             {RecordedPart::SettingsFile, "settings-file"},
             {RecordedPart::VcsTools, "vcs-tool"},
             {RecordedPart::VcsMode, "vcs-mode"}};

bool IsOf(RecordedPart part, const std::string& code) {
    return std::any_of(std::begin(Codes), std::end(Codes),
                       [&](const auto& each) { return each.part == part && StartsWith(code, each.begin); });
}

} // namespace

void TellBundle(Findings& findings) {
    const BundledComputer* const bundled = BundledComputerInUse();
    if (bundled == nullptr) {
        return;
    }
    const std::string name = Printable(ComputerName());
    if (bundled->findings.is_null()) {
        findings.Add("bundle-without-findings", name,
                     "Its libraries, files and tools are not looked at: the bundle does not tell of them.");
    } else {
        findings.Add("bundle", name, "Its libraries, files and tools are told as they were when the bundle was made.");
    }
}

bool TellRecorded(RecordedPart part, Findings& findings) {
    const BundledComputer* const bundled = BundledComputerInUse();
    if (bundled == nullptr) {
        return false;
    }
    for (const Json& finding : bundled->findings.is_null() ? Json::array() : bundled->findings) {
        const auto text = [&finding](const char* member) { return common::ToUtf8(TextMember(finding, member)); };
        const auto shown = [&finding](const char* member) { return Printable(TextMember(finding, member)); };
        if (finding.is_object() && IsOf(part, text("code")) && IsDoctorCode(text("code"))) {
            findings.Add(FindDoctorCode(text("code")).name, text("object"), shown("seen"), shown("mend"), shown("ask"));
        }
    }
    return true;
}
