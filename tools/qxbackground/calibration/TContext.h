#ifndef QXBACKGROUND_CALIBRATION_TCONTEXT_H
#define QXBACKGROUND_CALIBRATION_TCONTEXT_H

#include "base/Names.h"
#include "base/TToolError.h"
#include "calibration/Remedy.h"

#include "QX_BackgroundCorrection.hpp"

#include <filesystem>
#include <string>
#include <system_error>

namespace workbench {

// Exit statuses besides 0 (done) and 2 (refused or failed, as a whole).
constexpr int kSomeFailed = 1; // of several files; the others are done, or are whole

// What the verbs share: which library file to load (filled from the command line before a verb runs), and the exit
// status, for verbs whose answer is one.
struct TContext {
    int status = 0;
    std::string libraryPath = QX_KRLSDK::TBackgroundCorrectionLibrary::DefaultName();

    // The verbs over stores work in other folders; a relative path means the one that the program was started in.
    std::filesystem::path startFolder = StartFolder();

    QX_KRLSDK::TBackgroundCorrectionLibrary Library() const
    {
        const bool isPlainName = !std::filesystem::path(libraryPath).has_parent_path();
        const std::string path = LibraryName(isPlainName ? libraryPath : (startFolder / libraryPath).string());
        try {
            return QX_KRLSDK::TBackgroundCorrectionLibrary(path);
        } catch (const std::runtime_error& error) {
            std::string text = error.what();
            for (std::size_t at = 0; (at = text.find(path, at)) != std::string::npos; at += libraryPath.size())
                text.replace(at, path.size(), libraryPath);
            throw TToolError(text);
        }
    }

private:
    static std::filesystem::path StartFolder()
    {
        std::error_code ignored; // the folder was removed: then nothing relative can be found there either
        return std::filesystem::current_path(ignored);
    }
};

// Runs one step against the library; a refusal becomes a TToolError that says what the step was about.
template <class TStep> void Call(const std::string& about, TStep&& step)
{
    try {
        step();
    } catch (const QX_KRLSDK::TBackgroundCorrectionError& error) {
        const std::string text = error.what();
        throw TToolError(about, text + " [code " + std::to_string(error.Code()) + "]" + Remedy(text));
    }
}

} // namespace workbench

#endif
