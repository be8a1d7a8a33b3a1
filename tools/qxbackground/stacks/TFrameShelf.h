#ifndef QXBACKGROUND_STACKS_TFRAMESHELF_H
#define QXBACKGROUND_STACKS_TFRAMESHELF_H

#include "base/TNewFile.h"
#include "images/TImage.h"

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <memory>
#include <vector>

namespace workbench {

// Keeps the frames of a stack so that all of them can be read again band by band: in memory as long as they fit there,
// otherwise in a file without a name in the folder for temporary files (TMPDIR).
class TFrameShelf {
public:
    TFrameShelf(TSize frameSize, std::size_t memoryBytes) : size(frameSize), memory(memoryBytes) {}

    // Throws TToolError when the file cannot be written.
    void Put(const TImage& frame);
    std::size_t Frames() const { return frames; }
    // So many rows of all frames together fit into the memory; at least one.
    int RowsOfBand() const;
    // Rows from `top` on of every frame, one frame behind the other. What is returned lasts until the next call.
    const std::uint16_t* Band(int top, int rows);
    // How far apart the frames lie there, in pixels.
    std::size_t FrameDistance(int rows) const;

private:
    void Spill();
    void Write(const std::uint16_t* pixels, std::size_t count);

    const TSize size;
    const std::size_t memory;
    std::size_t frames = 0;
    std::vector<std::uint16_t> held; // all frames, or the band that was read last
    std::unique_ptr<TNewFile> file;  // null as long as all frames are held
    std::fstream stream;
};

} // namespace workbench

#endif
