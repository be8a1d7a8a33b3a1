#include "batch/TOutputFolder.h"

#include "base/TToolError.h"

#include <system_error>

namespace workbench {

namespace fs = std::filesystem;

TOutputFolder::TOutputFolder(const std::string& path)
{
    if (path.empty())
        throw TToolError("''", "is not the name of a folder");
    std::error_code error, ignored;
    for (fs::path part = path; !part.empty() && !fs::exists(part, error); part = part.parent_path())
        made.push_back(part);
    fs::create_directories(path, error);
    if (fs::is_directory(path, ignored))
        return;
    RemoveMade(); // those that the last one was to lie in
    throw TToolError(path, "cannot be made a folder" + (error ? ": " + error.message() : std::string()));
}

TOutputFolder::~TOutputFolder()
{
    RemoveMade();
}

void TOutputFolder::RemoveMade() const
{
    std::error_code ignored;
    for (const fs::path& part : made)
        fs::remove(part, ignored); // not when there is something in it
}

} // namespace workbench
