// Support bundles: the names of their files, and opening one as a model.
#ifndef CLUSCTL_BUNDLEFILES_H
#define CLUSCTL_BUNDLEFILES_H

#include "Json.h"

#include <string>

namespace BundleFiles {
constexpr char Manifest[] = "manifest.json";
constexpr char Model[] = "model.json"; // of a failover cluster
constexpr char MainCf[] = "main.cf";   // of VCS
constexpr char Settings[] = "settings.json";
constexpr char Versions[] = "versions.json"; // with the computer's name
constexpr char Doctor[] = "doctor.json";
constexpr int Format = 1; // of the manifest

// What may be done with the product's registry key.
constexpr char AccessFull[] = "full"; // as the library asks for it
constexpr char AccessRead[] = "read";
constexpr char AccessNone[] = "none";
constexpr char AccessMissing[] = "missing"; // the key
} // namespace BundleFiles

// Whether a file begins as an archive does. Throws Failure when it cannot be read.
bool IsBundle(const std::wstring& file);

// The model of a bundle, in a folder of this account's own that goes with this program: the model.json, or the main.cf.
// Later calls with the same file give the same. Throws Failure when it is no bundle, was changed, or holds no model.
std::wstring ModelOfBundle(const std::wstring& file);

// What a bundle tells of the computer that it was made on.
struct BundledComputer {
    std::wstring name;       // empty when it is not told
    std::wstring productKey; // the same
    Json settings;           // the product's registry values; null when there are none
    bool hasProductKey = false;
    bool isKeyReadable = true; // by the account that made the bundle
    bool isKeyWritable = true;
    Json findings; // of the doctor; null when they are not told
};

// Of an opened bundle. Throws Failure as ModelOfBundle does.
const BundledComputer& ComputerOfBundle(const std::wstring& file);

#endif
