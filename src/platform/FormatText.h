// Formatting into an array of characters.
#ifndef CLUS_PLATFORM_FORMATTEXT_H
#define CLUS_PLATFORM_FORMATTEXT_H

#include "core/FormatCheck.h"

#include <cstdio>
#include <iterator>

// What does not fit is cut off; the array is always terminated.
#define CLUS_FORMAT_TEXT(array, ...)                                     \
    do {                                                                 \
        CLUS_CHECK_FORMAT(__VA_ARGS__);                                  \
        _snwprintf_s((array), std::size(array), _TRUNCATE, __VA_ARGS__); \
    } while (false)

#endif
