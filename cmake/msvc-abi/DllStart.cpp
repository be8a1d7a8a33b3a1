// Where the loader enters a DLL. There is nothing to start: the C runtime (ucrtbase.dll) starts itself, and the
// toolchain allows only those global objects that are constant-initialised.
extern "C" int _DllMainCRTStartup(void*, unsigned long, void*)
{
    return 1;
}
