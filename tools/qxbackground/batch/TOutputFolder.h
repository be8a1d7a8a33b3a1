#ifndef QXBACKGROUND_BATCH_TOUTPUTFOLDER_H
#define QXBACKGROUND_BATCH_TOUTPUTFOLDER_H

#include <filesystem>
#include <string>
#include <vector>

namespace workbench {

// The folder of the outputs, made when it is missing, with those it lies in; gone again when nothing came into it.
class TOutputFolder {
public:
    // Throws TToolError when it cannot be made.
    explicit TOutputFolder(const std::string& path);
    ~TOutputFolder();
    TOutputFolder(const TOutputFolder&) = delete;
    TOutputFolder& operator=(const TOutputFolder&) = delete;

private:
    void RemoveMade() const;

    std::vector<std::filesystem::path> made; // the innermost first
};

} // namespace workbench

#endif
