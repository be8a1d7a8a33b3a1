#include "batch/TSeparateOutputs.h"

#include "base/TToolError.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace workbench {

TSeparateOutputs::TSeparateOutputs(std::vector<std::string> files, TOutputOptions how, TExisting whatExists)
    : paths(std::move(files)), options(std::move(how)), existing(whatExists)
{}

void TSeparateOutputs::Fail(std::size_t file, const std::string& why)
{
    writer.reset();
    failed = file;
    failures.push_back({file, why});
}

void TSeparateOutputs::Try(std::size_t file, const std::function<void()>& step)
{
    try {
        step();
    } catch (const TToolError& error) {
        std::error_code ignored;
        if (existing == TExisting::Replaced || !std::filesystem::exists(paths[file], ignored))
            throw;
        Fail(file, error.what());
    }
}

void TSeparateOutputs::Finish()
{
    if (!writer)
        return;
    Try(current, [this] {
        writer->Close();
        writer.reset();
        pagesDone += pagesOfCurrent;
        done.push_back(current);
    });
}

void TSeparateOutputs::Take(const TPage& page)
{
    if (page.file != current)
        Finish();
    current = page.file;
    if (failed == page.file) // what is left of a file whose output cannot be
        return;
    if (!page.failure.empty()) {
        Fail(page.file, page.failure);
        return;
    }
    const TImageFormat format = options.FormatFor(paths[page.file], page.format);
    try {
        RequireRoom(paths[page.file], format, page.pagesOfFile);
    } catch (const TToolError& error) {
        Fail(page.file, error.what());
        return;
    }
    Try(page.file, [&] {
        if (page.number == 1) {
            pagesOfCurrent = 0;
            writer = CreateImage(paths[page.file], format, options, page.pagesOfFile * page.image.pixels.size() * 2,
                                 existing);
        }
        writer->Write(page.image, page.metadata);
        ++pagesOfCurrent;
    });
}

} // namespace workbench
