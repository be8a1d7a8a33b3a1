// What code compiled with -fstack-protector-strong refers to: the value that lies between a function's arrays and its
// return address, and the check that it still lies there when the function returns. The load configuration tells the
// system's loader where the value is, and the loader puts a random one there before anything of the module runs.
//
// The load configuration offers nothing else: see docs/packages.md for what it leaves out, and why.
#include <stdint.h>

extern "C" {
// What the loader takes for "not set yet": the system's own constant for 64 bits.
uintptr_t __security_cookie = 0x00002B992DDFA232;

// The value is compared before anything else is done: the stack is not to be trusted any more. Registers other than rcx
// keep what they hold, since they may hold a function's result.
__attribute__((naked)) void __security_check_cookie(uintptr_t)
{
    __asm__ volatile("cmpq __security_cookie(%rip), %rcx\n\t"
                     "jne 1f\n\t"
                     "ret\n"
                     "1:\n\t"
                     "movl $2, %ecx\n\t" // FAST_FAIL_STACK_COOKIE_CHECK_FAILURE: ends the process, no handler runs
                     "int $0x29");
}

// The beginning of IMAGE_LOAD_CONFIG_DIRECTORY64, up to the field that matters here; the loader reads as much of it as
// its size says.
struct TLoadConfiguration {
    uint32_t size;
    uint32_t timeDateStamp;
    uint16_t majorVersion;
    uint16_t minorVersion;
    uint32_t globalFlags[2];
    uint32_t criticalSectionTimeout;
    uint64_t limits[4]; // of heap blocks, not used
    uint64_t processAffinityMask;
    uint64_t virtualMemoryThreshold;
    uint32_t processHeapFlags;
    uint16_t serviceVersion;
    uint16_t dependentLoadFlags;
    uint64_t editList;
    uintptr_t* securityCookie;
    uint64_t handlers[2]; // of 32-bit modules
};
static_assert(sizeof(TLoadConfiguration) == 112, "the layout is the system's");
// The linker looks for it by this name.
extern const TLoadConfiguration _load_config_used;
const TLoadConfiguration _load_config_used = {sizeof(TLoadConfiguration), 0, 0, 0, {}, 0, {}, 0, 0, 0, 0, 0, 0,
                                              &__security_cookie,         {}};
}
