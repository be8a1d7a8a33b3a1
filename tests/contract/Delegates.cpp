// The delegate's side of the contract: its operations stand at indices 6, 7 and 8 of its table, and what stands before
// them is the host's own.
#include "Checks.h"
#include "ContractChecks.h"
#include "HostPlatform.h"

#include <cstdio>
#include <string>

using Checks::Equal;
using Checks::Text;
using I = QX_KRLSDK::QX_IBackgroundCorrection;
using D = QX_KRLSDK::ICorrectionDelegate;
using Pixel = unsigned short;

namespace {

// What the last call of any delegate was: operation, pixel 0 of each buffer, size, flags.
char lastCall[100];

void Remember(const std::string& call)
{
    std::snprintf(lastCall, sizeof lastCall, "%s", call.c_str());
}

unsigned int Record(unsigned int operation, const Pixel* output, const Pixel* image, const Pixel* background, int width,
                    int height, bool processing, bool option)
{
    const auto first = [](const Pixel* pixels) { return pixels ? static_cast<int>(*pixels) : -1; };
    Remember(Text(operation, first(output), first(image), first(background), width, height, processing, option));
    return 4000 + operation;
}

// Has a virtual destructor, which stands behind the operations.
class TDelegate : public D {
public:
    virtual ~TDelegate() = default;

    void Reserved0() override { Remember("reserved operation 0"); }
    void Reserved1() override { Remember("reserved operation 1"); }
    void Reserved2() override { Remember("reserved operation 2"); }
    void Reserved3() override { Remember("reserved operation 3"); }
    void Reserved4() override { Remember("reserved operation 4"); }
    void Reserved5() override { Remember("reserved operation 5"); }

    unsigned int SubtractInPlace(Pixel* image, const Pixel* background, int width, int height, bool delegateProcessing,
                                 bool delegateOption) override
    {
        return Record(6, nullptr, image, background, width, height, delegateProcessing, delegateOption);
    }
    unsigned int SubtractInto(Pixel* output, const Pixel* image, const Pixel* background, int width, int height,
                              bool delegateProcessing, bool delegateOption) override
    {
        return Record(7, output, image, background, width, height, delegateProcessing, delegateOption);
    }
    unsigned int ProcessInPlace(Pixel* image, int width, int height) override
    {
        return Record(8, nullptr, image, nullptr, width, height, false, false);
    }
};

// A class of the host's own with nine virtual functions, of which the library may know the last three.
class TUnrelatedDelegate {
public:
    virtual double Open(const char*, double) { return Wrong(0); }
    virtual const char* Name() const { return "unrelated"; }
    virtual int* Handles(int*, long long) { return nullptr; }
    virtual bool IsOpen() const { return false; }
    virtual void Close(float, float, float) { Wrong(4); }
    virtual long long Size() { return Wrong(5); }

