#include "base/windows/TConsoleBuffer.h"

#include "base/windows/WideText.h"

#include <windows.h>

#include <algorithm>

namespace workbench {

TConsoleBuffer::int_type TConsoleBuffer::overflow(int_type character)
{
    if (traits_type::eq_int_type(character, traits_type::eof()))
        return traits_type::not_eof(character);
    const char one = traits_type::to_char_type(character);
    return xsputn(&one, 1) == 1 ? character : traits_type::eof();
}

std::streamsize TConsoleBuffer::xsputn(const char* text, std::streamsize count)
{
    held.append(text, static_cast<std::size_t>(count));
    const std::size_t end = held.rfind('\n');
    return end == std::string::npos || Show(end + 1) ? count : 0;
}

int TConsoleBuffer::sync()
{
    return Show(held.size()) ? 0 : -1;
}

bool TConsoleBuffer::Show(std::size_t count)
{
    const std::wstring wide = Widen(held.substr(0, count));
    held.erase(0, count);
    constexpr std::size_t kMost = 8192; // older consoles take no more than 64 KiB at a time
    for (std::size_t at = 0; at < wide.size();) {
        const auto length = static_cast<DWORD>(std::min(kMost, wide.size() - at));
        DWORD written = 0;
        if (WriteConsoleW(GetStdHandle(STD_OUTPUT_HANDLE), wide.data() + at, length, &written, nullptr) == 0 ||
            written == 0)
            return false;
        at += written;
    }
    return true;
}

} // namespace workbench
