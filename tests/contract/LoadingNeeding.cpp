// Has the names of the library's exports and depends on another DLL. Nothing of it is called but by the loader.
extern "C" {
__declspec(dllimport) void* Nothing();

__declspec(dllexport) void* CreateBackgroundCorrection()
{
    return Nothing();
}
__declspec(dllexport) void* CreateBackgroundCorrectionOffline()
{
    return Nothing();
}
__declspec(dllexport) void* DeleteBackgroundCorrection()
{
    return Nothing();
}
__declspec(dllexport) void* GetLastBackgroundCorrectionDLLError()
{
    return Nothing();
}
}
