// The bytes are a sequence of operations on two live processors, two stores and the files between them.
#include "LimitedMemory.h"
#include "MemoryFiles.h"
#include "OperationWorld.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const TLimitedMemory limitedMemory;
    MemoryFiles::Clear();
    MemoryFiles::MakeFolder("d");
    TOperationWorld(data, size).Run();
    MemoryFiles::Clear();
    return 0;
}
