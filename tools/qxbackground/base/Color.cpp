#include "base/Color.h"

#include "base/Escapes.h"

#include <cstdlib>

namespace workbench {

namespace {

bool Has(const char* variable)
{
    const char* const value = std::getenv(variable);
    return value != nullptr && value[0] != '\0';
}

std::string Styled(const std::string& text, const char* style, TStream stream)
{
    return !Has("NO_COLOR") && TakesEscapes(stream) ? std::string("\033[") + style + "m" + text + "\033[0m" : text;
}

} // namespace

std::string ErrorMark(const std::string& text)
{
    return Styled(text, "1;31", TStream::Error);
}

std::string WarningMark(const std::string& text)
{
    return Styled(text, "1;33", TStream::Output);
}

std::string Heading(const std::string& text)
{
    return Styled(text, "1", TStream::Output);
}

} // namespace workbench
