// What LoadingNeeding.cpp depends on.
extern "C" __declspec(dllexport) void* Nothing()
{
    return nullptr;
}
