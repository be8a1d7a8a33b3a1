#include "base/TextFile.h"

#include "base/TToolError.h"

#include <filesystem>
#include <fstream>

namespace workbench {

void WriteText(const std::string& path, const std::string& text, TExisting existing)
{
    TReplacedFile replaced(path, existing);
    std::ofstream file(std::filesystem::path(replaced.Temporary()), std::ios::binary);
    file << text;
    file.close();
    if (!file)
        throw TToolError(path, "cannot be written: " + replaced.Reason("unknown error"));
    replaced.Commit();
}

} // namespace workbench
