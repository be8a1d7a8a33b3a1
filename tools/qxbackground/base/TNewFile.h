#ifndef QXBACKGROUND_BASE_TNEWFILE_H
#define QXBACKGROUND_BASE_TNEWFILE_H

#include <filesystem>
#include <string>
#include <system_error>

namespace workbench {

// Gives a file the permissions of `old`, and its owner where that is allowed; nothing when there is no `old`.
void TakeAfter(const std::filesystem::path& file, const std::filesystem::path& old);
// To the disk.
std::error_code FlushFile(const std::filesystem::path& file);
// Gives a file another name, in place of a file that has it.
std::error_code MoveOver(const std::filesystem::path& from, const std::filesystem::path& to);

// A file that is not complete yet. Where the system can, it has no name until it is whole, so that nothing can be left
// behind; elsewhere it has the hidden name, which is removed with this object.
class TNewFile {
public:
    // Makes the file in the folder of `hidden`. Throws std::system_error.
    explicit TNewFile(const std::filesystem::path& hidden);
    ~TNewFile();
    TNewFile(const TNewFile&) = delete;
    TNewFile& operator=(const TNewFile&) = delete;

    // The path under which the file is opened for writing. Not for messages.
    const std::string& Path() const { return path; }
    // The file gets the permissions of `old`, and its owner where that is allowed.
    void TakeAfter(const std::filesystem::path& old);
    std::error_code Flush(); // to the disk
    // Gives the file its name. Fails with file_exists when there is one of that name.
    std::error_code Appear(const std::filesystem::path& target);
    // Gives the file its name, over an older file.
    std::error_code Replace(const std::filesystem::path& target);
    // Why nothing more can be written to it: asked after a writer failed that does not say why.
    std::error_code CannotGrow() const;

private:
    std::filesystem::path hidden;
    std::string path;
    int descriptor = -1;
    bool named = false;
};

} // namespace workbench

#endif
