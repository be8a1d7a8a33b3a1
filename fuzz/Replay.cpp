// Gives files to a fuzz target without a fuzzer, so that every compiler can replay a corpus.
//
// replay_TARGET FILE-OR-FOLDER...
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> Files(const fs::path& path)
{
    if (!fs::is_directory(path)) {
        return {path};
    }
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(path)) {
        if (entry.is_regular_file()) {
            files.push_back(entry.path());
        }
    }
    return files;
}

void Replay(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (!file) {
        throw std::runtime_error("cannot read " + path.string());
    }
    std::fprintf(stderr, "%s\n", path.c_str()); // the last one named is the one that fails
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

} // namespace

int main(int argumentCount, char** arguments)
{
    std::size_t count = 0;
    try {
        for (int i = 1; i < argumentCount; ++i) {
            for (const fs::path& path : Files(arguments[i])) {
                Replay(path);
                ++count;
            }
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 2;
    }
    std::printf("%zu inputs, nothing found\n", count);
    return count > 0 ? 0 : 2;
}
