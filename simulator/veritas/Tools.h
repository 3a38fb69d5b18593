// The tools, each working on a loaded cluster.
#ifndef VCSSIM_TOOLS_H
#define VCSSIM_TOOLS_H

#include "Cluster.h"
#include "Output.h"
#include "Store.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace vcssim {

class UsageError : public std::runtime_error {
public:
    UsageError() : std::runtime_error("usage") {
    }
};

// The arguments of a command that have not been looked at yet. What is missing throws UsageError.
class Arguments {
public:
    explicit Arguments(const std::vector<std::string>& arguments) : m_arguments(arguments) {
    }

    std::string Next();
    bool TakeFlag(const std::string& flag);
    bool TakeValue(const std::string& option, std::string& value);
    bool IsEmpty() const {
        return m_arguments.empty();
    }
    bool StartsWithOption() const {
        return !m_arguments.empty() && m_arguments.front().compare(0, 1, "-") == 0;
    }
    const std::vector<std::string>& All() const {
        return m_arguments;
    }
    void NeedEnd() const;

private:
    std::vector<std::string> m_arguments;
};

struct Context {
    Cluster& cluster;
    Store& store;
    Output& output;
};

// One of the tools below that work on a cluster. Throws StoreError for another name.
void RunTool(Context& context, const std::string& tool, const Arguments& arguments);

// The first argument is the command: "-list".
void RunHaagent(Context& context, Arguments arguments);
void RunHaconf(Context& context, Arguments arguments);
void RunHasys(Context& context, Arguments arguments);
void RunHagrp(Context& context, Arguments arguments);
void RunHares(Context& context, Arguments arguments);
void RunHaclus(Context& context, Arguments arguments);
void RunHastatus(Context& context, Arguments arguments);
void RunHacf(Output& output, Arguments arguments);
void RunVcssim(Context& context, Arguments arguments); // no VCS tool: what happens to the cluster
void RunVcsencrypt(Output& output, Arguments arguments);

// The parts of hagrp that change something.
void RunHagrpControl(Context& context, const std::string& command, Arguments& arguments);
void RunHagrpChange(Context& context, const std::string& command, Arguments& arguments);
void RunHagrpModify(Context& context, Arguments& arguments);

// The parts of hares. The queries answer false to a command that they do not know.
bool RunHaresQuery(Context& context, const std::string& command, Arguments& arguments);
void RunHaresChange(Context& context, const std::string& command, Arguments& arguments);
void RunHaresControl(Context& context, const std::string& command, Arguments& arguments);

// Messages that more than one command gives.
void NoSuchResource(Output& output, const std::string& resource);
void NoSuchSystem(Output& output, const char* number, const std::string& system);
bool CheckWritable(Context& context); // false after a message

const char* UsageOf(const std::string& tool);

} // namespace vcssim

#endif
