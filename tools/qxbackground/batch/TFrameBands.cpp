#include "batch/TFrameBands.h"

#include "base/Sha256Blocks.h"
#include "base/Sha256Lanes.h"
#include "base/TProgress.h"
#include "base/TToolError.h"

#include <algorithm>
#include <utility>

namespace workbench {

namespace {

constexpr std::size_t kSideBySide = kSha256Lanes;
constexpr std::size_t kBandBytes = std::size_t{1} << 19; // of all frames: they and their sums stay in the cache

// The file's bytes from `from` to `to`.
void DigestPart(TSha256& sha256, TInputFile& file, std::uint64_t from, std::uint64_t to, const std::string& path)
{
    std::vector<unsigned char> piece(static_cast<std::size_t>(std::min<std::uint64_t>(to - from, 1 << 16)));
    while (from < to) {
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(to - from, piece.size()));
        if (!file.ReadAt(from, piece.data(), count))
            throw TToolError(path, "cannot be read: the file was cut or changed meanwhile");
        sha256.Add(piece.data(), count);
        from += count;
    }
}

} // namespace

TFrameBands::TFrameBands(const std::vector<std::string>& files, std::size_t first, std::size_t end, TSize frameSize,
                         const TInputOptions& how, TFileDigests* digestsOfFiles)
    : paths(files), options(how), digests(digestsOfFiles), size(frameSize), nextFile(first), endOfFiles(end)
{}

// The next files, as far as they can be read side by side. What is wrong with the one behind them is found again, and
// said, by who reads it whole.
std::shared_ptr<TBandedFrames> TFrameBands::Open() const
{
    const auto opened = std::make_shared<TBandedFrames>();
    opened->size = size;
    const std::size_t end = std::min(endOfFiles, nextFile + kSideBySide);
    for (std::size_t file = nextFile; file < end; ++file) {
        try {
            std::unique_ptr<TImageReader> reader = OpenImage(paths[file], options);
            if (!reader->NextPage())
                break;
            const std::optional<TPlainPixels> plain = reader->Plain();
            if (size.Pixels() == 0 && opened->frames.empty())
                opened->size = reader->Size();
            if (!plain || reader->Size() != opened->size)
                break;
            TPageMetadata metadata = reader->Metadata();
            if (reader->NextPage())
                break;
            opened->frames.push_back({file, std::move(reader), *plain, std::move(metadata), TSha256()});
        } catch (const TToolError&) {
            break;
        }
    }
    return opened;
}

bool TFrameBands::Take(TFrameBand& band)
{
    ThrowIfInterrupted();
    if (!open || start == open->size.Pixels()) {
        open = Open();
        size = open->size;
        start = 0;
        nextFile += open->frames.size();
        if (digests != nullptr) {
            for (TBandedFrames::TFrame& frame : open->frames)
                DigestPart(frame.sha256, frame.plain.file, 0, frame.plain.offset, paths[frame.file]);
        }
    }
    std::vector<TBandedFrames::TFrame>& frames = open->frames;
    if (frames.empty())
        return false;
    band.of = open;
    band.start = start;
    band.pixels = std::min(kBandBytes / sizeof(std::uint16_t) / frames.size(), open->size.Pixels() - start);
    band.values.resize(band.Distance() * frames.size());
    for (std::size_t frame = 0; frame < frames.size(); ++frame) {
        const TPlainPixels& plain = frames[frame].plain;
        if (!plain.file.ReadAt(plain.offset + start * 2, band.Values(frame), band.pixels * 2))
            throw TToolError(paths[frames[frame].file], 1,
                             "its pixels cannot be read: the file was cut or changed meanwhile");
    }
    start += band.pixels;
    if (digests != nullptr)
        Digest(band);
    for (std::size_t frame = 0; frame < frames.size(); ++frame)
        AsHost(band.Values(frame), band.pixels, frames[frame].plain.layout);
    return true;
}

// As the files have it.
void TFrameBands::Digest(TFrameBand& band) const
{
    std::vector<TBandedFrames::TFrame>& frames = band.of->frames;
    std::vector<TSha256::TPart> parts;
    for (std::size_t frame = 0; frame < frames.size(); ++frame)
        parts.push_back({&frames[frame].sha256, band.Values(frame)});
    TSha256::Add(parts.data(), parts.size(), band.pixels * sizeof(std::uint16_t));
    if (!band.IsLast())
        return;
    for (TBandedFrames::TFrame& frame : frames) {
        const std::uint64_t end = frame.plain.offset + band.of->size.Pixels() * 2;
        DigestPart(frame.sha256, frame.plain.file, end, frame.plain.file.Bytes(), paths[frame.file]);
        digests->Put(frame.file, frame.sha256.Hex());
    }
}

} // namespace workbench
