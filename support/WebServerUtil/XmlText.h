// Reads XML held in memory with the platform's XmlLite.
#ifndef XMLTEXT_H
#define XMLTEXT_H

#include <map>
#include <string>
#include <vector>

// Told about each element while the text is read.
class XmlElementHandler {
public:
    // `path` holds the names (without prefix) from the document element down to this one. `attributes` is by name
    // without prefix.
    virtual void OnElement(const std::vector<std::wstring>& path,
                           const std::map<std::wstring, std::wstring>& attributes) = 0;

protected:
    ~XmlElementHandler() = default;
};

// False when the text is not well-formed to its end, has a document type, or XmlLite is missing; elements up to there
// have been reported then. Throws std::bad_alloc only.
bool ReadXml(const std::string& bytes, XmlElementHandler& handler);

#endif
