// An image of more than 32 MB is stored; then memory runs out, so that it cannot be copied a second time.
#include "Checks.h"
#include "ContractChecks.h"
#include "HostPlatform.h"

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

using Checks::Equal;
using Checks::Text;
using Checks::That;
using I = QX_KRLSDK::QX_IBackgroundCorrection;

namespace {

// More than any allocator keeps in hand.
constexpr int kWidth = 4096;
constexpr int kHeight = 4160;
constexpr char kKey[] = "large";
constexpr char kFileName[] = "contract-exhausted";

constexpr char kCopyFailed[] = "Ran out of memory in Background correction construction.\n"
                               "Try restarting the application if the problem persists.";
constexpr char kImportFailed[] = "Could not allocate memory during import.";

// The text of the std::exception that `operation` lets through without memory, or its code.
template <class TOperation> std::string WithoutMemory(TOperation operation)
{
    std::string outcome;
    outcome.reserve(256);
    const HostPlatform::TExhaustedMemory exhausted;
    try {
        outcome = Text(operation());
    } catch (const std::exception& exception) {
        outcome = exception.what();
    }
    return outcome;
}

// The lock must be free again, for this thread and for any other.
void CheckCallable(I* object, unsigned int count, const std::string& what)
{
    Equal(Text(object->GetNumberOfCorrections()), Text(count), what + ": count");
    That(HostPlatform::FinishesOnAnotherThread([](void* that) { static_cast<I*>(that)->GetNumberOfCorrections(); },
                                               object, 10000),
         what + ": callable from another thread");
}

} // namespace

void CheckExhaustedMemory(const TExports& exports)
{
    if (HostPlatform::Sanitizer()) {
        Checks::Skip("exhausted memory", HostPlatform::Sanitizer());
        return;
    }
    if (!HostPlatform::TExhaustedMemory().IsComplete()) {
        Checks::Skip("exhausted memory", "the address space of this process is not limited");
        return;
    }
    I* const source = exports.CreateLive();
    I* const target = exports.CreateLive();
    {
        const std::vector<unsigned short> frame(static_cast<std::size_t>(kWidth) * kHeight, 40);
        const unsigned short* frames[] = {frame.data()};
        Equal(Text(source->AddCorrection(kKey, frames, 1, kWidth, kHeight, 1.0f, 1.0f)), "0", "adding a large image");
        Equal(WithoutMemory([&] { return source->AddCorrection("b", frames, 1, kWidth, kHeight, 1.0f, 1.0f); }), "513",
              "adding without memory");
        CheckCallable(source, 1, "after adding failed");
    }

    const std::string import = WithoutMemory([&] { return target->ImportCorrections(source, false); });
    That(import == kCopyFailed || import == kImportFailed, "importing without memory throws, but: " + import);
    CheckCallable(target, 0, "target after importing failed");
    CheckCallable(source, 1, "source after importing failed");

    Equal(WithoutMemory([&] { return source->SaveFile(kFileName); }), kCopyFailed, "saving without memory throws");
    CheckCallable(source, 1, "after saving failed");

    unsigned short image[] = {50};
    Equal(WithoutMemory([&] { return source->SetActiveCorrection(kKey); }), "0", "activating without memory");
    Equal(Text(source->GetLastErrorMessage()), "Error allocating correction memory.", "message of activating");
    Equal(Text(source->ApplyCorrection(image, kWidth * kHeight, nullptr, 0, nullptr, false, false, false)), "1024",
          "applying without a background");
    Equal(Text(image[0]), "50", "image after applying without a background");

    // With memory again, the same objects do the same work.
    Equal(Text(target->ImportCorrections(source, false)), "0", "importing with memory again");
    Equal(Text(source->SaveFile(kFileName)), "0", "saving with memory again");
    Equal(Text(target->LoadFile(kFileName)), "0", "loading what was saved");
    CheckCallable(target, 1, "after loading");
    That(std::remove(kFileName) == 0, "saving wrote its file");
    Equal(Text(exports.destroy(source)), "0", "deleting the source");
    Equal(Text(exports.destroy(target)), "0", "deleting the target");
}
