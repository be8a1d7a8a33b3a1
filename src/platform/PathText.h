// How a host of this system writes paths.
#ifndef PLATFORM_PATHTEXT_H
#define PLATFORM_PATHTEXT_H

#include <string>

namespace Platform {

// Turns the separators that hosts of this system use into "\", the only one that the offline store knows. On Windows a
// path stays as it is.
void UseBackslashes(std::string& path);

} // namespace Platform

#endif
