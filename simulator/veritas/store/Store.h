// Where the cluster is kept: the main.cf and the files beside it.
#ifndef VCSSIM_STORE_H
#define VCSSIM_STORE_H

#include "Cluster.h"
#include "ClusterFiles.h"

#include <stdexcept>
#include <string>

namespace vcssim {

// What is wrong with a file's text, and where; what() says both.
class StoreError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    StoreError(const std::wstring& file, const CfPlace& place, const std::string& reason);

    const std::wstring& File() const {
        return m_file;
    }
    const CfPlace& Place() const { // line 0: not known
        return m_place;
    }
    const std::string& Reason() const {
        return m_reason;
    }

private:
    std::wstring m_file;
    CfPlace m_place;
    std::string m_reason;
};

class Store {
public:
    explicit Store(const ClusterFiles& files) : m_files(files) {
    }

    // All of these throw common::FileError.

    // Throws StoreError too.
    Cluster Load();
    // The running configuration without states. Nothing is to be saved then.
    Cluster LoadConfiguration();
    // The same of the main.cf itself, without what was not dumped.
    Cluster LoadWritten();

    // Never touches the main.cf. The running configuration is replaced first, then the state, each of them whole or not
    // at all, but not both at once: when the second fails, on a full disk for one, the new configuration stays with the
    // old state.
    void Save(const Cluster& cluster);

    // The old main.cf becomes .previous, the running configuration becomes the main.cf, then the state is saved. A
    // failure in between keeps what is done; no configuration is lost.
    void Dump(const Cluster& cluster);

private:
    void ReadConfiguration(Cluster& cluster, const std::wstring& path);
    void ReadTypes(Cluster& cluster) const;

    ClusterFiles m_files;
    std::string m_loadedText;
    std::string m_loadedState;
};

} // namespace vcssim

#endif
