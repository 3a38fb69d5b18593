// Calls private members of the shipped class: an explicit instantiation may name them.
//
//     PRIVATE_MEMBER(WaitForService, &CVeritasCluster::WaitForServiceToStart, bool(const wchar_t*, int));
//     (cluster.*Private(WaitForService()))(L"Svc", 0)
#ifndef PRIVATEMEMBER_H
#define PRIVATEMEMBER_H

#include "clus_VeritasCluster.h"

namespace harness {

template <typename Function> struct ConstMember;
template <typename R, typename... A> struct ConstMember<R(A...)> { typedef R (CVeritasCluster::*Type)(A...) const; };

} // namespace harness

#define PRIVATE_MEMBER(name, member, ...)                       \
    struct name {                                               \
        typedef ::harness::ConstMember<__VA_ARGS__>::Type Type; \
        friend Type Private(name);                              \
    };                                                          \
    template <name::Type pointer> struct name##Access {         \
        friend name::Type Private(name) {                       \
            return pointer;                                     \
        }                                                       \
    };                                                          \
    template struct name##Access<member>

#endif
