// Runs programs in a console of its own, types at them, and tells what the screen showed: what a script outside cannot
// do there. A console without a window, so that it works where there is no display.
//
//   tool_test_console SCENES RESULTS
//
// SCENES holds four lines for each scene: the value of TERM, what its screen has to show before anything is typed (a
// few words; nothing is waited for when there are none), what is typed then (^C for Ctrl-C, ^M for the return key), the
// command line. All texts are UTF-8. RESULTS gets for each scene a line "ended S modes B D A pages B A": its exit
// status, the mode of the output before, during and after it, the code page before and after it; then the lines of the
// screen, those above the last one that holds something, each with a > before it.
#include <windows.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr short kColumns = 160, kRows = 50;
constexpr DWORD kMilliseconds = 60000; // for a scene

std::wstring Wide(const std::string& text)
{
    std::vector<wchar_t> wide(text.size() + 1);
    const int count = MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), wide.data(),
                                          static_cast<int>(wide.size()));
    return {wide.data(), static_cast<std::size_t>(count)};
}

std::string Narrow(const std::wstring& text)
{
    std::vector<char> narrow(text.size() * 4 + 1);
    const int count = WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), narrow.data(),
                                          static_cast<int>(narrow.size()), nullptr, nullptr);
    return {narrow.data(), static_cast<std::size_t>(count)};
}

// Headers older than these functions do not name them.
using TPseudoConsole = void*;
using TCreatePseudoConsole = HRESULT(WINAPI*)(COORD, HANDLE, HANDLE, DWORD, TPseudoConsole*);
using TClosePseudoConsole = void(WINAPI*)(TPseudoConsole);

template <typename TFunction> TFunction SystemFunction(const char* name)
{
    const FARPROC found = GetProcAddress(GetModuleHandleA("kernel32.dll"), name);
    return reinterpret_cast<TFunction>(reinterpret_cast<void*>(found));
}

struct TScene {
    std::string term, awaited, typed, command;
};

class TConsole {
public:
    std::vector<std::string> Screen() const
    {
        std::vector<std::string> lines;
        for (short row = 0; row < kRows; ++row) {
            std::vector<wchar_t> cells(kColumns);
            DWORD count = 0;
            ReadConsoleOutputCharacterW(output, cells.data(), kColumns, COORD{0, row}, &count);
            std::wstring line(cells.data(), count);
            for (wchar_t& character : line)
                character = character == 0 ? L' ' : character;
            line.erase(line.find_last_not_of(L' ') + 1);
            lines.push_back(Narrow(line));
        }
        while (!lines.empty() && lines.back().empty())
            lines.pop_back();
        return lines;
    }
    bool Shows(const std::string& text) const
    {
        for (const std::string& line : Screen()) {
            if (line.find(text) != std::string::npos)
                return true;
        }
        return false;
    }
    void Clear() const
    {
        DWORD count = 0;
        FillConsoleOutputCharacterW(output, L' ', kColumns * kRows, COORD{0, 0}, &count);
        SetConsoleCursorPosition(output, COORD{0, 0});
    }
    DWORD Mode() const
    {
        DWORD mode = 0;
        GetConsoleMode(output, &mode);
        return mode;
    }
    void Type(const std::string& text) const
    {
        for (std::size_t at = 0; at < text.size(); ++at) {
            const bool isControl = text[at] == '^' && at + 1 < text.size();
            const char character = isControl ? static_cast<char>(text[++at] - '@') : text[at];
            INPUT_RECORD press{};
            press.EventType = KEY_EVENT;
            KEY_EVENT_RECORD& key = press.Event.KeyEvent;
            key.bKeyDown = TRUE;
            key.wRepeatCount = 1;
            key.uChar.UnicodeChar = static_cast<wchar_t>(character);
            key.wVirtualKeyCode = character == '\r' ? VK_RETURN : character == 3 ? 'C' : 0;
            key.dwControlKeyState = character == 3 ? LEFT_CTRL_PRESSED : 0;
            DWORD count = 0;
            WriteConsoleInputW(input, &press, 1, &count);
        }
    }
    // Its exit status; 259 when it does not end.
    DWORD Run(const TScene& scene, DWORD& modeDuring) const
    {
        SetEnvironmentVariableA("TERM", scene.term.empty() ? nullptr : scene.term.c_str());
        STARTUPINFOW start{};
        start.cb = sizeof start;
        start.dwFlags = STARTF_USESTDHANDLES;
        start.hStdInput = input;
        start.hStdOutput = start.hStdError = output;
        PROCESS_INFORMATION process{};
        std::wstring command = Wide(scene.command);
        if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process) == 0)
            return GetLastError() + 1000;
        if (!scene.awaited.empty()) {
            constexpr DWORD kOften = 20;
            const DWORD from = GetTickCount();
            while (!Shows(scene.awaited) && GetTickCount() - from < kMilliseconds &&
                   WaitForSingleObject(process.hProcess, kOften) != WAIT_OBJECT_0) {
            }
            modeDuring = Mode();
            Type(scene.typed);
        }
        if (WaitForSingleObject(process.hProcess, kMilliseconds) != WAIT_OBJECT_0)
            TerminateProcess(process.hProcess, STILL_ACTIVE);
        DWORD status = 0;
        GetExitCodeProcess(process.hProcess, &status);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
        return status;
    }

