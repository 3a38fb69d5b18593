// Members of discovery and of the product's resource set, each of whose tools cannot be started in turn.
#ifndef SETFAILUREFIXTURE_H
#define SETFAILUREFIXTURE_H

#include "AddServiceFixture.h"

#include <algorithm>

namespace harness {

// What the run number `failing` that cannot be started leads to; 0: none fails.
struct Failure {
    unsigned failing;
    std::string result; // of the member, outputs included
    Texts told;
};

inline std::string Text(bool result) {
    return result ? "true" : "false";
}

inline bool IsRun(const std::string& line) {
    return line.rfind("$ ", 0) == 0 || line.rfind("* ", 0) == 0;
}

// The runs among what is told.
inline std::size_t RunsIn(const Texts& told) {
    return static_cast<std::size_t>(std::count_if(told.begin(), told.end(), IsRun));
}

class VeritasSetFailure : public AddServiceTest {
protected:
    // Rows 0, 1, ... n, where n is the number of runs when none fails.
    void Check(const std::function<std::string()>& member, const std::vector<Failure>& failures) {
        ASSERT_FALSE(failures.empty());
        EXPECT_EQ(failures.size(), RunsIn(failures[0].told) + 1) << "not every run fails in turn";
        for (unsigned row = 0; row < failures.size(); ++row) {
            const Failure& failure = failures[row];
            ASSERT_EQ(failure.failing, row);
            if (row != 0) {
                tools.FailStart(row, ERROR_FILE_NOT_FOUND);
            }
            Forget();
            EXPECT_EQ(member(), failure.result) << "run " << row << " fails";
            EXPECT_EQ(Told(), Lines(failure.told)) << "run " << row << " fails";
            Audit();
        }
    }
};

} // namespace harness

#endif
