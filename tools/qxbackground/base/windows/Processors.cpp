#include "base/Processors.h"

#include <windows.h>

#include <algorithm>
#include <bitset>
#include <thread>

namespace workbench {

unsigned ProcessorsToUse()
{
    DWORD_PTR ours = 0, all = 0;
    if (GetProcessAffinityMask(GetCurrentProcess(), &ours, &all) != 0 && ours != 0)
        return static_cast<unsigned>(std::bitset<64>(ours).count());
    return std::max(std::thread::hardware_concurrency(), 1u);
}

void StandBack()
{
    SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_BELOW_NORMAL);
}

} // namespace workbench
