// What the product is called in the registry and in the cluster.
#ifndef HARNESS_PRODUCTNAMES_H
#define HARNESS_PRODUCTNAMES_H

#include <string>

namespace harness {

// Below HKEY_LOCAL_MACHINE, unless a settings file names another one.
const wchar_t ProductKey[] = L"SOFTWARE\\Plinthcore\\Zyntra Gate\\CurrentVersion";
const std::string ProductKeyText = "SOFTWARE\\Plinthcore\\Zyntra Gate\\CurrentVersion";

const char AttendantType[] = "Microsoft Exchange System Attendant";
const char StoreType[] = "Microsoft Exchange Information Store";
const char SmtpType[] = "Microsoft Exchange SMTP Server Instance";

} // namespace harness

#endif
