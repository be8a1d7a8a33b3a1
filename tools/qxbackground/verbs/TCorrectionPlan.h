#ifndef QXBACKGROUND_VERBS_TCORRECTIONPLAN_H
#define QXBACKGROUND_VERBS_TCORRECTIONPLAN_H

#include "images/TImage.h"
#include "images/TShot.h"
#include "verbs/Options.h"
#include "verbs/TTurn.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace workbench {

// The correction for images of this size that were taken so; `shot` has the exposure that counts. Throws TToolError
// about `path` when there is none.
using TChooseTurn = std::function<TTurn(const std::string& path, const TShot& shot, TSize size)>;

// A correction, and what it is used for.
struct TUsedCorrection {
    std::string what;
    double exposureSeconds = 0;
    double factor = 0;
};

// Which correction each image of a run gets. Made before the first of them is corrected.
class TCorrectionPlan {
public:
    // Looks at the headers of all images when the options leave the exposure to them, or `looks` for another reason;
    // otherwise one turn is chosen for all, knowing neither header nor size. Images of another size than the first are
    // left to the run, which refuses them. Throws TToolError when no image can be corrected, and where all go into one
    // file, when one cannot.
    TCorrectionPlan(const TCorrectOptions& options, bool looks, const TChooseTurn& choose);

    // At least one; the first is that of the first image.
    const std::vector<TTurn>& Turns() const { return turns; }
    // The turn of an image of the run. Throws TToolError, about `path`, when it has none.
    const TTurn& For(const std::string& path, std::size_t file, unsigned page) const;

    // "60 s, 100 %"; "30 s to 60 s by the headers, 100 %".
    std::string ConditionsText() const;
    // "'k' of c.qxb", or how many corrections.
    std::string What() const;
    std::vector<TUsedCorrection> Used() const;
    double LeastFactor() const;
    double LargestFactor() const;
    // What was chosen and why, one line for each turn.
    std::vector<std::string> Notes() const;
    // What does not fit between the options and how corrections were built.
    std::vector<std::string> Warnings() const;
    // What the dark frames and the options say of an image of that turn, to be held against its header.
    TShot Expected(const TTurn& turn) const;

private:
    struct TFile {
        std::string failure;          // why it cannot be corrected
        std::vector<unsigned> ofPage; // which turn
    };

    void Look(const TChooseTurn& choose);
    TFile LookAt(const std::string& path, const TChooseTurn& choose);
    unsigned TurnFor(const std::string& path, unsigned page, const TShot& said, TSize size, const TChooseTurn& choose);

    const TCorrectOptions& options;
    bool isGiven; // the exposure, by its option
    TSize size;   // of the first image
    std::vector<TTurn> turns;
    std::vector<TFile> files; // none where all images take the first turn
    std::map<std::vector<double>, unsigned> known;
};

} // namespace workbench

#endif
