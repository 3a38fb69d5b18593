// What a resource answers to a control code.
#ifndef CLUS_PLATFORM_CONTROLREPLY_H
#define CLUS_PLATFORM_CONTROLREPLY_H

#include "platform/ClusterApi.h"
#include "platform/LocalBuffer.h"

namespace clus {

// Asks one resource after the other with ClusterResourceControl, on the owner node and without input. One object serves
// a whole loop: it keeps its memory from question to question, and nothing of an earlier answer shows in a later one.
class ControlReply {
public:
    // The bytes of the answer, 0 on failure, which is logged. The first call offers 128 bytes whatever an earlier
    // answer needed. An answer may be told without memory for it: look at Data.
    DWORD Ask(HRESOURCE resource, DWORD code);

    // The text at the start of the answer, which ends with the answer even when the cluster left it unterminated. Null
    // on failure, which is logged. It stays until the next question.
    const wchar_t* AskForText(HRESOURCE resource, DWORD code);

    // Of the last answer: what the cluster wrote into, and how many bytes of it were offered.
    void* Data() const {
        return m_buffer.pData;
    }
    DWORD Offered() const {
        return m_cbOffered;
    }
    // The bytes of the last answer.
    DWORD Size() const {
        return m_cb;
    }

private:
    bool Offer(DWORD cb);

    LocalBuffer m_buffer; // with room for a terminator behind what is offered
    DWORD m_cbOffered = 0;
    DWORD m_cb = 0;
};

} // namespace clus

#endif
