#include "HostPlatform.h"

#include <chrono>
#include <cstdio>
#include <dlfcn.h>
#include <future>
#include <malloc.h>
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

bool LibraryIsComplete()
{
    return true;
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
