/// \file QX_BackgroundCorrection.hpp
/// Optional comfort for C++17 hosts, header-only: loads the library at run time, owns its objects, and turns result
/// codes into exceptions. It uses QX_BackgroundCorrection.h; a host that prefers codes and pointers needs that file
/// alone. Every operation of the interface has a method here, which costs the call itself and nothing more; arguments,
/// units, lifetimes and threads are as they are described there. On Windows MinGW's compilers will do as well as those
/// of the Microsoft C++ ABI; what does not cross (exceptions of the library itself, when memory runs out) stands there
/// too.
///
///     const TBackgroundCorrectionLibrary library;                 // by its plain name
///     TBackgroundCorrection correction = library.MakeProcessor();
///     correction.Add("dark", {{dark1, 640, 480}, {dark2, 640, 480}}, 0.1f, 100.0f); // seconds, percent
///     correction.SetActive("dark");
///     correction.SetExposureAndIntensity(0.2f, 100.0f);           // of the images to come
///     correction.Apply({image, 640, 480});                        // in place
#ifndef QX_BACKGROUNDCORRECTION_HPP
#define QX_BACKGROUNDCORRECTION_HPP

#include "QX_BackgroundCorrection.h"
#include "QX_BackgroundCorrectionModule.hpp"
#include "QX_BackgroundCorrectionTypes.hpp"

#include <cstdio>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace QX_KRLSDK {

/// One object of the library, owned: deleted by the library when this owner ends. Operations that fail throw
/// TBackgroundCorrectionError with the library's code and text; what they take and when they fail stands at the
/// operation of QX_IBackgroundCorrection that each names. It can be moved, not copied, and keeps the library loaded. An
/// owner that was moved from may be given another object or ended, nothing else.
class TBackgroundCorrection {
public:
    /// A rectangle of a correction, in pixels.
    struct TRegion {
        int left = 0;   ///< From 0.
        int top = 0;    ///< From 0.
        int width = 0;  ///< At least 1.
        int height = 0; ///< At least 1.
    };
    /// How images were or will be taken.
    struct TReference {
        float exposureSeconds = 0;       ///< Exposure time in seconds.
        float lightIntensityPercent = 0; ///< Light intensity in percent.
    };
    /// Of the pixels of an image.
    struct TStatistics {
        unsigned short minimum = 0; ///< The smallest.
        unsigned short maximum = 0; ///< The largest.
        unsigned short average = 0; ///< Their average, truncated.
    };

    /// Takes an object over; hosts call TBackgroundCorrectionLibrary::MakeProcessor or MakeStore.
    /// \param library  the library that made it
    /// \param made     the object; null is what a factory gives when memory runs out
    /// \throws std::bad_alloc when \p made is null.
    TBackgroundCorrection(std::shared_ptr<const TBackgroundCorrectionModule> library, QX_IBackgroundCorrection* made)
        : object(made, TDeleter{std::move(library)})
    {
        if (!object)
            throw std::bad_alloc();
    }

    /// \return the object itself, for codes instead of exceptions. Valid as long as this owner.
    QX_IBackgroundCorrection& Get() const noexcept { return *object; }

    /// Throws unless \p code is kSuccess, with the object's text. kShortReadOrWrite and kUnexpectedRecord may leave
    /// none of their own: what is quoted then is whatever text an earlier failure left behind.
    /// \param code  what an operation of Get() returned
    void Check(unsigned int code) const
    {
        if (code != kSuccess)
            throw TBackgroundCorrectionError(code, LastErrorMessage());
    }

    /// \return the text of the last failure, which exceptions carry as well; empty when there is none. A store clears a
    ///         text of its own. (GetLastErrorMessage)
    std::string LastErrorMessage() const
    {
        const char* const text = object->GetLastErrorMessage();
        return text == nullptr ? std::string() : std::string(text);
    }

    /// \name Corrections
    /// @{

