// The calibration file and how it is read, step by step as it is described. Shares no code with the library.
#ifndef TESTS_MODEL_LITERALREADER_H
#define TESTS_MODEL_LITERALREADER_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace Literal {

using TBytes = std::vector<unsigned char>;
using TTexts = std::vector<std::string>;

struct TProcessor;

constexpr unsigned int kMinusOne = 4294967295u;
constexpr unsigned int kMinusTwo = 4294967294u;

std::uint32_t Bits(float value);
float FromBits(std::uint32_t bits);

// Reads and repositionings that fail on purpose, counted from 1; 0 for none.
struct TReadFaults {
    std::uint64_t failedRead = 0;
    bool everyLaterReadToo = false;
    std::uint64_t movedBytes = 0; // that a failing read still gets, when it asks for more
    std::uint64_t failedSeek = 0;
    bool everyLaterSeekToo = false;
};

constexpr std::int64_t kMostAttempts = 2'000'000;

// What opening a path for reading gave.
struct TOpened {
    std::string path;            // as texts name it
    std::optional<TBytes> bytes; // nothing: it cannot be opened
    TReadFaults faults = {};
    std::int64_t mostAttempts = kMostAttempts;
};

// A file goes on longer than the model is willing to read: more attempts at corrections than allowed, and not at the
// end of the file. There is no shortcut here that could be wrong.
struct TUndecided : std::runtime_error {
    TUndecided() : std::runtime_error("the literal reader would take too long") {}
};

// Reads one file into a processor.
class TReader {
public:
    TReader(TProcessor& target, const TOpened& file) : processor(target), opened(file) {}

    // The signature and the structure version; a version that is not the expected one is handed back.
    unsigned int Open(std::uint32_t& version);
    unsigned int GroupingNames(TTexts& names);
    unsigned int Corrections();

private:
    unsigned int Correction(bool& endsLoad);
    unsigned int Refuse(const std::string& why);
    // 0, -1 or -2; no length is expected where there is none.
    unsigned int Header(std::uint32_t id, std::uint32_t version, std::optional<std::uint32_t> length);
    // A record with data: -2 counts as success. `data` has the length that is wanted.
    unsigned int Record(std::uint32_t id, std::uint32_t version, TBytes& data);
    unsigned int Number(std::uint32_t id, std::uint32_t version, std::uint32_t& number);
    unsigned int Data(TBytes& data);

    bool Read(TBytes& data); // a short read leaves the position where the bytes ended
    bool Read(std::uint32_t& number);
    bool Seek(std::uint64_t offset); // may lie beyond the end

    TProcessor& processor;
    const TOpened& opened;
    std::uint64_t position = 0;
    std::uint64_t reads = 0;
    std::uint64_t seeks = 0;
};

} // namespace Literal

#endif
