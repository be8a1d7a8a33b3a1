#ifndef QXBACKGROUND_VERBS_TMEASURING_H
#define QXBACKGROUND_VERBS_TMEASURING_H

#include "batch/THandover.h"
#include "images/TImage.h"
#include "verbs/CorrectionReport.h"

#include <cstddef>
#include <exception>
#include <string>
#include <thread>

namespace workbench {

// Makes a run's statistics of copies of its pages, on a thread of its own where there are processors for it: measuring
// a page takes as long as correcting and writing a few, and would make the others wait.
class TMeasuring {
public:
    // The statistics in `report` are this object's until Finish.
    explicit TMeasuring(TCorrectionReport& report);
    ~TMeasuring();
    TMeasuring(const TMeasuring&) = delete;
    TMeasuring& operator=(const TMeasuring&) = delete;

    void Background(const TImage& image) { Hand({TWhat::Background, {}, 0, {}}, image); }
    void Before(const TImage& image) { Hand({TWhat::Before, {}, 0, {}}, image); }
    // Of the page that was given before.
    void After(const TImage& image, const std::string& input, unsigned page)
    {
        Hand({TWhat::After, input, page, {}}, image);
    }

    // Waits until all is measured. Throws what went wrong, or TToolError when the user asked to stop.
    void Finish();

private:
    enum class TWhat { Background, Before, After };
    struct TPart {
        TWhat what = TWhat::Background;
        std::string input;
        unsigned page = 0;
        TImage image;
    };

    void Hand(TPart part, const TImage& image);
    void Measure(const TImage& image, const TPart& part);
    void MeasureAll();

    TCorrectionReport& report;
    TPageFigures before; // of the page that comes next as it is afterwards
    TPart part;          // its image's memory goes round
    THandover<TPart> parts;
    std::exception_ptr failure;
    std::thread thread; // if there is one; the last member: it uses the others
};

} // namespace workbench

#endif
