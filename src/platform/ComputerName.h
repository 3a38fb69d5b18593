// This computer's name, as the cluster knows its nodes: the NetBIOS name, 15 characters at most.
#ifndef CLUS_PLATFORM_COMPUTERNAME_H
#define CLUS_PLATFORM_COMPUTERNAME_H

#include <winsock2.h>
#include <windows.h>

namespace clus {

const DWORD ComputerNameCharacters = 16; // terminator included

class ComputerName {
public:
    // GetComputerNameW. False on failure, with the reason in the last-error value; the text is empty then.
    bool Read() {
        DWORD cch = ComputerNameCharacters;
        if (!GetComputerNameW(m_text, &cch)) {
            m_text[0] = L'\0';
            return false;
        }
        m_text[ComputerNameCharacters - 1] = L'\0';
        return true;
    }
    const wchar_t* c_str() const {
        return m_text;
    }

private:
    wchar_t m_text[ComputerNameCharacters] = {};
};

} // namespace clus

#endif
