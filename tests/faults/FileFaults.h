// Makes file operations fail on purpose. The test executable links these functions in the place of the system's
// (platform/RawFile.h); without a plan they do what the system's do, and count.
#ifndef TESTS_FAULTS_FILEFAULTS_H
#define TESTS_FAULTS_FILEFAULTS_H

#include <cstddef>
#include <cstdint>
#include <functional>

enum class TFileOperation { kOpenForReading, kOpenForWriting, kRead, kWrite, kSeek, kClose, kPathExists, kRemove };
constexpr std::size_t kFileOperationCount = 8;

enum class TFileFaultRepeat { kOnce, kFromThenOn };

struct TFileFaultPlan {
    TFileOperation operation = TFileOperation::kWrite;
    std::uint64_t failAt = 0; // number of the operation of this kind that fails, from 1; 0: none
    TFileFaultRepeat repeat = TFileFaultRepeat::kOnce;
    // Reads and writes: how many bytes the failing one still moves, when it was asked for more.
    std::size_t movedBytes = 0;
};

// While it lives, file operations go by the plan. One at a time; not for several threads.
//
//     for (std::uint64_t failAt = 1;; ++failAt) {
//         TFileFaults faults({TFileOperation::kWrite, failAt});
//         const unsigned int code = processor.SaveFile(path);
//         if (!faults.Fired()) { EXPECT_EQ(code, 0u); break; }   // ran to the end: every point was tried
//         EXPECT_EQ(TFileFaults::OpenStreams(), 0u);
//     }
class TFileFaults {
public:
    TFileFaults() : TFileFaults(TFileFaultPlan{}) {} // fails nothing
    explicit TFileFaults(const TFileFaultPlan& plan);
    ~TFileFaults();
    TFileFaults(const TFileFaults&) = delete;
    TFileFaults& operator=(const TFileFaults&) = delete;

    // A disk of that many bytes: writes are cut where it is full, and fail from then on.
    void LimitDisk(std::uint64_t bytes);
    // Called before each write, with the number of bytes written before it.
    void BeforeWrite(std::function<void(std::uint64_t)> callback);

    bool Fired() const;
    std::uint64_t Count(TFileOperation operation) const;

    // Streams open in the process.
    static unsigned int OpenStreams();
};

#endif
