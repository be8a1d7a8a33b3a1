// What always holds of an object, whatever was done to it, as a host can see it.
#ifndef FUZZ_HOSTCHECKS_H
#define FUZZ_HOSTCHECKS_H

#include "QX_BackgroundCorrection.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace HostChecks {

enum class TKind { kProcessor, kStore };

// Asks for everything there is to ask. Changes the object's text and nothing else.
void CheckState(QX_KRLSDK::QX_IBackgroundCorrection& object, TKind kind);

// Corrects images in every way, when the region is small. Gives the background that was subtracted: none when there is
// none, or the object refuses.
std::optional<std::vector<std::uint16_t>> CheckApplication(QX_KRLSDK::QX_IBackgroundCorrection& object);

// The largest region that CheckApplication takes, in pixels.
constexpr std::int64_t kMostPixels = 4096;

} // namespace HostChecks

#endif
