/// \file QX_BackgroundCorrection.hpp
/// Optional comfort for C++17 hosts, header-only: loads the library at run time, owns its objects, and turns result
/// codes into exceptions. It uses QX_BackgroundCorrection.h only; a host that prefers codes and pointers needs that
/// file alone. On Windows MinGW's compilers will do as well as those of the Microsoft C++ ABI; what does not cross
/// (exceptions of the library itself, when memory runs out) stands there.
#ifndef QX_BACKGROUNDCORRECTION_HPP
#define QX_BACKGROUNDCORRECTION_HPP

#include "QX_BackgroundCorrection.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace QX_KRLSDK {

/// What a code says when the library left no text with it.
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
    TBackgroundCorrectionError(unsigned int resultCode, const std::string& text)
        : std::runtime_error(text.empty() ? DescribeBackgroundCorrectionCode(resultCode) : text), code(resultCode)
    {}

    unsigned int Code() const noexcept { return code; }

private:
    unsigned int code;
};

/// The library in memory and its four exports. Throws std::runtime_error when the file cannot be loaded or lacks one.
///
/// A plain name (without a folder) is looked for where the system's loader looks: on Windows beside the host's program,
/// in the system's folder and in folders that the host named with AddDllDirectory. The current folder is not searched,
/// on Windows neither is PATH. A path with a folder means that file; a relative one is taken from the current folder,
/// which may be anyone's, so give an absolute one. On Windows the file's own folder serves what it depends on.
class TBackgroundCorrectionModule {
public:
    explicit TBackgroundCorrectionModule(const std::string& path) : handle(Open(path))
    {
        try {
            Resolve(create, "CreateBackgroundCorrection");
            createOffline =
                reinterpret_cast<CreateBackgroundCorrectionOfflineFunction>(Find("CreateBackgroundCorrectionOffline"));
            Resolve(destroy, "DeleteBackgroundCorrection");
            Resolve(lastError, "GetLastBackgroundCorrectionDLLError");
        } catch (...) {
            Close();
            throw;
        }
    }
    ~TBackgroundCorrectionModule() { Close(); }
    TBackgroundCorrectionModule(const TBackgroundCorrectionModule&) = delete;
    TBackgroundCorrectionModule& operator=(const TBackgroundCorrectionModule&) = delete;

private:
#ifdef _WIN32
    using THandle = HMODULE;

    static THandle Open(const std::string& path)
    {
        // Values of winbase.h, which hides them when the host's _WIN32_WINNT names a system before Windows 8.
        constexpr DWORD kSearchDefaultFolders = 0x1000; // LOAD_LIBRARY_SEARCH_DEFAULT_DIRS
        constexpr DWORD kSearchOwnFolder = 0x100;       // LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR
        const bool isPlainName = path.find_first_of("\\/:") == std::string::npos;
        const THandle opened =
            isPlainName ? LoadLibraryExA(path.c_str(), nullptr, kSearchDefaultFolders)
                        : LoadLibraryExA(AbsolutePath(path).c_str(), nullptr, kSearchDefaultFolders | kSearchOwnFolder);
        if (opened == nullptr)
            throw std::runtime_error("Cannot load " + path + ": error " + std::to_string(GetLastError()));
        return opened;
    }
    // What the loader asks for when a file's own folder is to be searched. The path itself when it cannot be told.
    static std::string AbsolutePath(const std::string& path)
    {
        const DWORD size = GetFullPathNameA(path.c_str(), 0, nullptr, nullptr); // with the terminator
        std::string absolute(size, '\0');
        const DWORD length = size == 0 ? 0 : GetFullPathNameA(path.c_str(), size, &absolute[0], nullptr);
        absolute.resize(length < size ? length : 0);
        return absolute.empty() ? path : absolute;
    }
    void* Find(const char* name) const { return reinterpret_cast<void*>(GetProcAddress(handle, name)); }
    void Close() { FreeLibrary(handle); }
#else
    using THandle = void*;

    static THandle Open(const std::string& path)
    {
        const THandle opened = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (opened == nullptr) {
            const char* const reason = dlerror();
            throw std::runtime_error("Cannot load " + path + (reason == nullptr ? "" : std::string(": ") + reason));
        }
        return opened;
    }
    void* Find(const char* name) const { return dlsym(handle, name); }
    void Close() { dlclose(handle); }
#endif

    template <class TFunction> void Resolve(TFunction& function, const char* name)
    {
        void* const found = Find(name);
        if (found == nullptr)
            throw std::runtime_error(std::string("The library does not export ") + name + ".");
        function = reinterpret_cast<TFunction>(found);
    }

    THandle handle;

public:
    CreateBackgroundCorrectionFunction create = nullptr;
    CreateBackgroundCorrectionOfflineFunction createOffline = nullptr;
    DeleteBackgroundCorrectionFunction destroy = nullptr;
    GetLastBackgroundCorrectionDLLErrorFunction lastError = nullptr;
};

/// One object of the library, owned. Operations that fail throw TBackgroundCorrectionError; arguments, units and
/// lifetimes are those of QX_IBackgroundCorrection. Moving hands the object over; it keeps the library loaded.
class TBackgroundCorrection {
public:
    struct TRegion {
        int left = 0;
        int top = 0;
        int width = 0;
        int height = 0;
    };
    struct TReference {
        float exposureSeconds = 0;
        float lightIntensityPercent = 0;
    };
    struct TStatistics {
        unsigned short minimum = 0;
        unsigned short maximum = 0;
        unsigned short average = 0;
    };

