#include "support/TemporaryFolder.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <system_error>

namespace fs = std::filesystem;

TTemporaryFolder::TTemporaryFolder(const std::string& parent)
{
    const char* const elsewhere = std::getenv("QXBC_TEST_FOLDER");
    // With its drive on Windows, as programs see the folder once they work in it.
    const fs::path folder = fs::absolute(!parent.empty()        ? fs::path(parent)
                                         : elsewhere != nullptr ? fs::path(elsewhere)
                                                                : fs::temp_directory_path());
    // Tests of several processes run at the same time: try names until one was free.
    std::random_device random;
    for (;;) {
        const auto ticks = std::chrono::steady_clock::now().time_since_epoch().count();
        const fs::path candidate =
            folder / ("qxbc-test-" + std::to_string(ticks % 1000000007) + "-" + std::to_string(random()));
        if (fs::create_directory(candidate)) {
            path = candidate.string();
            return;
        }
    }
}

TTemporaryFolder::~TTemporaryFolder()
{
    std::error_code ignored;
    fs::remove_all(path, ignored);
}

std::string TTemporaryFolder::File(const std::string& name) const
{
    return (fs::path(path) / name).string();
}