    virtual unsigned int InPlace(Pixel* image, const Pixel* background, int width, int height, bool processing,
                                 bool option)
    {
        return Record(6, nullptr, image, background, width, height, processing, option);
    }
    virtual unsigned int Into(Pixel* output, const Pixel* image, const Pixel* background, int width, int height,
                              bool processing, bool option)
    {
        return Record(7, output, image, background, width, height, processing, option);
    }
    virtual unsigned int Process(Pixel* image, int width, int height)
    {
        return Record(8, nullptr, image, nullptr, width, height, false, false);
    }

protected:
    ~TUnrelatedDelegate() = default;

private:
    static int Wrong(int index)
    {
        Remember("the host's own operation " + Text(index));
        return -1;
    }
};

class TUnrelatedHost final : public TUnrelatedDelegate {};

// The operations where a compiled library looks for them.
void CheckTable(D* delegate)
{
    const HostPlatform::TFunction* const table = HostPlatform::Table(delegate);
    Pixel output[] = {11}, image[] = {12};
    const Pixel background[] = {13};
    unsigned int code = reinterpret_cast<unsigned int (*)(D*, Pixel*, const Pixel*, int, int, bool, bool)>(table[6])(
        delegate, image, background, 1, 2, true, false);
    Equal(Text(code) + ": " + lastCall, "4006: 6 -1,12,13,1,2,1,0", "index 6 is SubtractInPlace");
    code = reinterpret_cast<unsigned int (*)(D*, Pixel*, const Pixel*, const Pixel*, int, int, bool, bool)>(table[7])(
        delegate, output, image, background, 3, 4, false, true);
    Equal(Text(code) + ": " + lastCall, "4007: 7 11,12,13,3,4,0,1", "index 7 is SubtractInto");
    code = reinterpret_cast<unsigned int (*)(D*, Pixel*, int, int)>(table[8])(delegate, image, 5, 6);
    Equal(Text(code) + ": " + lastCall, "4008: 8 -1,12,-1,5,6,0,0", "index 8 is ProcessInPlace");
}

struct TCase {
    const char* what;
    bool active, nullImage, withOutput, useDelegate, processing, option;
    const char* outcome; // code and recorded call
};

// The image is 500, the output 0, the background 40, the region 3 x 2.
constexpr bool o = false, X = true;
constexpr TCase kCases[] = {
    // active, null image, output, delegate used, processing, option
    {"in place", X, o, o, X, o, o, "4006: 6 -1,500,40,3,2,0,0"},
    {"in place, processing", X, o, o, X, X, o, "4006: 6 -1,500,40,3,2,1,0"},
    {"in place, option", X, o, o, X, o, X, "4006: 6 -1,500,40,3,2,0,1"},
    {"in place, null image", X, X, o, X, o, o, "4006: 6 -1,-1,40,3,2,0,0"},
    {"in place, null image, processing", X, X, o, X, X, o, "513: none"},
    {"into", X, o, X, X, X, X, "4007: 7 0,500,40,3,2,1,1"},
    {"into, option", X, o, X, X, o, X, "4007: 7 0,500,40,3,2,0,1"},
    {"not used", X, o, o, o, X, X, "0: none"},
    {"nothing active", o, o, o, X, o, o, "0: none"},
    {"nothing active, processing", o, o, o, X, X, o, "4008: 8 -1,500,-1,3,2,0,0"},
    {"nothing active, processing, output", o, o, X, X, X, o, "4008: 8 -1,500,-1,3,2,0,0"},
};

void CheckCases(const TExports& exports, bool isStore, D* delegate, const std::string& whose)
{
    constexpr int kLength = 6;
    constexpr char kKey[] = "Camera,1";
    I* const object = isStore ? exports.CreateStore() : exports.CreateLive();
    const Pixel frame[kLength] = {40, 40, 40, 40, 40, 40};
    const Pixel* frames[] = {frame};
    Equal(Text(object->AddCorrection(kKey, frames, 1, 3, 2, 1.0f, 1.0f)), "0", "adding a correction");
    for (const TCase& c : kCases) {
        Pixel image[kLength] = {500, 500, 500, 500, 500, 500}, output[kLength] = {};
        Remember("none");
        // The region stays that of the correction when nothing is active any more.
        unsigned int code = object->SetActiveCorrection(kKey);
        if (code == 0 && !c.active)
            code = object->SetActiveCorrection(nullptr);
        if (code == 0)
            code = object->ApplyCorrection(c.nullImage ? nullptr : image, kLength, c.withOutput ? output : nullptr,
                                           kLength, delegate, c.useDelegate, c.processing, c.option);
        Equal(Text(code) + ": " + lastCall,
              isStore && c.nullImage ? "513: none" : c.outcome, // a store takes no null image
              whose + (isStore ? ", store, " : ", live, ") + c.what);
    }
    Equal(Text(exports.destroy(object)), "0", "deleting");
}

} // namespace

void CheckDelegates(const TExports& exports)
{
    TDelegate delegate;
    CheckTable(&delegate);
    for (const bool isStore : {false, true})
        CheckCases(exports, isStore, &delegate, "delegate");

    if (HostPlatform::Sanitizer()) {
        Checks::Skip("a delegate of an unrelated class", "the sanitizers refuse calls through its table");
        return;
    }
    TUnrelatedHost unrelated;
    for (const bool isStore : {false, true})
        CheckCases(exports, isStore, reinterpret_cast<D*>(&unrelated), "unrelated class");
}
