// What the compiler's own code refers to.
#include <stdlib.h>

extern "C" {
// Called by the compiler's code when an exception tries to leave a noexcept function.
void __std_terminate()
{
    abort();
}

// The compiler refers to this in code with floating point; nothing reads it.
int _fltused = 1;
}
