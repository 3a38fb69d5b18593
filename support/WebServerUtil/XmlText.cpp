#include "XmlText.h"

#include <algorithm>
#include <cstring>

#include <winsock2.h>
#include <windows.h>

#include <objidl.h>
#include <xmllite.h>

namespace {

template <class Interface> class ComOwner {
public:
    ComOwner() = default;
    ~ComOwner() {
        if (m_object != nullptr) {
            m_object->Release();
        }
    }
    ComOwner(const ComOwner&) = delete;
    ComOwner& operator=(const ComOwner&) = delete;

    Interface* operator->() const {
        return m_object;
    }
    void** Receive() {
        return reinterpret_cast<void**>(&m_object);
    }

private:
    Interface* m_object = nullptr;
};

// The bytes as a stream. Lives on the stack longer than its reader, so that counting references is not needed.
class ByteStream final : public ISequentialStream {
public:
    explicit ByteStream(const std::string& bytes) : m_bytes(bytes) {
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        if (IsEqualIID(id, __uuidof(IUnknown)) || IsEqualIID(id, __uuidof(ISequentialStream))) {
            *object = static_cast<ISequentialStream*>(this);
            return S_OK;
        }
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override {
        return 2;
    }
    ULONG STDMETHODCALLTYPE Release() override {
        return 1;
    }

    HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG size, ULONG* read) override {
        const ULONG count = static_cast<ULONG>(std::min<size_t>(size, m_bytes.size() - m_position));
        std::memcpy(buffer, m_bytes.data() + m_position, count);
        m_position += count;
        if (read != nullptr) {
            *read = count;
        }
        return count == size ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Write(const void*, ULONG, ULONG*) override {
        return STG_E_ACCESSDENIED;
    }

private:
    const std::string& m_bytes;
    size_t m_position = 0;
};

typedef HRESULT(WINAPI* CreateXmlReaderFunction)(REFIID id, void** object, IMalloc* allocator);

// XmlLite from the system folder, looked up at run time: Windows Server 2003 got it with a service pack only. Stays
// loaded.
CreateXmlReaderFunction FindCreateXmlReader() {
    wchar_t path[MAX_PATH + 16];
    const UINT length = GetSystemDirectoryW(path, MAX_PATH);
    if (length == 0 || length >= MAX_PATH) {
        return nullptr;
    }
    lstrcatW(path, L"\\xmllite.dll");
    const HMODULE module = LoadLibraryW(path);
    if (module == nullptr) {
        return nullptr;
    }
    CreateXmlReaderFunction function = nullptr;
    const FARPROC address = GetProcAddress(module, "CreateXmlReader");
    static_assert(sizeof(function) == sizeof(address), "code pointers have one size");
    std::memcpy(&function, &address, sizeof(function));
    return function;
}

std::wstring LocalName(IXmlReader& reader) {
    const wchar_t* text = nullptr;
    UINT length = 0;
    return SUCCEEDED(reader.GetLocalName(&text, &length)) ? std::wstring(text, length) : std::wstring();
}

bool ReadAttributes(IXmlReader& reader, std::map<std::wstring, std::wstring>& attributes) {
    HRESULT result = reader.MoveToFirstAttribute();
    while (result == S_OK) {
        const wchar_t* text = nullptr;
        UINT length = 0;
        const std::wstring name = LocalName(reader);
        if (FAILED(reader.GetValue(&text, &length))) {
            return false;
        }
        attributes[name].assign(text, length);
        result = reader.MoveToNextAttribute();
    }
    return SUCCEEDED(result);
}

} // namespace

bool ReadXml(const std::string& bytes, XmlElementHandler& handler) {
    static const CreateXmlReaderFunction createXmlReader = FindCreateXmlReader();
    ByteStream stream(bytes);
    ComOwner<IXmlReader> reader;
    if (createXmlReader == nullptr || FAILED(createXmlReader(__uuidof(IXmlReader), reader.Receive(), nullptr)) ||
        FAILED(reader->SetProperty(XmlReaderProperty_DtdProcessing, DtdProcessing_Prohibit)) ||
        FAILED(reader->SetInput(&stream))) {
        return false;
    }
    std::vector<std::wstring> path;
    bool hasElement = false;
    for (;;) {
        XmlNodeType type = XmlNodeType_None;
        const HRESULT result = reader->Read(&type);
        if (result != S_OK) {
            return result == S_FALSE && hasElement && path.empty();
        }
        if (type == XmlNodeType_Element) {
            hasElement = true;
            const bool isEmpty = reader->IsEmptyElement() != FALSE;
            path.push_back(LocalName(*reader.operator->()));
            std::map<std::wstring, std::wstring> attributes;
            if (!ReadAttributes(*reader.operator->(), attributes)) {
                return false;
            }
            handler.OnElement(path, attributes);
            if (isEmpty) {
                path.pop_back();
            }
        } else if (type == XmlNodeType_EndElement) {
            if (path.empty()) {
                return false;
            }
            path.pop_back();
        }
    }
}
