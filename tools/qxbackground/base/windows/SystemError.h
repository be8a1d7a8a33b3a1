#ifndef QXBACKGROUND_BASE_WINDOWS_SYSTEMERROR_H
#define QXBACKGROUND_BASE_WINDOWS_SYSTEMERROR_H

#include <system_error>

namespace workbench {

// What GetLastError says, where C has the same with the same text as on other systems, otherwise in Windows' words.
std::error_code LastSystemError();
std::error_code SystemError(unsigned long code);

} // namespace workbench

#endif
