// Lets folders change and vanish while they are listed: the test executable links this search in the place of the
// system's (platform/FolderSearch.h).
#ifndef TESTS_FAULTS_LISTINGFAULTS_H
#define TESTS_FAULTS_LISTINGFAULTS_H

#include <cstddef>
#include <functional>

// While it lives, `before` is called before each search, with its number from 1; what it returns says whether the
// search finds anything. One at a time.
class TListingFaults {
public:
    explicit TListingFaults(std::function<bool(std::size_t number)> before);
    ~TListingFaults();
    TListingFaults(const TListingFaults&) = delete;
    TListingFaults& operator=(const TListingFaults&) = delete;

    static std::size_t Searches(); // since it was made
    static std::size_t OpenSearches();
};

#endif
