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
constexpr int Format = 1; // of the manifest
} // namespace BundleFiles

// Whether a file begins as an archive does. Throws Failure when it cannot be read.
bool IsBundle(const std::wstring& file);

// The model of a bundle, in a folder of this account's own that goes with this program: the model.json, or the main.cf.
// Later calls with the same file give the same. Throws Failure when it is no bundle, was changed, or holds no model.
std::wstring ModelOfBundle(const std::wstring& file);

// The product's registry values in an opened bundle; null when the product was not installed.
Json SettingsOfBundle(const std::wstring& file);

#endif
