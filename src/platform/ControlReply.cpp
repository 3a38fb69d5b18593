#include "platform/ControlReply.h"

#include "platform/Log.h"

#include <algorithm>
#include <cstring>

CLUS_LOG_PLACE(Cluster, 6);

namespace clus {

namespace {

const DWORD FirstOffer = 128;

void Clear(void* data, DWORD from, DWORD to) {
    if (data && from < to) {
        std::memset(static_cast<unsigned char*>(data) + from, 0, to - from);
    }
}

} // namespace

// Makes room for so many bytes; what was not offered yet is zero. False when the memory cannot grow. Without any, 0
// bytes are offered: the answer may still be a count.
bool ControlReply::Offer(DWORD cb) {
    if (!m_buffer.Ensure(cb + static_cast<DWORD>(sizeof(wchar_t)))) {
        return false;
    }
    Clear(m_buffer.pData, m_cbOffered, cb);
    m_cbOffered = m_buffer.pData ? cb : 0;
    return true;
}

DWORD ControlReply::Ask(HRESOURCE resource, DWORD code) {
    m_cb = 0;
    m_cbOffered = 0;
    if (!Offer(FirstOffer)) {
        m_buffer.Release();
    }
    DWORD cb = 0;
    DWORD result = ClusterResourceControl(resource, nullptr, code, nullptr, 0, Data(), m_cbOffered, &cb);
    if (result == ERROR_MORE_DATA && cb != 0 && cb <= LongestAnswer && Offer(std::max(cb, m_cbOffered))) {
        DWORD cbCheck = 0;
        result = ClusterResourceControl(resource, nullptr, code, nullptr, 0, Data(), m_cbOffered, &cbCheck);
        if (cbCheck != cb) {
            LOG_ERROR(L"dwSizeCheck != dwSize");
            Clear(Data(), cbCheck, cb); // not written by the service
        }
    }
    if (result != ERROR_SUCCESS) {
        LOG_ERROR(L"Calling ClusterResourceControl returns error, code:%d", result);
        return 0;
    }
    m_cb = Data() ? std::min(cb, m_cbOffered) : cb;
    return m_cb;
}

const wchar_t* ControlReply::AskForText(HRESOURCE resource, DWORD code) {
    if (Ask(resource, code) == 0) {
        LOG_ERROR(L"0 == dwSize");
        return nullptr;
    }
    if (!Data()) {
        LOG_ERROR(L"NULL == lpStringStart");
        return nullptr;
    }
    m_buffer.Text()[m_cb / sizeof(wchar_t)] = L'\0';
    return m_buffer.Text();
}

} // namespace clus
