#include "ReplacedFile.h"

#include "ToolError.h"

#include <random>
#include <system_error>

namespace workbench {

namespace fs = std::filesystem;

fs::path UnusedName(const fs::path& folder)
{
    static const char* const kDigits = "0123456789abcdef";
    std::random_device random;
    for (;;) {
        std::string name = ".qxbackground-";
        for (int digit = 0; digit < 12; ++digit)
            name += kDigits[random() % 16];
        const fs::path path = folder / name;
        if (!fs::exists(fs::symlink_status(path)))
            return path;
    }
}

TReplacedFile::TReplacedFile(const fs::path& wanted) : name(wanted.string()), target(wanted)
{
    std::error_code error;
    if (wanted.filename().empty())
        throw TToolError(name.empty() ? "''" : name, "is not a file name");
    if (fs::is_symlink(wanted, error)) // the file behind a link is replaced, not the link
        target = fs::weakly_canonical(wanted);
    const fs::file_status status = fs::status(target, error);
    if (fs::exists(status) && !fs::is_regular_file(status))
        throw TToolError(name, "exists and is not a regular file");
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    if (!fs::is_directory(folder, error))
        throw TToolError(name, "its folder does not exist");
    temporary = UnusedName(folder);
}

TReplacedFile::~TReplacedFile()
{
    std::error_code ignored;
    if (!committed)
        fs::remove(temporary, ignored);
}

void TReplacedFile::Commit()
{
    std::error_code error;
    const fs::file_status old = fs::status(target, error);
    if (fs::exists(old))
        fs::permissions(temporary, old.permissions(), error); // a failure leaves the usual permissions
    fs::rename(temporary, target, error);
    if (error)
        throw TToolError(name, "cannot be replaced: " + error.message());
    committed = true;
}

} // namespace workbench
