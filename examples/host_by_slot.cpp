// A host without the classes of the headers: it calls each operation by its place in the object's table of functions,
// as a program does whose language has function pointers and nothing more. The order of the slots is the library's
// promise.
//   slot  1  AddCorrection              10  SetExposureAndIntensity
//         2  SetActiveCorrection        15  ApplyCorrection              (all 23: QX_BackgroundCorrection.h)
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace {

#ifdef _WIN32
// Slot n is entry n of the table: the destructor, slot 0, has one.
constexpr int kEntryOfSlotZero = 0;
constexpr char kLibrary[] = "QX_BACKGROUNDCORRECTION.dll";

void* Load(const char* path)
{
    // Looks for a plain name beside this program and in the system's folders. LoadLibraryA looks in the current folder
    // as well, which may be anyone's. The number is LOAD_LIBRARY_SEARCH_DEFAULT_DIRS, which headers for old systems
    // hide.
    return reinterpret_cast<void*>(LoadLibraryExA(path, nullptr, 0x1000));
}
void* Find(void* library, const char* name)
{
    return reinterpret_cast<void*>(GetProcAddress(reinterpret_cast<HMODULE>(library), name));
}
#else
// Slot n is entry n + 1 of the table: the destructor has two.
constexpr int kEntryOfSlotZero = 1;
constexpr char kLibrary[] = "libQX_BACKGROUNDCORRECTION.so";

void* Load(const char* path)
{
    return dlopen(path, RTLD_NOW);
}
void* Find(void* library, const char* name)
{
    return dlsym(library, name);
}
#endif

// An object begins with the address of its table. The object itself is the first argument of every operation; the types
// of the others have to be exactly those of the operation, for nobody converts them.
template <class TResult, class... TArgument> TResult Call(void* object, int slot, TArgument... arguments)
{
    void* const* const table = *static_cast<void***>(object);
    using TOperation = TResult (*)(void*, TArgument...);
    return reinterpret_cast<TOperation>(table[kEntryOfSlotZero + slot])(object, arguments...);
}

template <class... TArgument> void Try(void* object, int slot, TArgument... arguments)
{
    const auto code = Call<unsigned int>(object, slot, arguments...);
    if (code != 0)
        throw std::runtime_error(Call<const char*>(object, 22) + (" (code " + std::to_string(code)) + ")");
}

} // namespace

int main(int argumentCount, char** arguments)
try {
    void* const library = Load(argumentCount > 1 ? arguments[1] : kLibrary);
    void* const create = library == nullptr ? nullptr : Find(library, "CreateBackgroundCorrection");
    void* const destroy = library == nullptr ? nullptr : Find(library, "DeleteBackgroundCorrection");
    if (create == nullptr || destroy == nullptr)
        throw std::runtime_error("cannot load the library");
    void* const object = reinterpret_cast<void* (*)()>(create)();

    std::vector<unsigned short> dark1(16 * 16, 100), dark2(16 * 16, 103), image(16 * 16, 1000);
    const unsigned short* frames[] = {dark1.data(), dark2.data()};
    unsigned short* const inPlace = nullptr;
    void* const noDelegate = nullptr;
    const char* const key = "dark";
    Try(object, 1, key, &frames[0], 2, 16, 16, 0.1f, 100.0f); // seconds, percent
    Try(object, 2, key);
    Try(object, 10, 0.2f, 100.0f); // of the images to come; else the background is divided by 0.1 s times 100 %
    Try(object, 15, image.data(), 16 * 16, inPlace, 0, noDelegate, false, false, false);
    std::printf("1000 became %d\n", int{image[0]});
    reinterpret_cast<unsigned int (*)(void*)>(destroy)(object); // not slot 0: only the library knows how it was made
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "host_by_slot: %s\n", error.what());
    return 1;
}