    TBackgroundCorrection(std::shared_ptr<const TBackgroundCorrectionModule> library, QX_IBackgroundCorrection* made)
        : module(std::move(library)), object(made, TDeleter{module.get()})
    {
        if (!object)
            throw std::bad_alloc();
    }

    /// The object itself, for operations that have no method here. Valid as long as this owner.
    QX_IBackgroundCorrection& Get() const { return *object; }

    /// Throws unless `code` is kSuccess, with the object's text. kShortReadOrWrite and kUnexpectedRecord may leave none
    /// of their own: what is quoted then is whatever text an earlier failure left behind.
    void Check(unsigned int code) const
    {
        if (code == kSuccess)
            return;
        const char* const text = object->GetLastErrorMessage();
        throw TBackgroundCorrectionError(code, text == nullptr ? std::string() : std::string(text));
    }

    void Add(const std::string& key, std::vector<const unsigned short*> frames, int width, int height,
             float exposureSeconds, float lightIntensityPercent)
    {
        Check(object->AddCorrection(key.c_str(), frames.data(), static_cast<int>(frames.size()), width, height,
                                    exposureSeconds, lightIntensityPercent));
    }
    void SetActive(const std::string& key) { Check(object->SetActiveCorrection(key.c_str())); }
    void Deactivate() { Check(object->SetActiveCorrection(nullptr)); }
    void Delete(const std::string& key) { Check(object->DeleteCorrection(key.c_str())); }
    void SetLevel(int percent) { Check(object->SetCorrectionLevel(percent)); }
    void SetExposureAndIntensity(float exposureSeconds, float lightIntensityPercent)
    {
        Check(object->SetExposureAndIntensity(exposureSeconds, lightIntensityPercent));
    }
    void SetRegion(const TRegion& region)
    {
        Check(object->SetRegion(region.left, region.top, region.width, region.height));
    }
    TRegion Region() const
    {
        TRegion region;
        Check(object->GetRegion(&region.left, &region.top, &region.width, &region.height));
        return region;
    }
    TReference Reference() const
    {
        TReference reference;
        Check(object->GetReferenceExposureAndIntensity(&reference.exposureSeconds, &reference.lightIntensityPercent));
        return reference;
    }
    TStatistics Statistics() const
    {
        TStatistics statistics;
        Check(object->GetCorrectionStatistics(&statistics.minimum, &statistics.maximum, &statistics.average));
        return statistics;
    }
    TStatistics ScaledStatistics() const
    {
        TStatistics statistics;
        Check(object->GetScaledCorrectionStatistics(&statistics.minimum, &statistics.maximum, &statistics.average));
        return statistics;
    }

    /// Corrects an image in place.
    void Apply(unsigned short* image, int length)
    {
        Check(object->ApplyCorrection(image, length, nullptr, 0, nullptr, false, false, false));
    }
    /// Corrects `image` into `output`, both of `length` pixels.
    void Apply(const unsigned short* image, unsigned short* output, int length)
    {
        // With an output that is another buffer the library only reads the image.
        Check(object->ApplyCorrection(const_cast<unsigned short*>(image), length, output, length, nullptr, false, false,
                                      false));
    }

    std::vector<std::string> Keys() const
    {
        std::vector<std::string> keys;
        const unsigned int count = object->GetNumberOfCorrections();
        for (unsigned int index = 0; index < count; ++index) {
            const char* const key = object->GetCorrectionKey(index);
            keys.emplace_back(key == nullptr ? "" : key);
        }
        return keys;
    }
    void Import(const TBackgroundCorrection& source, bool overwrite)
    {
        Check(object->ImportCorrections(&source.Get(), overwrite));
    }
    void LoadHeaderOnly(const std::string& fileName) { Check(object->LoadFileHeaderOnly(fileName.c_str())); }
    void Load(const std::string& fileName) { Check(object->LoadFile(fileName.c_str())); }
    void Save(const std::string& fileName) { Check(object->SaveFile(fileName.c_str())); }

private:
    struct TDeleter {
        const TBackgroundCorrectionModule* module;
        void operator()(QX_IBackgroundCorrection* doomed) const { module->destroy(doomed); }
    };

    std::shared_ptr<const TBackgroundCorrectionModule> module; // declared first: outlives the object
    std::unique_ptr<QX_IBackgroundCorrection, TDeleter> object;
};

/// The library, loaded at run time; it stays loaded while this object or anything it made lives.
class TBackgroundCorrectionLibrary {
public:
    /// The file's plain name: found where the system's loader looks (on Linux also along the host's run path).
    static std::string DefaultName()
    {
#ifdef _WIN32
        return "QX_BACKGROUNDCORRECTION.dll";
#else
        return "libQX_BACKGROUNDCORRECTION.so";
#endif
    }

    explicit TBackgroundCorrectionLibrary(const std::string& path = DefaultName())
        : module(std::make_shared<const TBackgroundCorrectionModule>(path))
    {}

    /// A live processor.
    TBackgroundCorrection MakeProcessor() const { return {module, module->create()}; }

    /// An offline store. The library reports no refused name: give none that is empty.
    TBackgroundCorrection MakeStore(std::vector<std::string> groupingNames) const
    {
        std::vector<char*> names;
        for (std::string& name : groupingNames)
            names.push_back(name.data());
        return {module, module->createOffline(names.data(), static_cast<int>(names.size()))};
    }

private:
    std::shared_ptr<const TBackgroundCorrectionModule> module;
};

} // namespace QX_KRLSDK

#endif