    /// Builds a correction from dark frames. (AddCorrection)
    /// \param key                    its name, not empty and not taken
    /// \param frames                 at least one, all of the same size; only read
    /// \param exposureSeconds        of the frames, in seconds, above 0
    /// \param lightIntensityPercent  of the frames, in percent, above 0
    /// \throws TBackgroundCorrectionError also when the frames differ in size (kSecondArgumentInvalid).
    void Add(const std::string& key, const std::vector<TConstImageView>& frames, float exposureSeconds,
             float lightIntensityPercent)
    {
        std::vector<const unsigned short*> pixels;
        pixels.reserve(frames.size());
        for (const TConstImageView& frame : frames) {
            if (frame.Width() != frames.front().Width() || frame.Height() != frames.front().Height())
                throw TBackgroundCorrectionError(kSecondArgumentInvalid, "The frames differ in size.");
            pixels.push_back(frame.Pixels());
        }
        Check(object->AddCorrection(
            key.c_str(), pixels.data(), static_cast<int>(pixels.size()), frames.empty() ? 1 : frames.front().Width(),
            frames.empty() ? 1 : frames.front().Height(), exposureSeconds, lightIntensityPercent));
    }
    /// The same with pointers, of which nothing is checked.
    /// \param key                    as above
    /// \param frames                 each to width * height pixels
    /// \param width                  of each frame, at least 1
    /// \param height                 of each frame, at least 1
    /// \param exposureSeconds        as above
    /// \param lightIntensityPercent  as above
    void Add(const std::string& key, std::vector<const unsigned short*> frames, int width, int height,
             float exposureSeconds, float lightIntensityPercent)
    {
        Check(object->AddCorrection(key.c_str(), frames.data(), static_cast<int>(frames.size()), width, height,
                                    exposureSeconds, lightIntensityPercent));
    }
    /// Makes a correction the active one; the region becomes its whole image. (SetActiveCorrection)
    /// \param key  letter case ignored
    void SetActive(const std::string& key) { Check(object->SetActiveCorrection(key.c_str())); }
    /// Makes none the active one. (SetActiveCorrection)
    void Deactivate() { Check(object->SetActiveCorrection(nullptr)); }
    /// \return the key of the active correction as it was stored; nothing when none is active. (GetActiveCorrectionKey)
    std::optional<std::string> ActiveKey() const { return Owned(object->GetActiveCorrectionKey()); }
    /// \return the number of corrections, in a store of all groups. (GetNumberOfCorrections)
    unsigned int Count() const { return object->GetNumberOfCorrections(); }
    /// \param index  from 0, in the order of adding
    /// \return the key there; nothing from Count() on. (GetCorrectionKey)
    std::optional<std::string> Key(unsigned int index) const { return Owned(object->GetCorrectionKey(index)); }
    /// \return all keys, in the order of adding. (GetCorrectionKey)
    std::vector<std::string> Keys() const
    {
        std::vector<std::string> keys;
        const unsigned int count = Count();
        for (unsigned int index = 0; index < count; ++index)
            keys.push_back(Key(index).value_or(std::string()));
        return keys;
    }
    /// Removes one. (DeleteCorrection)
    /// \param key  not the active one's
    void Delete(const std::string& key) { Check(object->DeleteCorrection(key.c_str())); }
    /// Removes all; no file. (ClearCorrections)
    void Clear() { Check(object->ClearCorrections()); }
    /// Copies the corrections of another object. (ImportCorrections)
    /// \param source     left as it is
    /// \param overwrite  whether a correction whose key is there already is replaced
    /// \throws std::exception also this, when memory runs out.
    void Import(const TBackgroundCorrection& source, bool overwrite)
    {
        Check(object->ImportCorrections(&source.Get(), overwrite));
    }
    /// @}

    /// \name Settings
    /// Each scales the background anew: call them when something changes, not before every image.
    /// @{

