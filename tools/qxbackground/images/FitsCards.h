#ifndef QXBACKGROUND_IMAGES_FITSCARDS_H
#define QXBACKGROUND_IMAGES_FITSCARDS_H

#include "images/TPageMetadata.h"

#include <optional>
#include <string>
#include <vector>

namespace workbench {

// The cards of a FITS header: 80 characters each, keyword first.

constexpr std::size_t kCardCharacters = 80;
constexpr std::size_t kFitsBlock = 2880; // headers and data fill whole ones

// What stands behind "KEYWORD =", of the first card of that keyword. A text without its quotes.
std::optional<std::string> CardText(const std::vector<std::string>& cards, const std::string& keyword);
std::optional<double> CardNumber(const std::vector<std::string>& cards, const std::string& keyword);

// Without what tells how the pixels are stored, and without sums and extremes of the pixels.
std::vector<std::string> CardsThatHold(const std::vector<std::string>& cards);

// The day of "2026-11-22" or "2026:11:22", whatever follows, counted from 1970-01-01.
std::optional<std::int64_t> DayIn(const std::string& date);

// Fills in how the page was taken, as far as the cards say.
void TakeConditions(const std::vector<std::string>& cards, TPageMetadata& metadata);

// The cards of a description that a FITS header was made into, line by line.
std::vector<std::string> CardsIn(const std::string& description);
std::string DescriptionOf(const std::vector<std::string>& cards);

// `value` as it is to stand there; a text with its quotes, see QuotedCardText.
std::string Card(const std::string& keyword, const std::string& value, const std::string& comment);
std::string QuotedCardText(const std::string& text);

// All that a FITS file keeps of a page: its cards, and cards for what else it says.
std::vector<std::string> CardsOf(const TPageMetadata& metadata);

// The description of a page in formats without cards: its own, or its cards, and what was done to it here.
std::string FullDescription(const TPageMetadata& metadata);

} // namespace workbench

#endif
