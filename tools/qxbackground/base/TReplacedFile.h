#ifndef QXBACKGROUND_BASE_TREPLACEDFILE_H
#define QXBACKGROUND_BASE_TREPLACEDFILE_H

#include "base/TFileState.h"
#include "base/TNewFile.h"

#include <filesystem>
#include <string>

namespace workbench {

// What happens to an existing file of that name.
enum class TExisting { Refused, Replaced };

inline TExisting ExistingFor(bool overwrite)
{
    return overwrite ? TExisting::Replaced : TExisting::Refused;
}

// The file that a path to be written leads to: links are followed, also one whose file does not exist yet.
std::filesystem::path TargetOf(const std::string& name);

// Throws TToolError when `name` cannot be written whatever its content: no file name, a folder or a device, in a folder
// that is not there, or protected against writing.
void RefuseUnwritable(const std::string& name);
// Throws TToolError when nothing can ever lie there: behind a circle of links, behind a file that stands where a folder
// would have to be, under a name that is too long. `name` is for messages. Folders may be missing.
void RefuseImpossible(const std::filesystem::path& path, const std::string& name);
void RefuseWriteProtected(const std::filesystem::path& file, const std::string& name);

// A hidden name beside `target` that stands for it: ".NAME" and the suffix, shortened where that gets too long.
std::filesystem::path HiddenBeside(const std::filesystem::path& target, const std::string& suffix);

// The lock file that protects changes of `target`, see TFileLock.
std::filesystem::path LockFileOf(const std::filesystem::path& target);

// Where something is made that takes the place of `target`: always the same name when this process holds the lock of
// `target`, so that files of killed processes do not pile up, otherwise an unused name.
std::filesystem::path WorkNameFor(const std::filesystem::path& target);

// A file that appears whole or not at all: Commit gives it its name. Until then an older file of that name is
// untouched; without Commit nothing is left.
class TReplacedFile {
public:
    // Throws TToolError, see RefuseUnwritable.
    TReplacedFile(const std::string& name, TExisting existing);
    // For a file that was read and is changed: Commit refuses when it is no longer as it was `before`.
    TReplacedFile(const std::string& name, const TFileState& before);
    TReplacedFile(const TReplacedFile&) = delete;
    TReplacedFile& operator=(const TReplacedFile&) = delete;

    const std::string& Temporary() const { return file.Path(); }
    // Why writing to it failed: the system's reason if there is one, otherwise `what`.
    std::string Reason(const std::string& what) const;
    // `text` with the user's name for the file in place of its temporary one.
    std::string Named(std::string text) const;
    void Commit();

private:
    std::string name; // as the user wrote it, for messages
    std::filesystem::path target;
    TExisting existing;
    bool changes = false;
    TFileState before;
    TNewFile file;
};

} // namespace workbench

#endif