    /// Sets how much of the background is subtracted. (SetCorrectionLevel)
    /// \param percent  0 to 100; what is outside becomes the nearer of them
    void SetLevel(int percent) { Check(object->SetCorrectionLevel(percent)); }
    /// \return the level in percent, for half of the values one less than was set; -1 for a store that was told none.
    ///         (GetCorrectionLevel)
    int Level() const { return object->GetCorrectionLevel(); }
    /// Tells how the images to come are taken. Until it is called, the background is divided by the product of the
    /// dark frames' own values. (SetExposureAndIntensity)
    /// \param exposureSeconds        in seconds
    /// \param lightIntensityPercent  in percent
    void SetExposureAndIntensity(float exposureSeconds, float lightIntensityPercent)
    {
        Check(object->SetExposureAndIntensity(exposureSeconds, lightIntensityPercent));
    }
    /// \return what was set; -1 and -1 before. (GetExposureAndIntensity)
    TReference ExposureAndIntensity() const
    {
        TReference values;
        Check(object->GetExposureAndIntensity(&values.exposureSeconds, &values.lightIntensityPercent));
        return values;
    }
    /// Sets which part of the active correction the images show. (SetRegion)
    /// \param region  within the active correction
    void SetRegion(const TRegion& region)
    {
        Check(object->SetRegion(region.left, region.top, region.width, region.height));
    }
    /// \return the region; (0, 0, 1, 1) at first. (GetRegion)
    TRegion Region() const
    {
        TRegion region;
        Check(object->GetRegion(&region.left, &region.top, &region.width, &region.height));
        return region;
    }
    /// @}

    /// \name Queries about the active correction
    /// Zeros when none is active; a store without a loaded group throws (kNoCorrectionActive).
    /// @{

    /// \return how its dark frames were taken. (GetReferenceExposureAndIntensity)
    TReference Reference() const
    {
        TReference reference;
        Check(object->GetReferenceExposureAndIntensity(&reference.exposureSeconds, &reference.lightIntensityPercent));
        return reference;
    }
    /// \return those of its whole image. (GetCorrectionStatistics)
    TStatistics Statistics() const
    {
        TStatistics statistics;
        Check(object->GetCorrectionStatistics(&statistics.minimum, &statistics.maximum, &statistics.average));
        return statistics;
    }
    /// \return those of the scaled background of the region. (GetScaledCorrectionStatistics)
    TStatistics ScaledStatistics() const
    {
        TStatistics statistics;
        Check(object->GetScaledCorrectionStatistics(&statistics.minimum, &statistics.maximum, &statistics.average));
        return statistics;
    }
    /// @}

    /// \name Images (ApplyCorrection)
    /// They have as many pixels as the region, else kSecondArgumentInvalid: the whole correction that was made active,
    /// one pixel before that. After a failure no buffer has been written.
    /// @{

