// Cluster resource types of the product and of Exchange, and the private property of the product's.
#ifndef CLUS_CORE_RESOURCETYPES_H
#define CLUS_CORE_RESOURCETYPES_H

#include <cwchar>

namespace clus {

// The product's own resource: on a shared disk, and with continuous replication.
const wchar_t SingleCopyType[] = L"clusRDLL";
const wchar_t CcrType[] = L"clusRDLLCCR";

// The private property of either that holds the product's data path.
const wchar_t DataPathProperty[] = L"KOVA_DATA_PATH";

const wchar_t NetworkNameType[] = L"Network Name";
const wchar_t IpAddressType[] = L"IP Address";
const wchar_t SmtpInstanceType[] = L"Microsoft Exchange SMTP Server Instance";
const wchar_t InformationStoreType[] = L"Microsoft Exchange Information Store";
const wchar_t SystemAttendantType[] = L"Microsoft Exchange System Attendant";

// Letter case counts.
inline bool IsProductType(const wchar_t* type) {
    return std::wcscmp(type, SingleCopyType) == 0 || std::wcscmp(type, CcrType) == 0;
}

} // namespace clus

#endif
