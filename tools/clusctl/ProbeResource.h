// What a resource shows of the rules when it is only read.
#ifndef CLUSCTL_PROBERESOURCE_H
#define CLUSCTL_PROBERESOURCE_H

#include "ClusterApi.h"
#include "Probe.h"

#include <string>
#include <vector>

class ResourceProbe {
public:
    ResourceProbe(HCLUSTER cluster, ProbeAnswers& answers) : m_cluster(cluster), m_answers(answers) {
    }

    void LookAt(const std::wstring& name);
    // What only all of them together show.
    void Conclude();

    // The nodes that resources named as their owners, and one of the resources at which each spelling was seen.
    struct Owner {
        std::wstring node;
        std::wstring object;
    };
    const std::vector<Owner>& Owners() const {
        return m_owners;
    }
    // The address of the cluster itself, while it is online; empty when it was not found.
    const std::wstring& ClusterAddress() const {
        return m_clusterAddress;
    }

private:
    typedef std::vector<unsigned char> Bytes;
    struct Object {
        HRESOURCE handle;
        std::wstring name;
        std::wstring type;
    };

    void LookAtNames(const Object& resource);
    void LookAtState(const Object& resource);
    void LookAtSize(const Object& resource);
    void LookAtClass(const Object& resource);
    void LookAtFlags(const Object& resource);
    void LookAtProperties(const Object& resource);
    void LookAtNetworkName(const Object& resource, const Bytes& properties);
    void LookAtFinders(const Object& resource, Bytes& properties);
    void LookAtRelations(const Object& resource);
    void LookAtDisk(const Object& resource);

    // The code, and the whole answer.
    static DWORD Ask(HRESOURCE resource, DWORD control, Bytes& answer);
    static std::wstring TextOf(HRESOURCE resource, DWORD control);
    static std::wstring OwnerOf(HRESOURCE resource); // empty when it cannot be read
    static DWORD SizeCode(HRESOURCE resource, DWORD control, DWORD& size);

    HCLUSTER m_cluster;
    ProbeAnswers& m_answers;
    std::vector<Owner> m_owners;
    std::wstring m_clusterAddress;
    std::size_t m_count = 0; // of those looked at
    bool m_isCore = false;   // the one that is looked at
    bool m_hasCore = false;
    bool m_hasFlags = false;
    bool m_lacksFlags = false; // of one of them
    bool m_hasLookedAtFinders = false;
    bool m_hasLookedAtRelations = false;
};

#endif
