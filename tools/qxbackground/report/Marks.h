#ifndef QXBACKGROUND_REPORT_MARKS_H
#define QXBACKGROUND_REPORT_MARKS_H

#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace workbench {

enum class TMark { Good, Look, Bad };

const char* MarkText(TMark mark); // "good", "look", "bad"

// One question that is asked of a correction, and from which value on its answer needs a look or is bad.
struct TThreshold {
    const char* name;
    const char* label; // for people
    const char* unit;  // after the value
    double look, bad;  // values above these; infinite where a check goes no further than a look
    const char* why;   // what a larger value means
};

const std::vector<TThreshold>& CorrectionThresholds();
nlohmann::json ThresholdsJson();

// One answered question, with its reason in words: `details`, or else what the question's threshold says.
nlohmann::json CheckJson(const std::string& name, double value, TMark& worst, const std::string& details = {});

// How far a correction that was scaled to other conditions may be off, in ADU.
struct TScalingLimits {
    double look = 0, bad = 0;
};
TScalingLimits ScalingLimits(double targetMean);

} // namespace workbench

#endif
