/// \file QX_BackgroundCorrectionModule.hpp
/// Part of QX_BackgroundCorrection.hpp, which hosts include: loads the library and reads its version.
#ifndef QX_BACKGROUNDCORRECTION_MODULE_HPP
#define QX_BACKGROUNDCORRECTION_MODULE_HPP

#include "QX_BackgroundCorrection.h"

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>

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
#ifdef __linux__
#include <link.h>
#endif

namespace QX_KRLSDK {

/// A version of the library or of its headers; QX_BackgroundCorrection.h says what its numbers count.
struct TBackgroundCorrectionVersion {
    unsigned int majorNumber = 0; ///< Of changes that a host may have to follow.
    unsigned int minorNumber = 0; ///< Of additions.
    unsigned int patchNumber = 0; ///< Of corrected errors.

    /// Whether a library of this version has all that a host of version \p host knows of.
    /// \param host  usually kBackgroundCorrectionHeaderVersion
    /// \return true for the same major number and a minor number that is no smaller.
    constexpr bool Serves(const TBackgroundCorrectionVersion& host) const noexcept
    {
        return majorNumber == host.majorNumber && minorNumber >= host.minorNumber;
    }

    /// \return the three numbers with dots between them, as "1.0.0".
    std::string Text() const
    {
        char text[40];
        std::snprintf(text, sizeof text, "%u.%u.%u", majorNumber, minorNumber, patchNumber);
        return text;
    }
};

/// The version of the headers that this host was compiled with.
inline constexpr TBackgroundCorrectionVersion kBackgroundCorrectionHeaderVersion{QX_BACKGROUNDCORRECTION_VERSION_MAJOR,
                                                                                 QX_BACKGROUNDCORRECTION_VERSION_MINOR,
                                                                                 QX_BACKGROUNDCORRECTION_VERSION_PATCH};

/// The library in memory and its four exports.
///
/// A plain name (without a folder) is looked for where the system's loader looks: on Windows beside the host's program,
/// in the system's folder and in folders that the host named with AddDllDirectory. The current folder is not searched,
/// on Windows neither is PATH. A path with a folder means that file; a relative one is taken from the current folder,
/// which may be anyone's, so give an absolute one. On Windows the file's own folder serves what it depends on.
class TBackgroundCorrectionModule {
public:
    /// Loads the library.
    /// \param path  its plain name, or a path
    /// \throws std::runtime_error when the file cannot be loaded or lacks one of the four exports; it is unloaded then.
    explicit TBackgroundCorrectionModule(const std::string& path) : handle(Open(path))
    {
        try {
            Resolve(create, "CreateBackgroundCorrection");
            Resolve(createOffline, "CreateBackgroundCorrectionOffline");
            Resolve(destroy, "DeleteBackgroundCorrection");
            Resolve(lastError, "GetLastBackgroundCorrectionDLLError");
        } catch (...) {
            Close();
            throw;
        }
    }
    ~TBackgroundCorrectionModule() { Close(); } ///< Unloads it, unless others have loaded it too.
    TBackgroundCorrectionModule(const TBackgroundCorrectionModule&) = delete;
    TBackgroundCorrectionModule& operator=(const TBackgroundCorrectionModule&) = delete;

    /// \return the version that the loaded file carries (on Windows its version resource, on Linux its package note);
    ///         nothing when it carries none, as on Linux after a linker that cannot write such notes.
    std::optional<TBackgroundCorrectionVersion> Version() const { return ReadVersion(); }

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
        if (opened == nullptr) {
            char number[40];
            std::snprintf(number, sizeof number, ": error %lu", GetLastError());
            throw std::runtime_error("Cannot load " + path + number);
        }
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

