#include "model/LiteralWriter.h"

#include "model/LiteralProcessor.h"

namespace Literal {

namespace {

void Put(TBytes& bytes, std::uint32_t value)
{
    for (int shift = 0; shift < 32; shift += 8) {
        bytes.push_back(static_cast<unsigned char>(value >> shift));
    }
}

void PutHeader(TBytes& bytes, std::uint32_t id, std::uint32_t version, std::uint32_t length)
{
    Put(bytes, id);
    Put(bytes, version);
    Put(bytes, length);
}

void PutNumber(TBytes& bytes, std::uint32_t id, std::uint32_t version, std::uint32_t value)
{
    PutHeader(bytes, id, version, 4);
    Put(bytes, value);
}

void PutText(TBytes& bytes, const std::string& text, std::size_t length)
{
    for (std::size_t i = 0; i < length; ++i) {
        bytes.push_back(i < text.size() ? static_cast<unsigned char>(text[i]) : 0);
    }
}

} // namespace

bool Written(const TProcessor& processor, const std::optional<TTexts>& groupingNames, TBytes& bytes)
{
    bytes.clear();
    PutText(bytes, "Background Correction File", 26);
    Put(bytes, groupingNames.has_value() ? 2 : 1);
    if (groupingNames.has_value()) {
        PutNumber(bytes, 69, 2, static_cast<std::uint32_t>(groupingNames->size()));
        for (const std::string& name : *groupingNames) {
            PutHeader(bytes, 70, 2, 16);
            PutText(bytes, name, 16);
        }
    }
    PutNumber(bytes, 61, 1, static_cast<std::uint32_t>(processor.entries.size()));
    for (const auto& entry : processor.entries) {
        PutHeader(bytes, 62, 1, 576 + 2 * entry->width * entry->height);
        PutHeader(bytes, 63, 1, 512);
        PutText(bytes, entry->key, 512);
        PutNumber(bytes, 64, 1, entry->width);
        PutNumber(bytes, 65, 1, entry->height);
        PutNumber(bytes, 66, 1, Bits(entry->exposure));
        PutNumber(bytes, 67, 1, Bits(entry->intensity));
        PutHeader(bytes, 68, 1, 2 * entry->width * entry->height);
        if (entry->pixels.empty() && entry->width != 0 && entry->height != 0) {
            return false; // read in header-only mode, or imported into itself: there is nothing to write
        }
        for (const std::uint16_t pixel : entry->pixels) {
            bytes.push_back(static_cast<unsigned char>(pixel & 0xFF));
            bytes.push_back(static_cast<unsigned char>(pixel >> 8));
        }
    }
    return true;
}

} // namespace Literal
