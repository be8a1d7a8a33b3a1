// A host's day with both kinds of object, and everything that came of it, for comparing days in different surroundings.
#ifndef QXBC_TESTS_SURROUNDINGS_WORKLOAD_H
#define QXBC_TESTS_SURROUNDINGS_WORKLOAD_H

#include "QX_BackgroundCorrection.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Surroundings {

struct TDeleteObject {
    void operator()(QX_KRLSDK::QX_IBackgroundCorrection* object) const { DeleteBackgroundCorrection(object); }
};
using TObject = std::unique_ptr<QX_KRLSDK::QX_IBackgroundCorrection, TDeleteObject>;

TObject MakeProcessor();
TObject MakeStore(const std::vector<std::string>& groupingNames);

// A correction of 4 x 3 pixels of one value.
unsigned int AddFlat(QX_KRLSDK::QX_IBackgroundCorrection& object, const std::string& key, std::uint16_t value);
// The value that the active correction of such pixels subtracts; -1 when the object refuses.
int FlatBackground(QX_KRLSDK::QX_IBackgroundCorrection& object);

// Builds, scales, corrects, fails, saves and loads, with files in `folder`. Gives every code, text, number, pixel and
// file that came of it, as lines; paths are left out.
std::vector<std::string> Workload(const std::string& folder);

} // namespace Surroundings

#endif
