// How large the measured clusters and lists are.
#ifndef SCALE_H
#define SCALE_H

#include <cstddef>
#include <vector>

namespace bench {

enum class Scale {
    Brief,  // up to 1,000 resources and 10,000 rows
    Normal, // up to 10,000 resources and 100,000 rows
    Large   // up to 100,000 resources and 1,000,000 rows
};

// Powers of ten from 10 up to `brief`, ten times as many, or a hundred times.
inline std::vector<std::size_t> SizesUpTo(std::size_t brief, Scale scale) {
    const std::size_t last = brief * (scale == Scale::Large ? 100 : scale == Scale::Normal ? 10 : 1);
    std::vector<std::size_t> sizes;
    for (std::size_t size = 10; size <= last; size *= 10) {
        sizes.push_back(size);
    }
    return sizes;
}

inline std::vector<std::size_t> ResourceCounts(Scale scale) {
    return SizesUpTo(1000, scale);
}

inline std::vector<std::size_t> RowCounts(Scale scale) {
    return SizesUpTo(10000, scale);
}

} // namespace bench

#endif
