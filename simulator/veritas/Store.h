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

    // Both throw FileError, with what is wrong and where. A failed Save leaves the main.cf and the running
    // configuration.
    Cluster Load();
    void Save(const Cluster& cluster);

    // The running configuration becomes the main.cf, and the old main.cf becomes .previous.
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
