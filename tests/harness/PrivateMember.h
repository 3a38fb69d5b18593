// Calls private members of the shipped classes: an explicit instantiation may name them.
//
//     PRIVATE_MEMBER(WaitForService, &CVeritasCluster::WaitForServiceToStart, bool(const wchar_t*, int));
//     (cluster.*Private(WaitForService()))(L"Svc", 0)
//
//     PRIVATE_FUNCTION(SetProperty, &CVirtualServerUtil::SetKOVAProeprty_,
//                      int(HRESOURCE, const wchar_t*, const wchar_t*));
//     Private(SetProperty())(resource, L"KOVA_DATA_PATH", L"F:\\Kova")
#ifndef HARNESS_PRIVATEMEMBER_H
#define HARNESS_PRIVATEMEMBER_H

#include "clus_VeritasCluster.h"

namespace harness {

template <typename Function> struct ConstMember;
template <typename R, typename... A> struct ConstMember<R(A...)> { typedef R (CVeritasCluster::*Type)(A...) const; };

template <typename Function> struct StaticMember { typedef Function* Type; };

} // namespace harness

#define PRIVATE_POINTER(name, member, ...)              \
    struct name {                                       \
        typedef __VA_ARGS__::Type Type;                 \
        friend Type Private(name);                      \
    };                                                  \
    template <name::Type pointer> struct name##Access { \
        friend name::Type Private(name) {               \
            return pointer;                             \
        }                                               \
    };                                                  \
    template struct name##Access<member>

// A const member of CVeritasCluster.
#define PRIVATE_MEMBER(name, member, ...) PRIVATE_POINTER(name, member, ::harness::ConstMember<__VA_ARGS__>)
// A static member of any class.
#define PRIVATE_FUNCTION(name, member, ...) PRIVATE_POINTER(name, member, ::harness::StaticMember<__VA_ARGS__>)

#endif
