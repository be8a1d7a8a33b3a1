// What only this family of systems has: full and endless devices, pipes, permissions, file systems made for a test.
#include "file/ProcessorDriver.h"
#include "file/SampleFiles.h"
#include "platform/RawFile.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

using ProcessorDriver::kMinusOne;

std::size_t OpenDescriptors()
{
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        count += entry.exists() ? 1u : 0u;
    }
    return count;
}

class PosixFiles : public testing::Test {
protected:
    void SetUp() override
    {
        descriptors = OpenDescriptors();
        processor.SetActiveCorrection("nobody");
    }
    void TearDown() override { EXPECT_EQ(OpenDescriptors(), descriptors) << "a stream was left open"; }

    void StoreLarge()
    {
        ProcessorDriver::Store(processor,
                               {"large", 1000, 500, 0x3F800000, 0x3F800000, std::vector<std::uint16_t>(500'000, 1)});
    }

    TTemporaryFolder folder;
    TBackgroundCorrectionProcessorUINT16 processor;
    std::size_t descriptors = 0;
};

TEST_F(PosixFiles, FullDeviceFailsASaveThatIsWrittenAtOnce)
{
    StoreLarge();
    EXPECT_EQ(processor.SaveFile("/dev/full"), 4294967295u);
    EXPECT_STREQ(processor.FileMessage(), "Couldn't read Data from calibration file.");
    EXPECT_EQ(processor.SaveGroupedFile("/dev/full", {"A"}), kMinusOne);
    EXPECT_STREQ(processor.GetLastErrorMessage(), "Background correction key not found - 'nobody'");
}

TEST_F(PosixFiles, FullDeviceNoticedOnlyAtTheEndFailsTheSaveToo)
{
    EXPECT_EQ(processor.SaveFile("/dev/full"), kMinusOne);
    EXPECT_EQ(processor.SaveGroupedFile("/dev/full", {}), kMinusOne);
    ProcessorDriver::Store(processor, SampleFiles::TwoCorrections().corrections);
    EXPECT_EQ(processor.SaveFile("/dev/full"), kMinusOne);
    EXPECT_STREQ(processor.GetLastErrorMessage(), "Background correction key not found - 'nobody'");
}

TEST_F(PosixFiles, FullDiskFailsTheSaveAndKeepsWhatWasWritten)
{
    const std::string disk = folder.File("disk");
    std::filesystem::create_directory(disk);
    if (mount("qxbc", disk.c_str(), "tmpfs", 0, "size=64k") != 0) {
        GTEST_SKIP() << "no file system can be mounted here";
    }
    const std::string path = disk + "/file.qxb";
    StoreLarge();
    const unsigned int result = processor.SaveFile(path.c_str());
    const auto size = std::filesystem::file_size(path);
    TBackgroundCorrectionProcessorUINT16 reader;
    const unsigned int loaded = reader.LoadFile(path.c_str());
    umount(disk.c_str());
    EXPECT_EQ(result, kMinusOne);
    EXPECT_STREQ(processor.FileMessage(), "Couldn't read Data from calibration file.");
    EXPECT_GT(size, 0u);
    EXPECT_LE(size, 65536u);
    EXPECT_EQ(loaded, kMinusOne);
}

// Pipes with and without somebody at the other end, a socket, a terminal.
class WaitingFiles : public PosixFiles {
protected:
    void SetUp() override
    {
        PosixFiles::SetUp();
        for (const char* name : {"pipe", "pipe with a reader"}) {
            paths.push_back(folder.File(name));
            ASSERT_EQ(mkfifo(paths.back().c_str(), 0600), 0);
        }
        ends.push_back(open(paths.back().c_str(), O_RDONLY | O_NONBLOCK));

        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        paths.push_back(folder.File("socket"));
        ASSERT_LT(paths.back().size(), sizeof address.sun_path);
        paths.back().copy(address.sun_path, paths.back().size());
        ends.push_back(socket(AF_UNIX, SOCK_STREAM, 0));
        ASSERT_EQ(bind(ends.back(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);

        const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
        ends.push_back(terminal);
        if (terminal >= 0 && grantpt(terminal) == 0 && unlockpt(terminal) == 0) {
            paths.push_back(ptsname(terminal));
        }
    }
    void TearDown() override
    {
        for (const int end : ends) {
            close(end);
        }
        PosixFiles::TearDown();
    }

    std::vector<std::string> paths;
    std::vector<int> ends;
};

TEST_F(WaitingFiles, AreNotLoaded)
{
    paths.push_back("/dev/zero"); // does not wait, but has no end either
    for (const std::string& path : paths) {
        for (const TLoadKind kind : kEveryLoad) {
            const TLoadOutcome outcome = ProcessorDriver::Load(processor, path.c_str(), kind);
            EXPECT_EQ(outcome.result, 769u) << path;
            EXPECT_EQ(outcome.mainText, "Could not open file - '" + path + "'");
        }
    }
}

TEST_F(WaitingFiles, AreNotSavedTo)
{
    for (const std::string& path : paths) {
        EXPECT_EQ(processor.SaveFile(path.c_str()), 769u) << path;
        EXPECT_EQ(processor.GetLastErrorMessage(), "Could not create file - '" + path + "'");
        EXPECT_EQ(processor.SaveGroupedFile(path.c_str(), {"A"}), 769u) << path;
    }
    char byte = 0;
    EXPECT_LE(read(ends.front(), &byte, 1), 0) << "something was written into the pipe";
}

TEST_F(PosixFiles, AFolderIsNotLoaded)
{
    for (const TLoadKind kind : kEveryLoad) {
        const TLoadOutcome outcome = ProcessorDriver::Load(processor, folder.Path().c_str(), kind);
        EXPECT_EQ(outcome.result, 769u);
        EXPECT_EQ(outcome.mainText, "Could not open file - '" + folder.Path() + "'");
    }
}

TEST_F(PosixFiles, ALinkToTheNullDeviceIsTheNullDevice)
{
    const std::string path = folder.File("link");
    std::filesystem::create_symlink("/dev/null", path);
    StoreLarge();
    EXPECT_EQ(processor.SaveFile(path.c_str()), 0u);
    EXPECT_EQ(processor.LoadFile(path.c_str()), kMinusOne);
    EXPECT_STREQ(processor.FileMessage(), "Couldn't read Data from calibration file.");
    EXPECT_TRUE(std::filesystem::is_symlink(path));
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

// Another thread of the host may start a program meanwhile, and a read that does not wait may fall short.
TEST_F(PosixFiles, AnOpenFileIsNotInheritedAndReadsWait)
{
    const std::string path = folder.File("file.qxb");
    for (const auto open : {Platform::RawOpenForWriting, Platform::RawOpenForReading}) {
        Platform::TRawFile* const file = open(path.c_str());
        ASSERT_NE(file, nullptr);
        const int descriptor = fileno(reinterpret_cast<std::FILE*>(file));
        EXPECT_NE(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0);
        EXPECT_EQ(fcntl(descriptor, F_GETFL) & O_NONBLOCK, 0);
        EXPECT_TRUE(Platform::RawClose(file));
    }
}

TEST_F(PosixFiles, ReadOnlyFolderAndUnreadableFileAre769)
{
    if (geteuid() == 0) {
        GTEST_SKIP() << "the superuser may write and read anything";
    }
    const std::string path = folder.File("file.qxb");
    FileBytes::WriteFile(path, SampleFiles::EmptyList().bytes);
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    EXPECT_EQ(processor.LoadFile(path.c_str()), 769u);
    EXPECT_EQ(processor.GetLastErrorMessage(), "Could not open file - '" + path + "'");
    EXPECT_EQ(processor.SaveFile(path.c_str()), 769u);
    ASSERT_EQ(chmod(folder.Path().c_str(), 0500), 0);
    EXPECT_EQ(processor.SaveFile(folder.File("new.qxb").c_str()), 769u);
    ASSERT_EQ(chmod(folder.Path().c_str(), 0700), 0);
}

TEST_F(PosixFiles, ReadOnlyFileSystemIs769)
{
    const std::string disk = folder.File("disk");
    std::filesystem::create_directory(disk);
    if (mount("qxbc", disk.c_str(), "tmpfs", MS_RDONLY, "size=64k") != 0) {
        GTEST_SKIP() << "no file system can be mounted here";
    }
    const std::string path = disk + "/file.qxb";
    const unsigned int result = processor.SaveFile(path.c_str());
    umount(disk.c_str());
    EXPECT_EQ(result, 769u);
    EXPECT_EQ(processor.GetLastErrorMessage(), "Could not create file - '" + path + "'");
}

TEST_F(PosixFiles, BackslashSeparatesFoldersToo)
{
    const std::string path = folder.Path() + "\\file.qxb";
    ProcessorDriver::Store(processor, SampleFiles::OneCorrection().corrections);
    EXPECT_EQ(processor.SaveFile(path.c_str()), 0u);
    EXPECT_EQ(FileBytes::Difference(FileBytes::ReadFile(folder.File("file.qxb")), SampleFiles::OneCorrection().bytes),
              "");
    EXPECT_EQ(processor.LoadFile(path.c_str()), 0u);
}

TEST_F(PosixFiles, NoLoadLeavesAStreamOpen)
{
    const std::string path = folder.File("file.qxb");
    const FileBytes::TBytes whole = SampleFiles::Grouped().bytes;
    for (std::size_t length = 0; length < whole.size(); length += 11) {
        FileBytes::WriteFile(path, {whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)});
        for (const TLoadKind kind : kEveryLoad) {
            ProcessorDriver::Load(processor, path.c_str(), kind);
            ASSERT_EQ(OpenDescriptors(), descriptors) << length;
        }
    }
}

} // namespace
