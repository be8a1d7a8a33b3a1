#include "base/TReplacedFile.h"

#include "base/Names.h"
#include "base/TFileLock.h"
#include "base/TToolError.h"

#include <fmt/format.h>

#include <random>
#include <system_error>

namespace workbench {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kLongestPlainName = 200; // of 255 bytes that file systems take
constexpr int kMostLinks = 40;

fs::path FolderOf(const fs::path& path)
{
    return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

// A name in the folder of `target` that no file has, beginning with a dot so that no store's naming rule can claim it.
fs::path UnusedNameBeside(const fs::path& target)
{
    static const char* const kDigits = "0123456789abcdef";
    std::random_device random;
    for (;;) {
        std::string name = ".qxbackground-";
        for (int digit = 0; digit < 12; ++digit)
            name += kDigits[random() % 16];
        const fs::path path = FolderOf(target) / name;
        if (!fs::exists(fs::symlink_status(path)))
            return path;
    }
}

// A file under the work name was left by a killed process, because this process holds the lock.
fs::path FreshWorkName(const fs::path& target)
{
    const fs::path path = WorkNameFor(target);
    std::error_code ignored;
    fs::remove_all(path, ignored);
    return path;
}

} // namespace

fs::path TargetOf(const std::string& name)
{
    fs::path path = name;
    std::error_code error;
    for (int links = 0; links < kMostLinks && fs::is_symlink(path, error); ++links) {
        const fs::path next = fs::read_symlink(path, error);
        if (error)
            break;
        path = next.is_absolute() ? next : FolderOf(path) / next;
    }
    return path;
}

void RefuseWriteProtected(const fs::path& file, const std::string& name)
{
    if (const std::error_code why = WriteProtection(file))
        throw TToolError(name, "is write-protected and is not changed: " + why.message() + "; make it writable first");
}

void RefuseImpossible(const fs::path& path, const std::string& name)
{
    std::error_code error;
    if (fs::exists(path, error))
        return;
    if (error == std::errc::too_many_symbolic_link_levels)
        throw TToolError(name, "leads through symbolic links in a circle, or through too many; choose another name");
    if (error == std::errc::filename_too_long)
        throw TToolError(name, "its name is too long for this system; choose a shorter one");
    for (fs::path part = FolderOf(path); !part.empty() && part != part.root_path(); part = part.parent_path()) {
        const fs::file_status status = fs::status(part, error);
        if (fs::exists(status) && !fs::is_directory(status))
            throw TToolError(part.string(), "is not a folder");
        if (fs::exists(status))
            break;
        const bool isNamed = !part.filename().empty() && part.filename() != "." && part.filename() != "..";
        if (const std::string refusal = isNamed ? NameRefusal(part) : std::string(); !refusal.empty())
            throw TToolError(part.string(), refusal + "; choose another name");
    }
}

void RefuseUnwritable(const std::string& name)
{
    std::error_code error;
    if (name == "-")
        throw TToolError("'-': the standard output takes no files; give a file name (./- for a file of that name)");
    const fs::path target = TargetOf(name);
    if (name.empty())
        throw TToolError("''", "is not a file name");
    if (target.filename().empty())
        throw TToolError(name, fs::is_directory(target, error)
                                   ? "is a folder"
                                   : "is not a file name; leave out the separator at its end");
    if (const std::string refusal = NameRefusal(target); !refusal.empty())
        throw TToolError(name, refusal + "; choose another name");
    RefuseImpossible(target, name);
    const fs::file_status status = fs::status(target, error);
    if (fs::exists(status) && !fs::is_regular_file(status))
        throw TToolError(name, fs::is_directory(status) ? "is a folder" : "exists and is not a regular file");
    const fs::file_status folder = fs::status(FolderOf(target), error);
    if (!fs::exists(folder))
        throw TToolError(name, error.value() == static_cast<int>(std::errc::permission_denied)
                                   ? "its folder cannot be entered: " + error.message()
                                   : "its folder does not exist; make it first");
    RefuseWriteProtected(target, name);
}

fs::path HiddenBeside(const fs::path& target, const std::string& suffix)
{
    std::string name = target.filename().string();
    if (name.size() > kLongestPlainName) {
        std::uint64_t hash = 14695981039346656037u; // FNV-1a
        for (const char character : name)
            hash = (hash ^ static_cast<unsigned char>(character)) * 1099511628211u;
        name = fmt::format("{}-{:016x}", name.substr(0, kLongestPlainName), hash);
    }
    return FolderOf(target) / ("." + name + suffix);
}

fs::path LockFileOf(const fs::path& target)
{
    return HiddenBeside(fs::canonical(FolderOf(target)) / target.filename(), ".qxbackground-lock");
}

fs::path WorkNameFor(const fs::path& target)
{
    return TFileLock::Holds(LockFileOf(target)) ? HiddenBeside(target, ".qxbackground-new") : UnusedNameBeside(target);
}

namespace {

// Checked before anything is made.
fs::path CheckedTargetOf(const std::string& name)
{
    RefuseUnwritable(name);
    return TargetOf(name);
}

fs::path HiddenNameFor(const std::string& name, const fs::path& target)
{
    try {
        return FreshWorkName(target);
    } catch (const fs::filesystem_error& error) {
        throw TToolError(name, "cannot be created: " + error.code().message());
    }
}

} // namespace

TReplacedFile::TReplacedFile(const std::string& wanted, TExisting whatExists)
try : name(wanted), target(CheckedTargetOf(wanted)), existing(whatExists), file(HiddenNameFor(name, target)) {
} catch (const std::system_error& error) {
    throw TToolError(wanted, "cannot be created: " + error.code().message());
}

TReplacedFile::TReplacedFile(const std::string& wanted, const TFileState& stateBefore)
    : TReplacedFile(wanted, stateBefore.exists ? TExisting::Replaced : TExisting::Refused)
{
    changes = true;
    before = stateBefore;
}

std::string TReplacedFile::Reason(const std::string& what) const
{
    const std::error_code error = file.CannotGrow();
    return error ? error.message() : Named(what);
}

std::string TReplacedFile::Named(std::string text) const
{
    for (std::size_t at = 0; (at = text.find(file.Path(), at)) != std::string::npos; at += name.size())
        text.replace(at, file.Path().size(), name);
    return text;
}

void TReplacedFile::Commit()
{
    static const char* const kChanged = "was changed by another process meanwhile; nothing was written, try again";
    std::error_code error;
    if (changes) {
        // Corrections collected over months must survive a power cut as well.
        error = file.Flush();
        if (error)
            throw TToolError(name, "cannot be written: " + error.message());
        if (StateOf(target) != before)
            throw TToolError(name, kChanged);
    }
    if (existing == TExisting::Refused) {
        error = file.Appear(target);
        if (error == std::errc::file_exists)
            throw TToolError(name, changes ? kChanged : "exists by now; nothing was written (--overwrite replaces it)");
    } else {
        file.TakeAfter(target);
        error = file.Replace(target);
    }
    if (error)
        throw TToolError(name, "cannot be written: " + error.message());
}

} // namespace workbench
