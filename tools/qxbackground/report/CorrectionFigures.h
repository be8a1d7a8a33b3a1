#ifndef QXBACKGROUND_REPORT_CORRECTIONFIGURES_H
#define QXBACKGROUND_REPORT_CORRECTIONFIGURES_H

#include "report/Marks.h"
#include "report/TCorrectionSet.h"

#include <nlohmann/json.hpp>

#include <string>

namespace workbench {

// What was found about one correction on its own.
struct TCorrectionFigures {
    TReference reference;
    TSize size;
    double mean = 0;
    TMark mark = TMark::Good;
    nlohmann::json json; // as docs/report.md describes it, but for "mark"

    // What its values are divided by: exposure times intensity.
    double Product() const
    {
        return static_cast<double>(reference.exposureSeconds) * static_cast<double>(reference.lightIntensityPercent);
    }
    void Check(const std::string& name, double value, const std::string& details = {});
};

// `stored` are the pixels of the correction, which is active. Its picture has at most `pictureText` characters;
// with 0 there is none.
TCorrectionFigures FiguresOf(TCorrectionSet& set, std::size_t index, const TImage& stored, std::size_t pictureText);

} // namespace workbench

#endif
