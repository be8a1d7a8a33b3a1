// Whether the small runtime's stack protector works in a program that is built as the DLL is: the loader has set its
// value, functions that keep to their arrays return, and one that does not ends the program before it returns.
#include <cstdint>
#include <cstdio>

extern "C" std::uintptr_t __security_cookie;

namespace {
__attribute__((noinline)) void Fill(char* array, int count)
{
    for (int i = 0; i < count; ++i) {
        const_cast<volatile char*>(array)[i] = 'x';
    }
}

__attribute__((noinline)) int FillOwnArray(int count)
{
    char array[16];
    Fill(array, count);
    return array[15];
}
} // namespace

int main(int argumentCount, char**)
{
    if (__security_cookie == 0 || __security_cookie == 0x00002B992DDFA232) {
        std::puts("nobody has set the value");
        return 1;
    }
    if (FillOwnArray(16) != 'x') {
        return 1;
    }
    if (argumentCount > 1) {
        FillOwnArray(24); // the value lies right behind the array, the return address further on
        std::puts("an overwritten array was not noticed");
        return 1;
    }
    return 0;
}
