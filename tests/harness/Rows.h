// Tables of a value-parameterised test: each row has a `name`, which says what it stands for and is part of the test's.
//
//     struct LostTool {
//         const char* name;
//         DWORD code;
//         friend void PrintTo(const LostTool& row, std::ostream* out) {
//             *out << row.name;
//         }
//     };
//     INSTANTIATE_TEST_SUITE_P(Losing, VeritasRunner, ::testing::ValuesIn(LostTools), RowName());
#ifndef HARNESS_ROWS_H
#define HARNESS_ROWS_H

#include <string>

namespace harness {

struct RowName {
    template <typename Info> std::string operator()(const Info& info) const {
        return info.param.name;
    }
};

} // namespace harness

#endif