    std::optional<TBackgroundCorrectionVersion> ReadVersion() const
    {
        constexpr std::size_t kFirst = 1, kVersionType = 16; // RT_VERSION
        const HRSRC resource =
            FindResourceA(handle, reinterpret_cast<const char*>(kFirst), reinterpret_cast<const char*>(kVersionType));
        const HGLOBAL loaded = resource == nullptr ? nullptr : LoadResource(handle, resource);
        const auto* const bytes = loaded == nullptr ? nullptr : static_cast<const char*>(LockResource(loaded));
        const std::size_t size = bytes == nullptr ? 0 : SizeofResource(handle, resource);
        // The numbers begin with a signature, at some multiple of four bytes.
        for (std::size_t at = 0; at + sizeof(VS_FIXEDFILEINFO) <= size; at += 4) {
            VS_FIXEDFILEINFO numbers;
            std::memcpy(&numbers, bytes + at, sizeof numbers);
            if (numbers.dwSignature == 0xFEEF04BDu)
                return TBackgroundCorrectionVersion{HIWORD(numbers.dwFileVersionMS), LOWORD(numbers.dwFileVersionMS),
                                                    HIWORD(numbers.dwFileVersionLS)};
        }
        return std::nullopt;
    }
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

#ifdef __linux__
    struct TSearch {
        ElfW(Addr) address;
        std::optional<TBackgroundCorrectionVersion> version;
    };

    std::optional<TBackgroundCorrectionVersion> ReadVersion() const
    {
        link_map* map = nullptr;
        if (dlinfo(handle, RTLD_DI_LINKMAP, &map) != 0)
            return std::nullopt;
        TSearch search{map->l_addr, std::nullopt};
        dl_iterate_phdr(SearchModule, &search);
        return search.version;
    }
    static int SearchModule(dl_phdr_info* module, std::size_t, void* data)
    {
        auto& search = *static_cast<TSearch*>(data);
        if (module->dlpi_addr != search.address)
            return 0;
        for (int i = 0; i < module->dlpi_phnum; ++i) {
            const auto& segment = module->dlpi_phdr[i];
            if (segment.p_type == PT_NOTE)
                SearchNotes(reinterpret_cast<const char*>(module->dlpi_addr + segment.p_vaddr), segment.p_memsz,
                            segment.p_align < 8 ? 4 : 8, search);
        }
        return 1;
    }
    // Notes are three numbers, a name and a content, padded to `alignment` bytes. The package's is a text in JSON.
    static void SearchNotes(const char* notes, std::size_t size, std::size_t alignment, TSearch& search)
    {
        constexpr unsigned int kPackage = 0xCAFE1A7E;
        ElfW(Nhdr) header;
        for (std::size_t at = 0; at + sizeof header <= size;) {
            std::memcpy(&header, notes + at, sizeof header);
            const std::size_t content = Padded(at + sizeof header + header.n_namesz, alignment);
            at = Padded(content + header.n_descsz, alignment);
            if (header.n_type != kPackage || at > size)
                continue;
            const std::string text(notes + content, header.n_descsz);
            const char kLabel[] = "\"version\":\"";
            const std::size_t label = text.find(kLabel);
            TBackgroundCorrectionVersion found;
            if (label != std::string::npos &&
                std::sscanf(text.c_str() + label + sizeof kLabel - 1, "%u.%u.%u", &found.majorNumber,
                            &found.minorNumber, &found.patchNumber) == 3)
                search.version = found;
        }
    }
    static std::size_t Padded(std::size_t length, std::size_t alignment)
    {
        return (length + alignment - 1) / alignment * alignment;
    }
#else
    std::optional<TBackgroundCorrectionVersion> ReadVersion() const { return std::nullopt; }
#endif
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
    /// \name The exported functions, never null
    /// @{
    CreateBackgroundCorrectionFunction create = nullptr;               ///< CreateBackgroundCorrection
    CreateBackgroundCorrectionOfflineFunction createOffline = nullptr; ///< CreateBackgroundCorrectionOffline
    DeleteBackgroundCorrectionFunction destroy = nullptr;              ///< DeleteBackgroundCorrection
    GetLastBackgroundCorrectionDLLErrorFunction lastError = nullptr;   ///< GetLastBackgroundCorrectionDLLError
    /// @}
};

} // namespace QX_KRLSDK

#endif
