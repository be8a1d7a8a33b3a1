#ifndef QXBACKGROUND_BATCH_TFILEDIGESTS_H
#define QXBACKGROUND_BATCH_TFILEDIGESTS_H

#include "base/TFileState.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace workbench {

// The SHA-256 of files, by a thread of its own while the same files are read for their frames: the system then fetches
// from the disk once what is read twice.
class TFileDigests {
public:
    struct TDigest {
        std::uint64_t bytes = 0;
        std::string sha256; // empty: the file could not be read, was changed since this object was made, or the user
                            // asked to stop
    };

    explicit TFileDigests(std::vector<std::string> paths);
    // Ends the thread, wherever it is.
    ~TFileDigests();
    TFileDigests(const TFileDigests&) = delete;
    TFileDigests& operator=(const TFileDigests&) = delete;

    // Waits for all of them; in the order of the paths. When the user asks to stop, the others stay empty. To be called
    // once.
    std::vector<TDigest> Take();

private:
    void DigestAll();

    std::vector<std::string> paths; // absolute
    std::vector<TFileState> before;
    std::vector<TDigest> digests;
    std::atomic<bool> stopped{false}, done{false};
    std::thread thread; // the last member: it uses the others
};

} // namespace workbench

#endif
