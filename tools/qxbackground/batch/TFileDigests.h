#ifndef QXBACKGROUND_BATCH_TFILEDIGESTS_H
#define QXBACKGROUND_BATCH_TFILEDIGESTS_H

#include "base/TFileState.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace workbench {

// The SHA-256 of files. Who reads all bytes of a file anyway hands them in; those of the others are computed by a
// thread of its own while they are read for their frames, so that the system fetches from the disk once what is read
// twice.
class TFileDigests {
public:
    struct TDigest {
        std::uint64_t bytes = 0;
        std::string sha256; // empty: the file could not be read, was changed since this object was made, or the user
                            // asked to stop
    };

    // Notes what the files are now.
    explicit TFileDigests(std::vector<std::string> paths);
    // Ends the thread, wherever it is.
    ~TFileDigests();
    TFileDigests(const TFileDigests&) = delete;
    TFileDigests& operator=(const TFileDigests&) = delete;

    // What the bytes of `file` gave, counted in the order of the paths.
    void Put(std::size_t file, std::string sha256) { digests[file].sha256 = std::move(sha256); }
    // Begins to read what was not handed in; nothing is handed in any more. To be called once.
    void DigestRest();
    // All of them, in the order of the paths: waits for the rest, which it begins where DigestRest did not. When the
    // user asks to stop, the others stay empty. To be called once.
    std::vector<TDigest> Take();

private:
    void DigestThem();

    std::vector<std::string> paths; // absolute
    std::vector<TFileState> before;
    std::vector<TDigest> digests;
    std::atomic<bool> stopped{false}, done{false};
    std::thread thread; // the last member: it uses the others
};

} // namespace workbench

#endif
