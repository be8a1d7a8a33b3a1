// What only Windows has: devices by name, pipes with names.
#include "file/ProcessorDriver.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace {

TEST(WindowsFiles, APipeIsNeitherLoadedNorSavedTo)
{
    TBackgroundCorrectionProcessorUINT16 processor;
    const std::string path = "\\\\.\\pipe\\qxbc-" + std::to_string(GetCurrentProcessId());
    const auto makePipe = [&path] {
        return CreateNamedPipeA(path.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE | PIPE_WAIT, 1, 4096, 4096, 0,
                                nullptr);
    };
    for (const TLoadKind kind : kEveryLoad) {
        const HANDLE pipe = makePipe(); // serves one that opens it
        ASSERT_NE(pipe, INVALID_HANDLE_VALUE);
        const TLoadOutcome outcome = ProcessorDriver::Load(processor, path.c_str(), kind);
        CloseHandle(pipe);
        EXPECT_EQ(outcome.result, 769u);
        EXPECT_EQ(outcome.mainText, "Could not open file - '" + path + "'");
    }
    processor.LoadFile("no-such-file"); // out of header-only mode
    const HANDLE pipe = makePipe();
    ASSERT_NE(pipe, INVALID_HANDLE_VALUE);
    EXPECT_EQ(processor.SaveFile(path.c_str()), 769u);
    EXPECT_EQ(processor.GetLastErrorMessage(), "Could not create file - '" + path + "'");
    char byte = 0;
    DWORD length = 0;
    EXPECT_FALSE(PeekNamedPipe(pipe, &byte, 1, &length, nullptr, nullptr) && length > 0) << "something was written";
    CloseHandle(pipe);
}

TEST(WindowsFiles, OtherDevicesAreRefused)
{
    TBackgroundCorrectionProcessorUINT16 processor;
    for (const char* name : {"con", "CONIN$", "CONOUT$", "com9"}) {
        EXPECT_EQ(processor.LoadFile(name), 769u) << name;
        EXPECT_EQ(processor.SaveFile(name), 769u) << name;
    }
}

TEST(WindowsFiles, AFolderIsNotLoaded)
{
    const TTemporaryFolder folder;
    TBackgroundCorrectionProcessorUINT16 processor;
    EXPECT_EQ(processor.LoadFile(folder.Path().c_str()), 769u);
    EXPECT_EQ(processor.GetLastErrorMessage(), "Could not open file - '" + folder.Path() + "'");
}

} // namespace
