// The system's files when memory runs out.
#include "support/AllocationFaults.h"
#include "support/TemporaryFolder.h"

#include "platform/FileStream.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// A store takes a file that cannot be opened for one that is not there, and begins its group anew: want of memory must
// not look like that.
TEST(FilesWithoutMemory, FindingAndOpeningFilesNeedsNone)
{
    const TTemporaryFolder folder;
    const std::string path = folder.File("file.qxb");
    Platform::TFileStream stream;
    TAllocationFaults memory(1, TFaultRepeat::kForGood);
    const bool created = stream.OpenForWriting(path.c_str());
    stream.Close();
    const bool exists = Platform::PathExists(path.c_str());
    const bool opened = stream.OpenForReading(path.c_str());
    stream.Close();
    const bool removed = Platform::RemoveFile(path.c_str());
    memory.Disarm();
    EXPECT_TRUE(created && exists && opened && removed);
    EXPECT_FALSE(memory.Fired());
}

} // namespace
