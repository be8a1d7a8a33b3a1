#include "images/TFrameStack.h"

#include "base/TProgress.h"
#include "base/TToolError.h"
#include "images/TImageReader.h"

namespace workbench {

std::vector<const std::uint16_t*> TFrameStack::Pointers() const
{
    std::vector<const std::uint16_t*> pointers;
    for (const TImage& frame : frames)
        pointers.push_back(frame.pixels.data());
    return pointers;
}

TFrameStack ReadFrames(const std::vector<std::string>& paths, const TInputOptions& options)
{
    TFrameStack stack;
    TProgress progress("Reading dark frames", paths.size());
    for (const std::string& path : paths) {
        const std::unique_ptr<TImageReader> reader = OpenImage(path, options);
        while (reader->NextPage()) {
            if (stack.frames.empty())
                stack.size = reader->Size();
            if (reader->Size() != stack.size)
                throw TToolError(path, reader->Page(),
                                 "is " + reader->Size().Text() + " pixels, the frames before it are " +
                                     stack.size.Text());
            stack.frames.emplace_back();
            reader->Read(stack.frames.back());
            ThrowIfInterrupted();
        }
        progress.Step();
    }
    return stack;
}

} // namespace workbench
