#ifndef QXBACKGROUND_REPLACEDFILE_H
#define QXBACKGROUND_REPLACEDFILE_H

#include <filesystem>
#include <string>

namespace workbench {

// A file that appears whole or not at all: it is written under another name in the same folder and renamed by Commit.
// Until then an older file of the final name is untouched; without Commit the temporary file is removed again.
class TReplacedFile {
public:
    // Throws TToolError when the folder is missing or `target` exists and is no regular file.
    explicit TReplacedFile(const std::filesystem::path& target);
    ~TReplacedFile();
    TReplacedFile(const TReplacedFile&) = delete;
    TReplacedFile& operator=(const TReplacedFile&) = delete;

    const std::filesystem::path& Temporary() const { return temporary; }
    void Commit();

private:
    std::string name; // as the user wrote it, for messages
    std::filesystem::path target;
    std::filesystem::path temporary;
    bool committed = false;
};

// A name in `folder` that no file has, beginning with a dot so that no store's naming rule can claim it.
std::filesystem::path UnusedName(const std::filesystem::path& folder);

} // namespace workbench

#endif
