// Where the loader enters a console program: arguments as the C runtime takes them apart, then main. Global objects
// need no start, see DllStart.cpp.
#include <stdlib.h>

int main(int argumentCount, char** arguments);

extern "C" {

int _configure_narrow_argv(int mode); // declared in no header

void mainCRTStartup()
{
    const int takeArgumentsAsTheyAre = 1;
    _configure_narrow_argv(takeArgumentsAsTheyAre);
    exit(main(*__p___argc(), *__p___argv()));
}
}
