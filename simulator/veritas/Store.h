// Where the cluster is kept: the main.cf and the files beside it.
#ifndef VCSSIM_STORE_H
#define VCSSIM_STORE_H

#include "Cluster.h"

#include <string>

namespace vcssim {

class Store {
public:
    explicit Store(const std::wstring& mainCf) : m_mainCf(mainCf) {
    }

    std::wstring LockFile() const {
        return m_mainCf + L".lock";
    }

    // All of these throw FileError, with what is wrong and where.
    Cluster Load();

    // Never touches the main.cf. The running configuration is replaced first, then the state, each of them whole or not
    // at all, but not both at once: when the second fails, on a full disk for one, the new configuration stays with the
    // old state.
    void Save(const Cluster& cluster);

    // The old main.cf becomes .previous, the running configuration becomes the main.cf, then the state is saved. A
    // failure in between keeps what is done; no configuration is lost.
    void Dump(const Cluster& cluster);

private:
    std::wstring Beside(const std::string& name) const;
    void ReadTypes(Cluster& cluster) const;

    std::wstring m_mainCf;
    std::string m_loadedText;
    std::string m_loadedState;
};

} // namespace vcssim

#endif
