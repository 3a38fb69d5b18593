#include "SupportBundleCommand.h"

#include "CommandLine.h"
#include "NewFile.h"
#include "SupportBundle.h"
#include "Text.h"

#include "common/Files.h"
#include "common/Text.h"

#include <memory>

namespace {

const Columns FileColumns = {{"name", "FILE"}, {"what", "WHAT IT IS"}};
const Columns MissingColumns = {{"what", "NOT IN IT"}, {"why", "WHY"}};

struct Options {
    std::wstring file;
    bool anonymises = false;
};

Report MakeBundle(const LogCapture& log, const Options& options, bool allowsWritableTools) {
    RequireNoFile(options.file);
    const SupportBundle bundle = MakeSupportBundle(log, {options.anonymises, allowsWritableTools});
    WriteNewFile(options.file, bundle.archive);
    Report report;
    report.AddTable("files", bundle.manifest["files"], FileColumns, std::string());
    report.AddTable("missing", bundle.manifest["missing"], MissingColumns, "Nothing is missing.");
    report.AddMember("anonymised", options.anonymises);
    report.AddSentence("bundle", options.file,
                       "Wrote " + Printable(options.file) + (options.anonymises ? ", with other names." : "."));
    for (const std::string& unread : bundle.unread) {
        report.MarkIncomplete(unread);
    }
    return report;
}

} // namespace

void AddSupportBundleCommand(CommandLine& commandLine) {
    const auto options = std::make_shared<Options>();
    CLI::App& command =
        commandLine.Add("Diagnosis", "support-bundle", "Write everything that support asks for into one archive",
                        [options, &commandLine](const LogCapture& log) {
                            return MakeBundle(log, *options, commandLine.Shared().allowsWritableTools);
                        });
    CommandLine::AddText(command, "FILE", options->file, "FILE", "The ZIP archive to write, which must not be there")
        .required()
        // Commands of VCS do not run where the user is.
        ->transform([](const std::string& text) { return common::ToUtf8(common::FullPath(common::ToUtf16(text))); });
    command.add_flag("--anonymise", options->anonymises,
                     "Replace names and addresses, each by the same one in all files");
}