private:
    static HANDLE Open(const wchar_t* name)
    {
        SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
        return CreateFileW(name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                           OPEN_EXISTING, 0, nullptr);
    }

    HANDLE input = Open(L"CONIN$"), output = Open(L"CONOUT$");
};

// Ctrl-C goes to all programs of a console. Not ignored, which the programs would inherit.
BOOL WINAPI StayOn(DWORD)
{
    return TRUE;
}

int PlayScenes(const wchar_t* scenesPath, const wchar_t* resultsPath)
{
    SetConsoleCtrlHandler(StayOn, TRUE);
    std::ifstream scenes(Narrow(scenesPath), std::ios::binary);
    std::ofstream results(Narrow(resultsPath), std::ios::binary);
    const TConsole console;
    TScene scene;
    while (std::getline(scenes, scene.term) && std::getline(scenes, scene.awaited) &&
           std::getline(scenes, scene.typed) && std::getline(scenes, scene.command)) {
        console.Clear();
        const DWORD modeBefore = console.Mode(), pageBefore = GetConsoleOutputCP();
        DWORD modeDuring = modeBefore;
        const DWORD status = console.Run(scene, modeDuring);
        results << "ended " << status << " modes " << modeBefore << ' ' << modeDuring << ' ' << console.Mode()
                << " pages " << pageBefore << ' ' << GetConsoleOutputCP() << '\n';
        for (const std::string& line : console.Screen())
            results << '>' << line << '\n';
    }
    return results.flush() ? 0 : 3;
}

// The same program again, in a console that this one makes.
int MakeConsole(const std::wstring& program, const std::wstring& scenes, const std::wstring& results)
{
    HANDLE toRead = nullptr, toType = nullptr, shown = nullptr, toShow = nullptr;
    const auto create = SystemFunction<TCreatePseudoConsole>("CreatePseudoConsole");
    const auto close = SystemFunction<TClosePseudoConsole>("ClosePseudoConsole");
    TPseudoConsole console = nullptr;
    if (create == nullptr || close == nullptr || CreatePipe(&toRead, &toType, nullptr, 0) == 0 ||
        CreatePipe(&shown, &toShow, nullptr, 0) == 0 ||
        create(COORD{kColumns, kRows}, toRead, toShow, 0, &console) != S_OK)
        return 90;
    // Nobody looks at what it draws, but it has to get rid of it.
    std::thread([shown] {
        char some[4096];
        DWORD count = 0;
        while (ReadFile(shown, some, sizeof some, &count, nullptr) != 0 && count > 0) {
        }
    }).detach();
    SIZE_T bytes = 0;
    InitializeProcThreadAttributeList(nullptr, 1, 0, &bytes);
    std::vector<char> memory(bytes);
    STARTUPINFOEXW start{};
    start.StartupInfo.cb = sizeof start;
    start.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    start.lpAttributeList = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(memory.data());
    constexpr DWORD_PTR kPseudoConsole = 0x20016; // PROC_THREAD_ATTRIBUTE_PSEUDOCONSOLE, which older headers lack
    if (InitializeProcThreadAttributeList(start.lpAttributeList, 1, 0, &bytes) == 0 ||
        UpdateProcThreadAttribute(start.lpAttributeList, 0, kPseudoConsole, console, sizeof console, nullptr,
                                  nullptr) == 0)
        return 91;
    std::wstring command = L"\"" + program + L"\" \"" + scenes + L"\" \"" + results + L"\" inside";
    PROCESS_INFORMATION process{};
    if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, EXTENDED_STARTUPINFO_PRESENT, nullptr, nullptr,
                       &start.StartupInfo, &process) == 0)
        return 92;
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD status = 93;
    GetExitCodeProcess(process.hProcess, &status);
    close(console);
    return static_cast<int>(status);
}

} // namespace

int wmain(int count, wchar_t** words)
{
    if (count == 4)
        return PlayScenes(words[1], words[2]);
    return count == 3 ? MakeConsole(words[0], words[1], words[2]) : 99;
}
