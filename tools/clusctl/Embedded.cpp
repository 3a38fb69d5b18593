#include "Embedded.h"

#include <winsock2.h>
#include <windows.h>

#include <algorithm>

std::string EmbeddedText(const wchar_t* name) {
    const HRSRC place = FindResourceW(nullptr, name, MAKEINTRESOURCEW(10)); // RT_RCDATA
    const HGLOBAL resource = place == nullptr ? nullptr : LoadResource(nullptr, place);
    if (resource == nullptr) {
        return std::string();
    }
    std::string text(static_cast<const char*>(LockResource(resource)), SizeofResource(nullptr, place));
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    return text;
}
