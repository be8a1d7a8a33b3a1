#ifndef QXBACKGROUND_VERBS_DARKFRAMES_H
#define QXBACKGROUND_VERBS_DARKFRAMES_H

#include "batch/TFrameStack.h"
#include "stacks/TDarkNoise.h"
#include "stacks/THotPixels.h"
#include "stacks/TStackOptions.h"
#include "verbs/Options.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace workbench {

// Which dark frames make a correction, and how.
struct TDarkOptions {
    std::vector<std::string> files;
    std::vector<std::string> bias; // frames to be subtracted from them, if any
    TStackOptions stack;
};

// For the verbs that make a correction: --reject, --combine, --stack-memory.
void AddDarkOptions(TVerb& verb, TDarkOptions& options);

// How far a pixel must stand out to be called hot.
constexpr double kUsualHotSigma = 5;
extern const char* const kHotSigmaHelp;

// The SHA-256 of dark frames and of bias frames, in the order of their files, where they are wanted.
struct TDarkDigests {
    TFileDigests* darks = nullptr;
    TFileDigests* bias = nullptr;
};

// The average of bias frames, which must have that size; before it is rounded, too, where that is asked for.
TFrameStack ReadBias(const std::vector<std::string>& files, const TInputOptions& input, TSize size,
                     bool keepExact = false, TFileDigests* digests = nullptr);

// Adds a line for each setting of the camera in which bias frames differ from dark frames by their headers.
void WarnOfOtherCamera(TShot darks, const TShot& bias, std::vector<std::string>& warnings);

// Adds a line when a file is among `files`, which are called `what` ("dark frames"), and among the `others` as well.
void WarnOfSharedFiles(const std::vector<std::string>& files, const std::string& what,
                       const std::vector<std::string>& others, const std::string& otherWhat,
                       std::vector<std::string>& warnings);

// Adds a line when so many pixels were found that something else is the matter.
void WarnOfManyHotPixels(const THotPixels& found, std::vector<std::string>& warnings);

// The frame that the library gets, less the bias where there is one. `noise` sees every frame.
TFrameStack ReadDarks(const TDarkOptions& options, const TInputOptions& input, TDarkNoise* noise = nullptr,
                      const TDarkDigests& digests = {});
// The same for a correction, which has to know the exposure: `exposureOption` gave it, or the frames' headers say it
// and it goes into `conditions`. Throws TToolError when neither does.
TFrameStack ReadDarks(const TDarkOptions& options, const TInputOptions& input, const std::string& exposureOption,
                      TConditions& conditions, TDarkNoise* noise = nullptr, const TDarkDigests& digests = {});

// "10 dark frames", and how they were combined where that is not the plain average.
std::string DarksText(const TFrameStack& stack, const TDarkOptions& options);

// What a correction was made of, for --json.
nlohmann::json DarksJson(const TFrameStack& stack, const TDarkOptions& options, const TConditions& conditions);
// One line each.
void PrintNotes(const std::vector<std::string>& notes);
void PrintWarnings(const std::vector<std::string>& warnings);

} // namespace workbench

#endif
