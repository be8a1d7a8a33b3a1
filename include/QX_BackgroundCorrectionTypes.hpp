/// \file QX_BackgroundCorrectionTypes.hpp
/// Part of QX_BackgroundCorrection.hpp, which hosts include: the exception, images, delegates made of callables.
#ifndef QX_BACKGROUNDCORRECTION_TYPES_HPP
#define QX_BACKGROUNDCORRECTION_TYPES_HPP

#include "QX_BackgroundCorrection.h"

#include <climits>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <iterator>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

namespace QX_KRLSDK {

/// What a code says when the library left no text with it.
/// \param code  a result code
/// \return a sentence; never null.
inline const char* DescribeBackgroundCorrectionCode(unsigned int code)
{
    switch (code) {
    case kSuccess:
        return "Success.";
    case kListEndedWhileSaving:
        return "The list of corrections ended early while saving.";
    case kFirstArgumentInvalid:
        return "The first argument was refused.";
    case kSecondArgumentInvalid:
        return "The second argument was refused.";
    case kThirdArgumentInvalid:
        return "The third argument was refused.";
    case kFourthArgumentInvalid:
        return "The fourth argument was refused.";
    case kFifthArgumentInvalid:
        return "The fifth argument was refused.";
    case kSixthArgumentInvalid:
        return "The sixth argument was refused.";
    case kSeventhArgumentInvalid:
        return "The seventh argument was refused.";
    case kFileNameInvalid:
        return "The file records grouping names that its own name does not carry.";
    case kFileNotAccessible:
        return "The calibration file cannot be created, opened or recognised.";
    case kHeaderOnlyMode:
        return "Opened without pixels; corrections cannot be modified or applied.";
    case kFileNotFound:
        return "Neither a file nor any group file of that name exists.";
    case kStructureVersionWrong:
        return "The calibration file has another structure version.";
    case kOperationFailed:
        return "Memory ran out, or a stored correction was refused.";
    case kNoCorrectionActive:
        return "No group is loaded.";
    case kShortReadOrWrite:
        return "The calibration file ended early or could not be written to its end.";
    case kUnexpectedRecord:
        return "The calibration file holds an unexpected record.";
    default:
        return "Unknown result code.";
    }
}

/// A refused operation: the library's text (or the meaning of the code when there is none) and the code itself.
class TBackgroundCorrectionError : public std::runtime_error {
public:
    /// \param resultCode  the code, not kSuccess
    /// \param text        what went wrong; when it is empty, what() describes the code
    TBackgroundCorrectionError(unsigned int resultCode, const std::string& text)
        : std::runtime_error(text.empty() ? DescribeBackgroundCorrectionCode(resultCode) : text), code(resultCode)
    {}

