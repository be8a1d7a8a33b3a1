// What the tests of the workbench on Windows need of the system, which a script outside cannot do there.
//
//   hold FILE MILLISECONDS   keeps a file open so that nobody can replace it, and prints "held"
//   lock FILE                keeps a file as its own, as the workbench's lock does, until it is killed
#include <windows.h>

#include <cstdio>
#include <string>

namespace {

int Hold(const wchar_t* file, DWORD sharing, DWORD how, DWORD flags, DWORD milliseconds)
{
    const HANDLE held = CreateFileW(file, GENERIC_READ, sharing, nullptr, how, flags, nullptr);
    if (held == INVALID_HANDLE_VALUE)
        return 90;
    std::puts("held");
    std::fflush(stdout);
    Sleep(milliseconds);
    CloseHandle(held);
    return 0;
}

} // namespace

int wmain(int count, wchar_t** words)
{
    const std::wstring what = count > 1 ? words[1] : L"";
    if (what == L"hold" && count == 4)
        return Hold(words[2], FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING, 0, std::stoul(words[3]));
    if (what == L"lock" && count == 3)
        return Hold(words[2], 0, OPEN_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE, INFINITE);
    return 99;
}
