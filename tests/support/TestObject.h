// A live processor as a host holds it, and the shorthand that its tests need.
#ifndef QXBC_TESTS_TEST_OBJECT_H
#define QXBC_TESTS_TEST_OBJECT_H

#include "QX_BackgroundCorrection.h"

#include "model/LiteralArithmetic.h"
#include "processor/TBackgroundCorrectionProcessorUINT16.h"

#include <ostream>
#include <string>
#include <vector>

// The smallest frame there is.
inline const Literal::TImage kPixel{1, 1, {5}};

// What an operation gave: its code, and the text that the object then holds.
struct TOutcome {
    unsigned int code;
    std::string text;

    bool operator==(const TOutcome& other) const { return code == other.code && text == other.text; }
};

inline std::ostream& operator<<(std::ostream& stream, const TOutcome& outcome)
{
    return stream << outcome.code << " \"" << outcome.text << '"';
}

constexpr char kHeaderOnlyText[] = "This file has been opened in header only mode. Cannot modify or apply corrections.";

// Made and destroyed through the exports.
class TTestObject {
public:
    TTestObject() : object(CreateBackgroundCorrection()) {}
    ~TTestObject() { DeleteBackgroundCorrection(object); }
    TTestObject(const TTestObject&) = delete;
    TTestObject& operator=(const TTestObject&) = delete;

    QX_KRLSDK::QX_IBackgroundCorrection* operator->() const { return object; }
    QX_KRLSDK::QX_IBackgroundCorrection* Get() const { return object; }
    TBackgroundCorrectionProcessorUINT16& Processor() const
    {
        return static_cast<TBackgroundCorrectionProcessorUINT16&>(*object);
    }

    std::string Message() const { return object->GetLastErrorMessage(); }
    TOutcome Outcome(unsigned int code) const { return {code, Message()}; }

    // Builds a correction the way a host does.
    unsigned int AddFrames(const char* key, const std::vector<Literal::TImage>& frames, float exposureSeconds = 1.0f,
                           float lightIntensityPercent = 1.0f) const
    {
        std::vector<const unsigned short*> pointers;
        for (const Literal::TImage& frame : frames) {
            pointers.push_back(frame.pixels.data());
        }
        return object->AddCorrection(key, pointers.data(), static_cast<int>(pointers.size()), frames.front().width,
                                     frames.front().height, exposureSeconds, lightIntensityPercent);
    }

    // Stores an image as it is, without the median filter.
    unsigned int Store(const char* key, const Literal::TImage& image, float exposureSeconds = 1.0f,
                       float lightIntensityPercent = 1.0f) const
    {
        const std::uint16_t* const frame = image.pixels.data();
        TBackgroundCorrectionEntry entry;
        entry.Build(key, &frame, 1, static_cast<std::uint32_t>(image.width), static_cast<std::uint32_t>(image.height),
                    exposureSeconds, lightIntensityPercent, false);
        return Processor().AddEntryCopy(entry);
    }

    // Stores a description without pixels.
    unsigned int StoreDescription(const char* key, std::uint32_t width, std::uint32_t height) const
    {
        TBackgroundCorrectionEntry entry;
        entry.Build(key, nullptr, 0, width, height, 1.0f, 1.0f, false);
        return Processor().AddEntryCopy(entry);
    }

    // The mode is kept when the file is missing, and the corrections stay.
    void EnterHeaderOnlyMode() const { object->LoadFileHeaderOnly(kMissingFile); }
    void LeaveHeaderOnlyMode() const { object->LoadFile(kMissingFile); }

    std::vector<std::string> Keys() const
    {
        std::vector<std::string> keys;
        for (unsigned int i = 0; i < object->GetNumberOfCorrections(); ++i) {
            keys.push_back(object->GetCorrectionKey(i));
        }
        return keys;
    }

    std::vector<int> Region() const
    {
        std::vector<int> region(4, -4711);
        object->GetRegion(&region[0], &region[1], &region[2], &region[3]);
        return region;
    }

    // The scaled background, found out by correcting a white image of the region's size.
    std::vector<std::uint16_t> Background() const
    {
        const std::vector<int> region = Region();
        const std::size_t count = static_cast<std::size_t>(region[2]) * static_cast<std::size_t>(region[3]);
        std::vector<std::uint16_t> pixels(count, 65535);
        object->ApplyCorrection(pixels.data(), static_cast<int>(count), nullptr, 0, nullptr, false, false, false);
        for (std::uint16_t& pixel : pixels) {
            pixel = static_cast<std::uint16_t>(65535 - pixel);
        }
        return pixels;
    }

    static constexpr char kMissingFile[] = "no-such-folder/no-such-file.cal";

private:
    QX_KRLSDK::QX_IBackgroundCorrection* object;
};

#endif