    /// \return the result code.
    unsigned int Code() const noexcept { return code; }

private:
    unsigned int code;
};

/// An image that belongs to somebody else: where its pixels are, row by row without gaps, and its size. Making one
/// checks the size, so that calls need not. Use it by the names TImageView and TConstImageView.
/// \tparam TPixel  unsigned short, or const unsigned short for an image that is only read
template <class TPixel> class TBasicImageView {
    static_assert(std::is_same_v<std::remove_const_t<TPixel>, unsigned short>, "Pixels are unsigned short.");

public:
    /// An image of which the host knows that it is as large as it says.
    /// \param firstPixel    width * height pixels. Null when there are none here: only a delegate can take that
    /// \param widthPixels   at least 1
    /// \param heightPixels  at least 1; width * height at most 2^31 - 1
    /// \throws TBackgroundCorrectionError (kSecondArgumentInvalid) when the size is no size.
    TBasicImageView(TPixel* firstPixel, int widthPixels, int heightPixels)
        : pixels(firstPixel), width(widthPixels), height(heightPixels)
    {
        if (width < 1 || height < 1 || width > INT_MAX / height)
            RefuseSize();
    }

    /// An image in a buffer of known length, which has to be that of the image.
    /// \param firstPixel    the buffer
    /// \param length        number of pixels in the buffer
    /// \param widthPixels   as above
    /// \param heightPixels  as above
    /// \throws TBackgroundCorrectionError (kSecondArgumentInvalid) also when width * height is not \p length.
    TBasicImageView(TPixel* firstPixel, std::size_t length, int widthPixels, int heightPixels)
        : TBasicImageView(firstPixel, widthPixels, heightPixels)
    {
        if (length != static_cast<std::size_t>(Length()))
            RefuseLength(length);
    }

    /// An image in a std::vector, std::array, std::span or the like.
    /// \param container     what std::data and std::size know; its length has to be that of the image
    /// \param widthPixels   as above
    /// \param heightPixels  as above
    /// \throws TBackgroundCorrectionError (kSecondArgumentInvalid) as above.
    template <class TContainer, class = std::enable_if_t<
                                    std::is_convertible_v<decltype(std::data(std::declval<TContainer&>())), TPixel*> &&
                                    std::is_class_v<std::remove_const_t<TContainer>>>>
    TBasicImageView(TContainer& container, int widthPixels, int heightPixels)
        : TBasicImageView(std::data(container), std::size(container), widthPixels, heightPixels)
    {}

    /// What may be written may be read.
    /// \param other  a TImageView, where a TConstImageView is wanted
    template <class TOther, class = std::enable_if_t<std::is_const_v<TPixel> && !std::is_const_v<TOther>>>
    TBasicImageView(const TBasicImageView<TOther>& other)
        : pixels(other.Pixels()), width(other.Width()), height(other.Height())
    {}

    TPixel* Pixels() const noexcept { return pixels; }     ///< The first pixel, or null.
    int Width() const noexcept { return width; }           ///< Pixels in a row, at least 1.
    int Height() const noexcept { return height; }         ///< Rows, at least 1.
    int Length() const noexcept { return width * height; } ///< Pixels in the image.

private:
    [[noreturn]] void RefuseSize() const
    {
        char text[80];
        std::snprintf(text, sizeof text, "An image cannot have %d x %d pixels.", width, height);
        throw TBackgroundCorrectionError(kSecondArgumentInvalid, text);
    }
    [[noreturn]] void RefuseLength(unsigned long long length) const
    {
        char text[120];
        std::snprintf(text, sizeof text, "The buffer of an image of %d x %d pixels has %llu.", width, height, length);
        throw TBackgroundCorrectionError(kSecondArgumentInvalid, text);
    }

    TPixel* pixels;
    int width;
    int height;
};

using TImageView = TBasicImageView<unsigned short>;            ///< An image to be corrected in place or written.
using TConstImageView = TBasicImageView<const unsigned short>; ///< An image that is only read.

/// What ApplyCorrection passes on to a delegate.
struct TDelegateFlags {
    bool processing = false; ///< Have the delegate process images also when nothing is active.
    bool option = false;     ///< For the host's own use.
};

/// What a callable is given that serves as delegate (see TBackgroundCorrection::Apply).
struct TDelegateTask {
    unsigned short* output;           ///< Where the result belongs: \p image itself, when it is corrected in place.
    const unsigned short* image;      ///< width * height pixels; null when the host gave an image without pixels.
    const unsigned short* background; ///< As many, to be subtracted; null when nothing is active. For this call only.
    int width;                        ///< Of the region, in pixels.
    int height;                       ///< Of the region, in pixels.
    TDelegateFlags flags;             ///< As given to Apply; not passed on when nothing is active.

    /// \return the number of pixels in each of the three.
    std::size_t Length() const noexcept { return static_cast<std::size_t>(width) * static_cast<std::size_t>(height); }
};

/// A delegate made of a callable. The callable takes a `const TDelegateTask&` and returns a result code, which
/// ApplyCorrection then returns, or nothing, which is a success. It may throw: the exception ends here, its code (if it
/// is a TBackgroundCorrectionError; else kOperationFailed) is returned, and its text kept.
/// \tparam TCallable  for instance a lambda's type, or a reference to one
template <class TCallable> class TCallableDelegate final : public ICorrectionDelegate {
public:
    /// \param toBeCalled  kept, by value unless TCallable is a reference
    explicit TCallableDelegate(TCallable toBeCalled) : callable(std::forward<TCallable>(toBeCalled)) {}

    unsigned int SubtractInPlace(unsigned short* image, const unsigned short* background, int width, int height,
                                 bool delegateProcessing, bool delegateOption) override
    {
        return Run({image, image, background, width, height, {delegateProcessing, delegateOption}});
    }
    unsigned int SubtractInto(unsigned short* output, const unsigned short* image, const unsigned short* background,
                              int width, int height, bool delegateProcessing, bool delegateOption) override
    {
        return Run({output, image, background, width, height, {delegateProcessing, delegateOption}});
    }
    unsigned int ProcessInPlace(unsigned short* image, int width, int height) override
    {
        return Run({image, image, nullptr, width, height, {}});
    }

    /// \return what the callable's last exception said, at most 255 characters; null when its last call threw none.
    const char* Exception() const noexcept { return threw ? text : nullptr; }

private:
    unsigned int Run(const TDelegateTask& task) noexcept
    {
        threw = false;
        try {
            if constexpr (std::is_void_v<std::invoke_result_t<TCallable&, const TDelegateTask&>>) {
                callable(task);
                return kSuccess;
            } else {
                return callable(task);
            }
        } catch (const TBackgroundCorrectionError& error) {
            return Keep(error.Code(), error.what());
        } catch (const std::exception& error) {
            return Keep(kOperationFailed, error.what());
        } catch (...) {
            return Keep(kOperationFailed, "The delegate threw something that is no std::exception.");
        }
    }
    unsigned int Keep(unsigned int code, const char* what) noexcept
    {
        threw = true;
        std::snprintf(text, sizeof text, "%s", what);
        return code == kSuccess ? kOperationFailed : code;
    }

    TCallable callable;
    bool threw = false;
    char text[256] = {};
};

} // namespace QX_KRLSDK

#endif
