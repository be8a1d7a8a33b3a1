#include "images/TTiffHandle.h"

#include <cstdarg>
#include <cstdio>
#include <new>

namespace workbench {

namespace {

// Only an operation's first message names the cause; later ones report consequences.
int KeepComplaint(TIFF*, void* user, const char*, const char* format, va_list arguments)
{
    auto* const handle = static_cast<TTiffHandle*>(user);
    if (handle->complaint.empty()) {
        char text[512] = "";
        std::vsnprintf(text, sizeof text, format, arguments);
        handle->complaint = text;
    }
    return 1;
}

int DropWarning(TIFF*, void*, const char*, const char*, va_list)
{
    return 1;
}

} // namespace

void TTiffHandle::Open(const std::filesystem::path& path, const char* mode)
{
    TIFFOpenOptions* const options = TIFFOpenOptionsAlloc();
    if (options == nullptr)
        throw std::bad_alloc();
    TIFFOpenOptionsSetErrorHandlerExtR(options, &KeepComplaint, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options, &DropWarning, this);
    tiff = OpenTiff(path, mode, options);
    TIFFOpenOptionsFree(options);
}

} // namespace workbench
