// Put before every source of the workbench for Windows.
//
// A std::filesystem::path gives its text away as UTF-8. Until version 12 GCC's library did not take it back as such: it
// widened each byte by itself, so that a name with other letters than ASCII's came out as another name. This is the one
// function that all narrow text passes on its way into a path, as later versions have it.
#ifndef QXBACKGROUND_BASE_WINDOWS_UTF8PATHS_H
#define QXBACKGROUND_BASE_WINDOWS_UTF8PATHS_H

#include <filesystem>
#include <string_view>

#if defined(_GLIBCXX_RELEASE) && _GLIBCXX_RELEASE <= 12
template <> inline auto std::filesystem::path::_S_convert<char>(const char* first, const char* last)
{
    return std::filesystem::__detail::__wstr_from_utf8(std::string_view(first, static_cast<std::size_t>(last - first)));
}
#endif

#endif
