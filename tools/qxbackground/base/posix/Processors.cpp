#include "base/Processors.h"

#include <algorithm>
#include <thread>

#ifdef __linux__
#include <sched.h>
#include <sys/resource.h>

#include <cerrno>
#endif

namespace workbench {

unsigned ProcessorsToUse()
{
#ifdef __linux__
    cpu_set_t processors;
    if (sched_getaffinity(0, sizeof processors, &processors) == 0)
        return static_cast<unsigned>(std::max(CPU_COUNT(&processors), 1));
#endif
    return std::max(std::thread::hardware_concurrency(), 1u);
}

void StandBack()
{
#ifdef __linux__ // elsewhere the whole process would
    constexpr int kNice = 10;
    const int before = errno;
    if (setpriority(PRIO_PROCESS, 0, kNice) != 0)
        errno = before;
#endif
}

} // namespace workbench
