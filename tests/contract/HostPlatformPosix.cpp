#include "HostPlatform.h"

#include <chrono>
#include <cstdio>
#include <dlfcn.h>
#include <future>
#include <link.h>
#include <malloc.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

namespace HostPlatform {
namespace {
void* library = nullptr;
} // namespace

bool OpenLibrary(const char* path)
{
#ifdef __GLIBC__
    // One heap for all threads: what another thread's heap has reserved would still be there to be allocated when
    // memory is exhausted.
    mallopt(M_ARENA_MAX, 1);
#endif
    library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (!library)
        std::printf("%s\n", dlerror());
    return library != nullptr;
}

TFunction FindExport(const char* name)
{
    return reinterpret_cast<TFunction>(dlsym(library, name));
}

namespace {

// The version in one segment of notes, each of them three numbers, a name and a content, padded to `alignment` bytes.
TVersion VersionInNotes(const char* notes, std::size_t size, std::size_t alignment)
{
    const auto padded = [alignment](std::size_t length) { return (length + alignment - 1) / alignment * alignment; };
    constexpr unsigned int kPackage = 0xCAFE1A7E;
    TVersion version{};
    ElfW(Nhdr) header;
    for (std::size_t at = 0; at + sizeof header <= size;) {
        std::memcpy(&header, notes + at, sizeof header);
        const std::size_t content = at + padded(sizeof header + header.n_namesz);
        const char* const text = header.n_type == kPackage ? std::strstr(notes + content, "\"version\":\"") : nullptr;
        if (text != nullptr)
            std::sscanf(text, "\"version\":\"%u.%u.%u\"", &version.major, &version.minor, &version.patch);
        at = content + padded(header.n_descsz);
    }
    return version;
}

struct TVersionSearch {
    ElfW(Addr) libraryAddress;
    TVersion version;
};

int VersionInModule(dl_phdr_info* module, std::size_t, void* data)
{
    auto* const search = static_cast<TVersionSearch*>(data);
    if (module->dlpi_addr != search->libraryAddress)
        return 0;
    for (int i = 0; i < module->dlpi_phnum && search->version.major == 0; ++i) {
        const ElfW(Phdr)& segment = module->dlpi_phdr[i];
        if (segment.p_type == PT_NOTE)
            search->version = VersionInNotes(reinterpret_cast<const char*>(module->dlpi_addr + segment.p_vaddr),
                                             segment.p_filesz, segment.p_align < 8 ? 4 : 8);
    }
    return 1;
}

} // namespace

TVersion LibraryVersion()
{
    link_map* map = nullptr;
    if (dlinfo(library, RTLD_DI_LINKMAP, &map) != 0)
        return TVersion{};
    TVersionSearch search{map->l_addr, TVersion{}};
    dl_iterate_phdr(VersionInModule, &search);
    return search.version;
}

const char* const kNullDevice = "/dev/null";

// Entry 0 destroys the object where it is, entry 1 frees it as well.
const std::size_t kIndexOfFirstOperation = 2;

void DeleteThroughTable(QX_KRLSDK::QX_IBackgroundCorrection* object)
{
    reinterpret_cast<void (*)(QX_KRLSDK::QX_IBackgroundCorrection*)>(Table(object)[1])(object);
}

std::size_t BytesInUse()
{
    unsigned long pages = 0;
    if (std::FILE* file = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(file, "%lu", &pages) != 1)
            pages = 0;
        std::fclose(file);
    }
    return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

TExhaustedMemory::TExhaustedMemory()
{
    rlimit limit{};
    getrlimit(RLIMIT_AS, &limit);
    limit.rlim_cur = BytesInUse() + (8u << 20); // enough for small blocks
    complete = setrlimit(RLIMIT_AS, &limit) == 0;
    // Emulators of another processor take the limit and do not keep it.
    constexpr std::size_t kTooMuch = std::size_t{256} << 20;
    void* const pages = mmap(nullptr, kTooMuch, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages != MAP_FAILED) {
        munmap(pages, kTooMuch);
        complete = false;
    }
}

TExhaustedMemory::~TExhaustedMemory()
{
    rlimit limit{};
    getrlimit(RLIMIT_AS, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_AS, &limit);
}

#if defined(__has_feature)
#define QXBC_HAS_FEATURE(name) __has_feature(name)
#else
#define QXBC_HAS_FEATURE(name) 0
#endif

const char* Sanitizer()
{
#if defined(__SANITIZE_ADDRESS__) || QXBC_HAS_FEATURE(address_sanitizer)
    return "AddressSanitizer";
#elif defined(__SANITIZE_THREAD__) || QXBC_HAS_FEATURE(thread_sanitizer)
    return "ThreadSanitizer";
#else
    return nullptr;
#endif
}

bool FinishesOnAnotherThread(void (*work)(void*), void* argument, unsigned int milliseconds)
{
    std::packaged_task<void()> task([work, argument] { work(argument); });
    const std::future<void> done = task.get_future();
    std::thread thread(std::move(task));
    const bool inTime = done.wait_for(std::chrono::milliseconds(milliseconds)) == std::future_status::ready;
    if (inTime)
        thread.join();
    else
        thread.detach();
    return inTime;
}

} // namespace HostPlatform
