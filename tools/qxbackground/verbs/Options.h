#ifndef QXBACKGROUND_VERBS_OPTIONS_H
#define QXBACKGROUND_VERBS_OPTIONS_H

#include "commandline/TVerb.h"
#include "images/TInputOptions.h"
#include "images/TOutputOptions.h"

#include <string>
#include <vector>

namespace workbench {

// The exposure (seconds) and light intensity (percent) at which frames were taken.
struct TConditions {
    double exposureSeconds = 0; // 0: not given, the frames' headers say it
    double lightIntensityPercent = 0;

    std::string Text() const;
    // In single precision, as the library keeps what it is told of dark frames.
    double Product() const
    {
        return static_cast<double>(static_cast<float>(exposureSeconds)) *
               static_cast<double>(static_cast<float>(lightIntensityPercent));
    }
};

// Adds the two options, their names behind `prefix` ("--dark-exposure" with "dark-"). Headers may say the exposure.
void AddConditions(TVerb& verb, const std::string& prefix, const std::string& whose, TConditions& conditions);

// How frames are read, for every verb that reads some: --raw.
void AddInputOptions(TVerb& verb, TInputOptions& options);
// How images are written, for every verb that writes some: --format, --compress.
void AddOutputOptions(TVerb& verb, TOutputOptions& options);

// --json, for every verb that tells figures: one document on the standard output, and nothing else there.
void AddJsonOption(TVerb& verb, bool& json);

// What is asked of the images to be corrected; shared by every verb that corrects.
struct TCorrectOptions {
    TConditions conditions;
    int levelPercent = 100;
    std::string region; // L,T,W,H
    std::vector<std::string> inputs;
    std::string output;               // a file for all pages, or a folder
    std::string name;                 // pattern of the outputs' names in that folder; empty: names are kept
    std::vector<std::string> outputs; // in the folder, one for each input; filled before the verb runs
    std::string picture;
    TInputOptions input; // of the dark frames as well, where the verb reads some
    TOutputOptions outputAs;
    bool overwrite = false;
    bool dryRun = false;
    double toleranceCelsius = 1; // that the sensor's temperature may differ from that of the dark frames
    int olderDays = 365;         // that the dark frames may be older than the images
    double clippedPercent = 1;   // of the pixels: more of them at zero are worth a word
    bool json = false;
    bool noStatistics = false;
    bool fullStatistics = false;
    std::vector<std::string> bias; // frames
    int pedestal = 0;              // ADU
    std::string hotList;           // a file

    bool IsBatch() const { return !outputs.empty(); }
};
// An argument that names frames: files, folders or patterns, in whose place the files stand before the verb runs.
CLI::Option* AddFrames(TVerb& verb, const std::string& name, std::vector<std::string>& frames, const std::string& help);

// --bias, for the verbs that correct and for those that make a correction.
void AddBiasOption(TVerb& verb, std::vector<std::string>& bias);

void AddCorrectOptions(TVerb& verb, TCorrectOptions& options);

extern const char* const kKeyHelp;
// --key, for the verbs that want a correction that is there already.
CLI::Option* AddKeyOption(TVerb& verb, std::string& key);
extern const char* const kGroupHelp;
// For the verbs that write into folders.
extern const char* const kSomeFailedHelp;

} // namespace workbench

#endif
