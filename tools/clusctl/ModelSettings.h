// The product's settings in a model of either simulator: written by a snapshot, and in force while such a model
// answers, whatever the registry of this computer holds.
#ifndef CLUSCTL_MODELSETTINGS_H
#define CLUSCTL_MODELSETTINGS_H

#include "Json.h"

#include <winsock2.h>
#include <windows.h>

#include <string>

// The product's key under HKEY_LOCAL_MACHINE unless the settings file names another one.
extern const wchar_t CompiledInProductKey[];

// The product's key as it is called on the computer that answers: in a bundle it may be another than the library's own,
// where the bundle's values stand as long as it is in use.
std::wstring ProductKey();

// What may be done with it: a word of BundleFiles.
const char* ProductKeyAccess();

// The registry values of the product that the library reads, those that are there.
Json ReadProductSettings();

// The registry types of those that are there: "REG_DWORD".
Json ReadProductSettingTypes();

// Those that are there in another type than the library reads: {"type": "REG_EXPAND_SZ", "text": TEXT}, of a number
// "number", of anything else "size". They may stand among the settings of a bundle.
Json ReadOddSettings();

// While it lives, the library finds the settings of the simulator's model where it looks for the product's registry
// key: HKEY_LOCAL_MACHINE of this process is a volatile key of its own then, which nobody else sees. Nothing happens
// without a simulator, or when the model has no settings; a recording and a support bundle always say whether the
// product was there.
class ModelSettings {
public:
    // Throws Failure when they cannot be put in force.
    ModelSettings();
    ~ModelSettings();
    ModelSettings(const ModelSettings&) = delete;
    ModelSettings& operator=(const ModelSettings&) = delete;

    static bool AreInForce();

private:
    void Apply(const Json& settings);
    LSTATUS WriteProduct(const Json& settings) const;
    LSTATUS WriteAccess(const wchar_t* rights) const;
    void Undo();

    std::wstring m_name; // of the key, under HKEY_CURRENT_USER
    HKEY m_machine = nullptr;
};

#endif
