// Finds the site that serves a folder in the text of an IIS configuration file.
#ifndef SITELOOKUP_H
#define SITELOOKUP_H

#include <string>

enum class SiteFileForm {
    ApplicationHost, // applicationHost.config, IIS 7 and later
    MetaBase         // MetaBase.xml, IIS 6
};

// `bytes` is the whole file, UTF-8 or UTF-16. Gives the site's number, or -1 when there is no such site or the file is
// not well-formed to its end. Throws std::bad_alloc only.
int FindSiteOfFolder(const std::string& bytes, SiteFileForm form, const std::wstring& folder);

#endif
