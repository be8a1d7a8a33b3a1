#include "faults/ListingFaults.h"

#include "faults/RealFolderSearch.h"
#include "platform/FolderSearch.h"

#include <utility>

namespace {

std::function<bool(std::size_t)> beforeSearch;
std::size_t searches = 0;
std::size_t openSearches = 0;

} // namespace

TListingFaults::TListingFaults(std::function<bool(std::size_t number)> before)
{
    beforeSearch = std::move(before);
    searches = 0;
}

TListingFaults::~TListingFaults()
{
    beforeSearch = nullptr;
}

std::size_t TListingFaults::Searches()
{
    return searches;
}

std::size_t TListingFaults::OpenSearches()
{
    return openSearches;
}

namespace Platform {

struct TFolderSearch::TState {
    explicit TState(const std::u16string& specification) : search(specification) {}

    RealPlatform::TFolderSearch search;
    bool isEmpty = false;
};

TFolderSearch::TFolderSearch(const std::u16string& specification) : state(nullptr)
{
    const bool isThere = !beforeSearch || beforeSearch(++searches);
    state = new TState(specification);
    state->isEmpty = !isThere;
    ++openSearches;
}

TFolderSearch::~TFolderSearch()
{
    --openSearches;
    delete state;
}

bool TFolderSearch::HasName() const noexcept
{
    return !state->isEmpty && state->search.HasName();
}

const char16_t* TFolderSearch::Name() const noexcept
{
    return state->search.Name();
}

void TFolderSearch::Next() noexcept
{
    state->search.Next();
}

} // namespace Platform
