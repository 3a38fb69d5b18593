// What an action says that fails.
#ifndef ERROROF_H
#define ERROROF_H

#include <string>

// what() of the Error that it throws; "none" when it throws nothing.
template <typename Error, typename Action> std::string ErrorOf(Action action) {
    try {
        action();
    } catch (const Error& error) {
        return error.what();
    }
    return "none";
}

#endif
