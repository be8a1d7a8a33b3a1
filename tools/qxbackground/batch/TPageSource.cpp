#include "batch/TPageSource.h"

#include "base/Interrupts.h"
#include "base/TToolError.h"

#include <memory>
#include <utility>

namespace workbench {

TPageSource::TPageSource(std::vector<std::string> files, TInputOptions how, TPageSteps whatToDo, std::size_t ahead,
                         std::size_t first)
    : paths(std::move(files)), options(std::move(how)), steps(std::move(whatToDo)), firstFile(first), queue(ahead),
      thread(ThreadWithoutInterrupts([this] { ReadAll(); }))
{}

TPageSource::~TPageSource()
{
    queue.Stop();
    thread.join();
}

void TPageSource::ReadAll()
{
    try {
        TPage page;
        for (std::size_t file = firstFile; file < paths.size(); ++file) {
            try {
                page.file = file;
                page.failure.clear();
                if (!ReadFile(paths[file], page))
                    return;
            } catch (const TToolError& error) {
                page.file = file;
                page.failure = error.what();
                if (!queue.Put(page))
                    return;
            }
        }
        queue.End(nullptr);
    } catch (...) {
        queue.End(std::current_exception());
    }
}

unsigned TPageSource::CountPages(const std::string& path) const
{
    const std::unique_ptr<TImageReader> reader = OpenImage(path, options);
    unsigned pages = 0;
    for (; reader->NextPage(); ++pages) {
        if (steps.check)
            steps.check(path, *reader);
    }
    if (pages == 0)
        throw TToolError(path, "holds no image");
    return pages;
}

bool TPageSource::ReadFile(const std::string& path, TPage& page)
{
    const std::size_t file = page.file;
    const unsigned pages = steps.headersFirst ? CountPages(path) : 0;
    const std::unique_ptr<TImageReader> reader = OpenImage(path, options);
    unsigned number = 0;
    while (reader->NextPage()) {
        page.file = file;
        page.number = ++number;
        page.pagesOfFile = pages;
        page.format = reader->Format();
        page.failure.clear();
        if (pages != 0 && number > pages)
            throw TToolError(path, number, "changed while it was being read");
        if (steps.check)
            steps.check(path, *reader); // again: the file may be another one by now
        reader->Read(page.image);
        page.metadata = reader->Metadata();
        if (steps.treat)
            steps.treat(path, page);
        if (!queue.Put(page))
            return false;
    }
    if (pages != 0 && number != pages)
        throw TToolError(path, "changed while it was being read");
    return true;
}

} // namespace workbench
