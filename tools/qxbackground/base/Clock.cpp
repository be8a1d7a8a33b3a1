#include "base/Clock.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace workbench {

std::string TimeText()
{
    std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    const char* const given = std::getenv("SOURCE_DATE_EPOCH");
    if (given != nullptr && *given != '\0' && std::strspn(given, "0123456789") == std::strlen(given) &&
        std::strlen(given) <= 11)
        now = static_cast<std::time_t>(std::strtoll(given, nullptr, 10));
    return fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(now));
}

} // namespace workbench
