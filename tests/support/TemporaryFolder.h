// A folder for the files of one test.
#ifndef QXBC_TESTS_TEMPORARY_FOLDER_H
#define QXBC_TESTS_TEMPORARY_FOLDER_H

#include <string>

// Made with the object, empty, under the folder that QXBC_TEST_FOLDER names, the system's folder for temporary files,
// or another one; removed with it and all it holds then.
class TTemporaryFolder {
public:
    explicit TTemporaryFolder(const std::string& parent = std::string());
    ~TTemporaryFolder();
    TTemporaryFolder(const TTemporaryFolder&) = delete;
    TTemporaryFolder& operator=(const TTemporaryFolder&) = delete;

    const std::string& Path() const { return path; }
    // Path of a file in the folder; the file need not exist.
    std::string File(const std::string& name) const;

private:
    std::string path;
};

#endif
