// Cluster resource types of the product and of Exchange.
#ifndef CLUS_RESOURCETYPES_H
#define CLUS_RESOURCETYPES_H

namespace clus {

const wchar_t SingleCopyType[] = L"clusRDLL";
const wchar_t CcrType[] = L"clusRDLLCCR";
const wchar_t NetworkNameType[] = L"Network Name";
const wchar_t IpAddressType[] = L"IP Address";
const wchar_t SmtpInstanceType[] = L"Microsoft Exchange SMTP Server Instance";
const wchar_t InformationStoreType[] = L"Microsoft Exchange Information Store";
const wchar_t SystemAttendantType[] = L"Microsoft Exchange System Attendant";

} // namespace clus

#endif
