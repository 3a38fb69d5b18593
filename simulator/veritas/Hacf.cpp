// hacf: whether the configuration of a folder is one.
#include "ConfigurationCheck.h"
#include "Tools.h"

#include "common/Files.h"
#include "common/Text.h"

namespace vcssim {

void RunHacf(Output& output, Arguments arguments) {
    if (arguments.Next() != "-verify") {
        throw UsageError();
    }
    std::wstring folder = common::ToUtf16(arguments.Next());
    arguments.NeedEnd();
    if (folder.empty()) {
        throw UsageError();
    }
    if (folder.find_last_of(L"\\/:") != folder.size() - 1) {
        folder += L'\\';
    }
    const std::wstring path = folder + L"main.cf";
    if (!common::FileExists(path)) {
        output.Failure(common::ToUtf8(path) + " does not exist");
        return;
    }
    const Cluster cluster = Store(ClusterFiles(path)).LoadWritten();
    for (const Problem& problem : ProblemsOf(cluster)) {
        output.Error("99002", common::ToUtf8(path) + ": " + problem.what);
    }
}

} // namespace vcssim
