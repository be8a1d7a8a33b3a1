#ifndef QXBACKGROUND_BATCH_TPAGESOURCE_H
#define QXBACKGROUND_BATCH_TPAGESOURCE_H

#include "batch/THandover.h"
#include "batch/TPage.h"
#include "images/TImageReader.h"

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace workbench {

// What is done to pages on the thread that reads them. Either may throw a TToolError about the page: its file then ends
// there.
struct TPageSteps {
    // With the page's header alone.
    std::function<void(const std::string& path, const TImageReader& reader)> check;
    // Looks at all headers of a file before its first pixel, so that TPage::pagesOfFile is known.
    bool headersFirst = false;
    std::function<void(const std::string& path, TPage& page)> treat;
};

// All pages of files, in order, read (and treated) by a thread of its own ahead of who takes them. A file that cannot
// be read ends with a page that says why; the next file follows. The steps run on that thread only.
class TPageSource {
public:
    // At most `ahead` pages wait. Begins with the path of number `first`.
    TPageSource(std::vector<std::string> paths, TInputOptions options, TPageSteps steps, std::size_t ahead,
                std::size_t first = 0);
    ~TPageSource();
    TPageSource(const TPageSource&) = delete;
    TPageSource& operator=(const TPageSource&) = delete;

    // The next page; false after the last. Throws when the user asked to stop, or memory is short.
    bool Take(TPage& page) { return queue.Take(page); }

private:
    void ReadAll();
    bool ReadFile(const std::string& path, TPage& page); // false when no more pages are wanted
    unsigned CountPages(const std::string& path) const;

    const std::vector<std::string> paths;
    const TInputOptions options;
    const TPageSteps steps;
    const std::size_t firstFile;
    THandover<TPage> queue;
    std::thread thread; // the last member: it uses the others
};

} // namespace workbench

#endif
