// Tables of what a member makes of its runs failing in turn.
#ifndef FAILINGRUNS_H
#define FAILINGRUNS_H

#include "Story.h"

#include <functional>
#include <string>
#include <vector>

namespace harness {

// What the member makes of one run that cannot be started; of none in the first row.
struct FailingRun {
    std::string name;   // what becomes of it
    std::string result; // of the member, outputs included
    Texts told;
};

// The member runs once per row: without a failure, then with its 1st, 2nd, ... run failing, up to its last one.
inline void ExpectOfEachFailingRun(VeritasTest& test, const std::function<std::string()>& member,
                                   const std::vector<FailingRun>& rows) {
    ASSERT_FALSE(rows.empty());
    EXPECT_EQ(rows.size(), RunsIn(rows[0].told) + 1) << "not every run fails in turn";
    for (unsigned run = 0; run < rows.size(); ++run) {
        const FailingRun& row = rows[run];
        SCOPED_TRACE((run == 0 ? "no run fails: " : "run " + std::to_string(run) + " fails: ") + row.name);
        if (run != 0) {
            test.tools.FailStart(run, ERROR_FILE_NOT_FOUND);
        }
        test.Forget();
        EXPECT_EQ(member(), row.result);
        EXPECT_EQ(Told(test), Lines(row.told));
        test.Audit();
    }
}

} // namespace harness

#endif
