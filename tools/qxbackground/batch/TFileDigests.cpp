#include "batch/TFileDigests.h"

#include "base/Interrupts.h"
#include "base/TSha256.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

namespace workbench {

namespace {

// One file on its way.
class TFileInWork {
public:
    // Whether there is something to be read.
    bool Open(const std::string& path)
    {
        sha256 = TSha256();
        stream = {};
        std::error_code error;
        if (!std::filesystem::is_regular_file(path, error)) // opening anything else may wait for ever
            return false;
        stream.rdbuf()->pubsetbuf(nullptr, 0);
        stream.open(std::filesystem::path(path), std::ios::binary);
        return stream.is_open();
    }

    // The next piece.
    void Read()
    {
        constexpr std::size_t kPiece = 1 << 18; // stays in the processor's cache until it is taken in
        piece.resize(kPiece);
        stream.read(piece.data(), kPiece);
        held = static_cast<std::size_t>(stream.gcount());
    }

    static void TakeBoth(TFileInWork& one, TFileInWork& other)
    {
        const std::size_t both = std::min(one.held, other.held);
        const TSha256::TPart parts[] = {{&one.sha256, one.piece.data()}, {&other.sha256, other.piece.data()}};
        TSha256::Add(parts, 2, both);
        one.sha256.Add(one.piece.data() + both, one.held - both);
        other.sha256.Add(other.piece.data() + both, other.held - both);
    }
    void Take() { sha256.Add(piece.data(), held); }

    bool Ended() const { return !stream; }
    std::string Hex() { return stream.eof() && !stream.bad() ? sha256.Hex() : std::string(); }

private:
    std::ifstream stream;
    TSha256 sha256;
    std::vector<char> piece;
    std::size_t held = 0;
};

} // namespace

TFileDigests::TFileDigests(std::vector<std::string> files) : paths(std::move(files)), digests(paths.size())
{
    for (std::string& path : paths) {
        // The verbs over stores work in other folders meanwhile.
        std::error_code error;
        const std::filesystem::path absolute = std::filesystem::absolute(std::filesystem::path(path), error);
        path = error ? path : absolute.string();
        before.push_back(StateOf(path));
    }
}

TFileDigests::~TFileDigests()
{
    stopped = true;
    if (thread.joinable())
        thread.join();
}

void TFileDigests::DigestRest()
{
    thread = ThreadWithoutInterrupts([this] { DigestThem(); });
}

void TFileDigests::DigestThem()
{
    try {
        struct TSlot {
            TFileInWork file;
            std::size_t index = 0;
            bool busy = false;
        } slots[2];
        std::size_t next = 0;
        while (!stopped) {
            for (TSlot& slot : slots) {
                while (!slot.busy && next < paths.size()) {
                    slot.index = next++;
                    slot.busy = digests[slot.index].sha256.empty() && slot.file.Open(paths[slot.index]);
                }
                if (slot.busy)
                    slot.file.Read();
            }
            if (slots[0].busy && slots[1].busy)
                TFileInWork::TakeBoth(slots[0].file, slots[1].file);
            else if (slots[0].busy || slots[1].busy)
                (slots[0].busy ? slots[0] : slots[1]).file.Take();
            else
                break;
            for (TSlot& slot : slots) {
                if (slot.busy && slot.file.Ended()) {
                    digests[slot.index].sha256 = slot.file.Hex();
                    slot.busy = false;
                }
            }
        }
    } catch (const std::exception&) {
        // memory is short: those that are left stay unknown
    }
    done = true;
}

std::vector<TFileDigests::TDigest> TFileDigests::Take()
{
    constexpr auto kLookAgain = std::chrono::milliseconds(1);
    if (!thread.joinable())
        DigestRest();
    while (!done) {
        stopped = stopped || Interrupted();
        std::this_thread::sleep_for(kLookAgain);
    }
    thread.join();
    for (std::size_t file = 0; file < paths.size(); ++file) {
        digests[file].bytes = static_cast<std::uint64_t>(before[file].bytes);
        if (StateOf(paths[file]) != before[file])
            digests[file].sha256.clear();
    }
    return std::move(digests);
}

} // namespace workbench
