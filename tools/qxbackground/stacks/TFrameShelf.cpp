#include "stacks/TFrameShelf.h"

#include "base/TReplacedFile.h"
#include "base/TToolError.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

namespace workbench {

namespace {

[[noreturn]] void FailOnScratch(const std::string& reason)
{
    throw TToolError("the frames do not fit into --stack-memory, and no temporary file for them could be " + reason +
                     " (TMPDIR names another folder for it)");
}

std::string SystemReason()
{
    return std::generic_category().message(errno != 0 ? errno : EIO);
}

} // namespace

void TFrameShelf::Write(const std::uint16_t* pixels, std::size_t count)
{
    errno = 0;
    stream.write(reinterpret_cast<const char*>(pixels), static_cast<std::streamsize>(count * sizeof *pixels));
    if (!stream)
        FailOnScratch("written: " + SystemReason());
}

void TFrameShelf::Spill()
{
    errno = 0;
    try {
        file = std::make_unique<TNewFile>(WorkNameFor(std::filesystem::temp_directory_path() / "qxbackground-frames"));
    } catch (const std::system_error& error) {
        FailOnScratch("made: " + error.code().message());
    }
    stream.rdbuf()->pubsetbuf(nullptr, 0);
    stream.open(std::filesystem::path(file->Path()), std::ios::binary | std::ios::in | std::ios::out);
    if (!stream)
        FailOnScratch("opened: " + SystemReason());
    Write(held.data(), held.size());
    held = {};
}

void TFrameShelf::Put(const TImage& frame)
{
    if (file == nullptr && (frames + 1) * frame.pixels.size() * sizeof(std::uint16_t) > memory)
        Spill();
    if (file == nullptr)
        held.insert(held.end(), frame.pixels.begin(), frame.pixels.end());
    else
        Write(frame.pixels.data(), frame.pixels.size());
    ++frames;
}

int TFrameShelf::RowsOfBand() const
{
    if (file == nullptr)
        return size.height;
    const std::size_t row = static_cast<std::size_t>(size.width) * frames * sizeof(std::uint16_t);
    return static_cast<int>(std::clamp<std::size_t>(memory / row, 1, static_cast<std::size_t>(size.height)));
}

std::size_t TFrameShelf::FrameDistance(int rows) const
{
    return file == nullptr ? size.Pixels() : static_cast<std::size_t>(rows) * static_cast<std::size_t>(size.width);
}

const std::uint16_t* TFrameShelf::Band(int top, int rows)
{
    const auto width = static_cast<std::size_t>(size.width);
    const std::size_t start = static_cast<std::size_t>(top) * width;
    if (file == nullptr)
        return held.data() + start;
    const std::size_t count = static_cast<std::size_t>(rows) * width;
    held.resize(count * frames);
    errno = 0;
    for (std::size_t frame = 0; frame < frames; ++frame) {
        stream.seekg(static_cast<std::streamoff>((frame * size.Pixels() + start) * sizeof(std::uint16_t)));
        stream.read(reinterpret_cast<char*>(held.data() + frame * count),
                    static_cast<std::streamsize>(count * sizeof(std::uint16_t)));
        if (!stream)
            FailOnScratch("read: " + SystemReason());
    }
    return held.data();
}

} // namespace workbench
