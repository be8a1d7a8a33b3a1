#include "data/containers/TPositionIndex.h"

namespace {
std::size_t LowestBit(std::size_t node)
{
    return node & (~node + 1);
}
} // namespace

void TPositionIndex::ReserveOne()
{
    if (counts.size() == counts.capacity()) {
        counts.reserve(counts.empty() ? 16 : counts.size() * 2);
    }
}

std::size_t TPositionIndex::Append() noexcept
{
    // A new node covers itself and the nodes below it down to its lowest bit, all of them there already.
    const std::size_t node = counts.size() + 1;
    std::uint32_t live = 1;
    for (std::size_t below = node - 1; below > node - LowestBit(node); below -= LowestBit(below)) {
        live += counts[below - 1];
    }
    counts.push_back(live);
    ++liveCount;
    return node - 1;
}

void TPositionIndex::Remove(std::size_t slot) noexcept
{
    --liveCount;
    if (slot == removedAtFront) {
        ++removedAtFront;
        return;
    }
    for (std::size_t node = slot + 1; node <= counts.size(); node += LowestBit(node)) {
        --counts[node - 1];
    }
}

std::size_t TPositionIndex::SlotAt(std::size_t position) const noexcept
{
    position += removedAtFront;
    if (liveCount == counts.size() - removedAtFront) {
        return position;
    }
    std::size_t step = 1;
    while (step * 2 <= counts.size()) {
        step *= 2;
    }
    std::size_t node = 0; // the largest node whose prefix holds no more than `position` live slots
    for (; step > 0; step /= 2) {
        if (node + step <= counts.size() && counts[node + step - 1] <= position) {
            node += step;
            position -= counts[node - 1];
        }
    }
    return node;
}

void TPositionIndex::Clear() noexcept
{
    counts.clear();
    liveCount = 0;
    removedAtFront = 0;
}
