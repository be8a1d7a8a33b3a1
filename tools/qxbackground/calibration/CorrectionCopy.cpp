#include "calibration/CorrectionCopy.h"

#include "base/TProgress.h"
#include "base/TToolError.h"

#include "file/CalibrationFormat.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>

namespace workbench {

namespace {

namespace format = CalibrationFormat;

void Put32(std::ofstream& file, std::uint32_t value)
{
    unsigned char bytes[4];
    format::Store32(bytes, value);
    file.write(reinterpret_cast<const char*>(bytes), sizeof bytes);
}

void PutHeader(std::ofstream& file, const format::TRecord& record)
{
    Put32(file, record.identifier);
    Put32(file, record.version);
    Put32(file, record.dataLength);
}

void PutNumber(std::ofstream& file, const format::TRecord& record, std::size_t value)
{
    PutHeader(file, record);
    Put32(file, static_cast<std::uint32_t>(value));
}

void PutText(std::ofstream& file, std::string text, std::size_t length)
{
    text.resize(length, '\0');
    file.write(text.data(), static_cast<std::streamsize>(length));
}

void PutStart(std::ofstream& file, const std::vector<std::string>& groupingNames, std::size_t corrections)
{
    file.write(format::kSignature, static_cast<std::streamsize>(format::kSignatureLength));
    Put32(file, groupingNames.empty() ? format::kUngroupedVersion : format::kGroupedVersion);
    if (!groupingNames.empty()) {
        PutNumber(file, format::kGroupingCount, groupingNames.size());
        for (const std::string& name : groupingNames) {
            PutHeader(file, format::kGroupingName);
            PutText(file, name, format::kGroupingNameLength);
        }
    }
    PutNumber(file, format::kCorrectionCount, corrections);
}

// Where the text of a correction's key lies: the record of the key follows the one that opens the correction.
constexpr std::uint64_t kKeyOffset = 2 * format::kRecordHeaderLength;

// All bytes from `from` up to `to`.
void PutBytes(std::ofstream& file, std::ifstream& source, const std::string& name, std::uint64_t from, std::uint64_t to)
{
    std::vector<char> block(1 << 20);
    source.clear();
    source.seekg(static_cast<std::streamoff>(from));
    for (std::uint64_t left = to - from; left > 0 && file;) {
        const auto count = static_cast<std::streamsize>(std::min<std::uint64_t>(left, block.size()));
        if (!source.read(block.data(), count))
            throw TToolError(name, "cannot be read to its end any more");
        file.write(block.data(), count);
        left -= static_cast<std::uint64_t>(count);
    }
}

} // namespace

std::vector<TCopiedCorrection> CopiesOf(const std::string& file, const std::vector<TStoredCorrection>& corrections)
{
    std::vector<TCopiedCorrection> copies;
    for (const TStoredCorrection& correction : corrections)
        copies.push_back({file, correction, correction.key});
    return copies;
}

bool WriteCorrections(const std::string& path, const std::vector<std::string>& groupingNames,
                      const std::vector<TCopiedCorrection>& corrections)
{
    std::ofstream file(std::filesystem::path(path), std::ios::binary | std::ios::trunc);
    PutStart(file, groupingNames, corrections.size());
    std::ifstream source;
    std::string opened;
    for (const TCopiedCorrection& correction : corrections) {
        ThrowIfInterrupted();
        if (!source.is_open() || opened != correction.file) {
            source = std::ifstream(std::filesystem::path(correction.file), std::ios::binary);
            opened = correction.file;
        }
        const TStoredCorrection& stored = correction.stored;
        const std::uint64_t end = stored.pixelOffset + std::uint64_t{2} * stored.width * stored.height;
        std::uint64_t from = stored.offset;
        if (correction.key != stored.key) {
            PutBytes(file, source, opened, from, from + kKeyOffset);
            PutText(file, correction.key, format::kKeyLength);
            from += kKeyOffset + format::kKeyLength;
        }
        PutBytes(file, source, opened, from, end);
    }
    file.close();
    return file.good();
}

} // namespace workbench
