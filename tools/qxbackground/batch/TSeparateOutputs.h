#ifndef QXBACKGROUND_BATCH_TSEPARATEOUTPUTS_H
#define QXBACKGROUND_BATCH_TSEPARATEOUTPUTS_H

#include "batch/TPage.h"
#include "images/TImageWriter.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace workbench {

// Writes the pages of each file of a run into a file of its own. A file that fails leaves nothing and is noted; the
// others go on. Each output appears once its input was read to the end.
class TSeparateOutputs {
public:
    struct TFailure {
        std::size_t file;
        std::string why;
    };

    // `paths` in the order of the files.
    TSeparateOutputs(std::vector<std::string> paths, TOutputOptions options, TExisting existing);

    // The next page of the run, or the news that a file ends before its time. Throws TToolError when no output can be
    // written at all: the disk is full, the folder gone.
    void Take(const TPage& page);
    // All pages were taken. As Take.
    void Finish();

    // The files that are done, in order.
    const std::vector<std::size_t>& Done() const { return done; }
    std::uint64_t PagesDone() const { return pagesDone; }
    // In order; grows with Take and Finish.
    const std::vector<TFailure>& Failures() const { return failures; }

private:
    void Fail(std::size_t file, const std::string& why);
    // Does something to the output of `file`; an output that another process made meanwhile fails for itself alone.
    void Try(std::size_t file, const std::function<void()>& step);

    const std::vector<std::string> paths;
    const TOutputOptions options;
    const TExisting existing;
    std::unique_ptr<TImageWriter> writer; // of `current`, from its first page until it is finished
    std::size_t current = 0;
    std::uint64_t pagesOfCurrent = 0;
    std::optional<std::size_t> failed; // the last file that failed
    std::vector<TFailure> failures;
    std::vector<std::size_t> done;
    std::uint64_t pagesDone = 0;
};

} // namespace workbench

#endif
