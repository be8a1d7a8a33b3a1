#include "commandline/Vocabulary.h"

namespace workbench {

namespace {

constexpr char kCorrection[] = "Which correction";
constexpr char kFrames[] = "Frames";
constexpr char kStack[] = "Many frames into one";
constexpr char kHow[] = "How images are corrected";
constexpr char kHotPixels[] = "Hot and dead pixels";
constexpr char kCamera[] = "The simulated camera";
constexpr char kOutput[] = "Output";
constexpr char kPrinted[] = "What is printed";

} // namespace

const std::vector<TWord>& Vocabulary()
{
    static const std::vector<TWord> words{
        {"--key", "KEY", kCorrection, {}},
        {"--auto", "", kCorrection, {}},
        {"--group", "NAME", kCorrection, {}},
        {"--where", "NAME=VALUE", kCorrection, {}},
        {"--temperature-tolerance", "DEGREES", kCorrection, {}},
        {"--new-group", "", kCorrection, {}},

        {"--dark", "", kFrames, {}},
        {"--dark-exposure", "SECONDS", kFrames, {}},
        {"--dark-intensity", "PERCENT", kFrames, {}},
        {"--bias", "", kFrames, {}},
        {"--against", "", kFrames, {}},
        {"--exposure", "SECONDS", kFrames, {}},
        {"--intensity", "PERCENT", kFrames, {}},
        {"--raw", "WxH[+OFFSET]", kFrames, {}},

        {"--reject", "METHOD", kStack, {"sigma", "winsor", "minmax:"}},
        {"--combine", "METHOD", kStack, {"average", "median"}},
        {"--align-levels", "", kStack, {}},
        {"--stack-memory", "MIB", kStack, {}},
        {"--mixed", "", kStack, {}},

        {"--level", "PERCENT", kHow, {}},
        {"--region", "L,T,W,H", kHow, {}},
        {"--pedestal", "ADU", kHow, {}},
        {"--unfiltered", "", kHow, {}},

        {"--repair-hot", "SIGMA", kHotPixels, {}},
        {"--hot-list", "", kHotPixels, {}},
        {"--sigma", "SIGMA", kHotPixels, {}},
        {"--repair-noisy", "", kHotPixels, {}},

        {"--seed", "N", kCamera, {}},
        {"--width", "PIXELS", kCamera, {}},
        {"--height", "PIXELS", kCamera, {}},
        {"--frames", "N", kCamera, {}},
        {"--lights", "N", kCamera, {}},
        {"--gain", "E/ADU", kCamera, {}},
        {"--offset", "ADU", kCamera, {}},
        {"--column-offset", "ADU", kCamera, {}},
        {"--dark-current", "E/SECOND", kCamera, {}},
        {"--hot-pixels", "FRACTION", kCamera, {}},
        {"--read-noise", "ELECTRONS", kCamera, {}},
        {"--sky", "E/SECOND", kCamera, {}},
        {"--glow", "FACTOR", kCamera, {}},
        {"--cosmic-rays", "N/SECOND", kCamera, {}},
        {"--drift", "ADU", kCamera, {}},
        {"--bits", "N", kCamera, {}},

        {"--output", "", kOutput, {}},
        {"--name", "PATTERN", kOutput, {}},
        {"--picture", "", kOutput, {}},
        {"--csv", "", kOutput, {}},
        {"--format", "FORMAT", kOutput, {"tiff", "fits", "png"}},
        {"--compress", "", kOutput, {}},
        {"--salvage", "", kOutput, {}},
        {"--overwrite", "", kOutput, {}},
        {"--force", "", kOutput, {}},
        {"--no-provenance", "", kOutput, {}},
        {"--dry-run", "", kOutput, {}},

        {"--json", "", kPrinted, {}},
        {"--no-statistics", "", kPrinted, {}},
        {"--full-statistics", "", kPrinted, {}},
        {"--warn-clipped", "PERCENT", kPrinted, {}},
        {"--warn-older", "DAYS", kPrinted, {}},

        {"shell", "", "", {"bash", "zsh", "fish"}},
    };
    return words;
}

} // namespace workbench
