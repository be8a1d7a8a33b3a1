#ifndef QXBACKGROUND_BASE_WINDOWS_WIDETEXT_H
#define QXBACKGROUND_BASE_WINDOWS_WIDETEXT_H

#include <string>

namespace workbench {

// Text between the system's wide characters and this program's UTF-8. What is no text becomes replacement characters.
std::string Narrow(const std::wstring& wide);
std::wstring Widen(const std::string& narrow);

// The same by the system's code page. False when it has no character for one of them.
bool ToCodePage(const std::wstring& wide, std::string& bytes);
bool FromCodePage(const std::string& bytes, std::wstring& wide);

} // namespace workbench

#endif