    /// Corrects an image in place.
    /// \param image  the image
    void Apply(const TImageView& image) { Apply(image.Pixels(), image.Length()); }
    /// Corrects an image into another one.
    /// \param image   the image; only read, unless it is \p output itself
    /// \param output  of the same size; does not overlap \p image in part
    /// \throws TBackgroundCorrectionError also when the sizes differ (kFourthArgumentInvalid).
    void Apply(const TConstImageView& image, const TImageView& output)
    {
        CheckSameSize(image, output);
        Apply(image.Pixels(), output.Pixels(), image.Length());
    }
    /// Corrects an image in place.
    /// \param image   \p length pixels
    /// \param length  in pixels
    void Apply(unsigned short* image, int length)
    {
        Check(object->ApplyCorrection(image, length, nullptr, 0, nullptr, false, false, false));
    }
    /// Corrects an image into another one.
    /// \param image   \p length pixels
    /// \param output  \p length pixels
    /// \param length  in pixels
    void Apply(const unsigned short* image, unsigned short* output, int length)
    {
        // With an output that is another buffer the library only reads the image.
        Check(object->ApplyCorrection(const_cast<unsigned short*>(image), length, output, length, nullptr, false, false,
                                      false));
    }
    /// Has a delegate subtract in place. It is called while the object is locked, before Apply returns; with nothing
    /// active only for processing.
    /// \param image     the image. Its pixels may be null, when the delegate knows where they are: then a live
    /// processor
    ///                  checks the size and hands the background over (not with flags.processing)
    /// \param delegate  of the host
    /// \param flags     passed on to it
    /// \throws TBackgroundCorrectionError also with the code that the delegate returned. A code that the library does
    ///         not return itself tells where it came from.
    void Apply(const TImageView& image, ICorrectionDelegate& delegate, const TDelegateFlags& flags = TDelegateFlags())
    {
        CheckDelegated(object->ApplyCorrection(image.Pixels(), image.Length(), nullptr, 0, &delegate, true,
                                               flags.processing, flags.option));
    }
    /// Has a delegate subtract into another image.
    /// \param image     as above
    /// \param output    of the same size
    /// \param delegate  as above
    /// \param flags     as above
    void Apply(const TConstImageView& image, const TImageView& output, ICorrectionDelegate& delegate,
               const TDelegateFlags& flags = TDelegateFlags())
    {
        CheckSameSize(image, output);
        CheckDelegated(object->ApplyCorrection(const_cast<unsigned short*>(image.Pixels()), image.Length(),
                                               output.Pixels(), output.Length(), &delegate, true, flags.processing,
                                               flags.option));
    }
    /// Has a callable, for instance a lambda, subtract in place.
    /// \param image     as above
    /// \param callable  takes a const TDelegateTask&, returns a code or nothing. What it throws arrives as a
    ///                  TBackgroundCorrectionError with the same text (see TCallableDelegate)
    /// \param flags     as above
    template <class TCallable, class = std::enable_if_t<std::is_invocable_v<TCallable&, const TDelegateTask&>>>
    void Apply(const TImageView& image, TCallable&& callable, const TDelegateFlags& flags = TDelegateFlags())
    {
        TCallableDelegate<TCallable&> delegate(callable);
        const unsigned int code = object->ApplyCorrection(image.Pixels(), image.Length(), nullptr, 0, &delegate, true,
                                                          flags.processing, flags.option);
        CheckDelegated(code, delegate.Exception());
    }
    /// Has a callable subtract into another image.
    /// \param image     as above
    /// \param output    of the same size
    /// \param callable  as above
    /// \param flags     as above
    template <class TCallable, class = std::enable_if_t<std::is_invocable_v<TCallable&, const TDelegateTask&>>>
    void Apply(const TConstImageView& image, const TImageView& output, TCallable&& callable,
               const TDelegateFlags& flags = TDelegateFlags())
    {
        CheckSameSize(image, output);
        TCallableDelegate<TCallable&> delegate(callable);
        const unsigned int code =
            object->ApplyCorrection(const_cast<unsigned short*>(image.Pixels()), image.Length(), output.Pixels(),
                                    output.Length(), &delegate, true, flags.processing, flags.option);
        CheckDelegated(code, delegate.Exception());
    }
    /// @}

    /// \name Files
    /// Paths are narrow text, as QX_BackgroundCorrection.h says.
    /// @{

    /// Opens a calibration file without its pixels. (LoadFileHeaderOnly)
    /// \param fileName  path; for a store also its base name
    void LoadHeaderOnly(const std::string& fileName) { Check(object->LoadFileHeaderOnly(fileName.c_str())); }
    /// Loads a calibration file whole. (LoadFile)
    /// \param fileName  as above
    void Load(const std::string& fileName) { Check(object->LoadFile(fileName.c_str())); }
    /// Writes all corrections. (SaveFile)
    /// \param fileName  as above
    /// \throws std::exception also this, when memory runs out.
    void Save(const std::string& fileName) { Check(object->SaveFile(fileName.c_str())); }
    /// @}

private:
    struct TDeleter { // holds the library until the object is gone, also when another one is moved into its owner
        std::shared_ptr<const TBackgroundCorrectionModule> library;
        void operator()(QX_IBackgroundCorrection* doomed) const { library->destroy(doomed); }
    };

