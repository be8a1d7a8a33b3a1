#include "images/TRawReader.h"

namespace workbench {

bool FitsLayout(std::uint64_t fileBytes, const TRawLayout& layout)
{
    return fileBytes > layout.offset && (fileBytes - layout.offset) % (layout.size.Pixels() * 2) == 0;
}

TRawReader::TRawReader(const std::string& name, const TRawLayout& wanted)
    : TImageReader(name, TImageFormat::Raw), file(name), layout(wanted)
{
    const std::uint64_t frameBytes = layout.size.Pixels() * 2;
    if (!FitsLayout(file.Bytes(), layout))
        Fail("has " + std::to_string(file.Bytes()) + " bytes, which " +
             (layout.offset > 0 ? "after the first " + std::to_string(layout.offset) + " " : std::string()) +
             "are no whole number of frames of " + layout.size.Text() + " pixels (" + std::to_string(frameBytes) +
             " bytes each); see --raw");
    SetSize(static_cast<std::uint64_t>(layout.size.width), static_cast<std::uint64_t>(layout.size.height),
            file.Bytes());
    frames = (file.Bytes() - layout.offset) / frameBytes;
}

bool TRawReader::NextPage()
{
    if (page == frames)
        return false;
    ++page;
    return true;
}

void TRawReader::Read(TImage& image)
{
    Prepare(image);
    if (!file.ReadPixels(Plain()->offset, image.pixels.data(), image.pixels.size(), {}))
        Fail("its pixels cannot be read: the file was cut or changed meanwhile");
}

std::optional<TPlainPixels> TRawReader::Plain()
{
    return TPlainPixels{file, layout.offset + std::uint64_t{page - 1} * Size().Pixels() * 2, {}};
}

} // namespace workbench
