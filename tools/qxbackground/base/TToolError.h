#ifndef QXBACKGROUND_BASE_TTOOLERROR_H
#define QXBACKGROUND_BASE_TTOOLERROR_H

#include <stdexcept>
#include <string>

namespace workbench {

// A failure that ends the run: its text is one line that names the file (and the page) it is about.
class TToolError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    TToolError(const std::string& file, const std::string& what) : std::runtime_error(file + ": " + what) {}
    TToolError(const std::string& file, unsigned page, const std::string& what)
        : std::runtime_error(file + ": page " + std::to_string(page) + ": " + what)
    {}
};

} // namespace workbench

#endif