    static std::optional<std::string> Owned(const char* text)
    {
        return text == nullptr ? std::nullopt : std::optional<std::string>(text);
    }

    static void CheckSameSize(const TConstImageView& image, const TImageView& output)
    {
        if (image.Width() != output.Width() || image.Height() != output.Height())
            throw TBackgroundCorrectionError(kFourthArgumentInvalid, "Image and output differ in size.");
    }

    // A delegate's own code comes without a text; the object's is that of some earlier failure.
    void CheckDelegated(unsigned int code, const char* exception = nullptr) const
    {
        if (code == kSuccess)
            return;
        if (exception != nullptr)
            throw TBackgroundCorrectionError(code, exception);
        if (code == kHeaderOnlyMode || code == kFirstArgumentInvalid || code == kSecondArgumentInvalid ||
            code == kFourthArgumentInvalid || code == kOperationFailed)
            Check(code);
        char text[60];
        std::snprintf(text, sizeof text, "The delegate returned code %u.", code);
        throw TBackgroundCorrectionError(code, text);
    }

    std::unique_ptr<QX_IBackgroundCorrection, TDeleter> object;
};

/// The library, loaded at run time; it stays loaded while this object or anything it made lives.
class TBackgroundCorrectionLibrary {
public:
    /// \return the file's plain name: found where the system's loader looks (on Linux also along the host's run path).
    static std::string DefaultName()
    {
#ifdef _WIN32
        return "QX_BACKGROUNDCORRECTION.dll";
#else
        return "libQX_BACKGROUNDCORRECTION.so";
#endif
    }

    /// Loads the library.
    /// \param path  its plain name, or a path; see TBackgroundCorrectionModule
    /// \throws std::runtime_error when it cannot be loaded or is another library.
    explicit TBackgroundCorrectionLibrary(const std::string& path = DefaultName())
        : module(std::make_shared<const TBackgroundCorrectionModule>(path))
    {}

    /// \return the version of the loaded file; nothing when it carries none. A host that needs a certain one asks
    ///         whether it Serves(kBackgroundCorrectionHeaderVersion).
    std::optional<TBackgroundCorrectionVersion> Version() const { return module->Version(); }

    /// \return a live processor.
    /// \throws std::bad_alloc when memory runs out.
    TBackgroundCorrection MakeProcessor() const { return {module, module->create()}; }

    /// Makes an offline store.
    /// \param groupingNames  what tells its files apart; at least one, none empty. Files keep 16 characters of each
    /// \return the store.
    /// \throws TBackgroundCorrectionError when there is no name (kSecondArgumentInvalid) or an empty one
    ///         (kFirstArgumentInvalid), which the library itself would pass over in silence.
    /// \throws std::bad_alloc when memory runs out.
    TBackgroundCorrection MakeStore(std::vector<std::string> groupingNames) const
    {
        if (groupingNames.empty())
            throw TBackgroundCorrectionError(kSecondArgumentInvalid, "A store wants at least one grouping name.");
        std::vector<char*> names;
        names.reserve(groupingNames.size());
        for (std::string& name : groupingNames) {
            if (name.empty())
                throw TBackgroundCorrectionError(kFirstArgumentInvalid, "A grouping name of the store is empty.");
            names.push_back(name.data());
        }
        return {module, module->createOffline(names.data(), static_cast<int>(names.size()))};
    }

private:
    std::shared_ptr<const TBackgroundCorrectionModule> module;
};

} // namespace QX_KRLSDK

#endif
