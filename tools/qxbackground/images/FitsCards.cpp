#include "images/FitsCards.h"

#include "base/Wording.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unordered_set>

namespace workbench {

namespace {

std::string KeywordOf(const std::string& card)
{
    std::string keyword = card.substr(0, 8);
    keyword.erase(keyword.find_last_not_of(' ') + 1);
    return keyword;
}

bool HasValue(const std::string& card)
{
    return card.size() > 10 && card[8] == '=' && card[9] == ' ';
}

// "NAXIS", or "NAXIS" and a number.
bool IsNumbered(const std::string& keyword, const char* stem)
{
    const std::size_t length = std::strlen(stem);
    return keyword.compare(0, length, stem) == 0 &&
           keyword.find_first_not_of("0123456789", std::min(length, keyword.size())) == std::string::npos;
}

bool Holds(const std::string& card)
{
    static const std::unordered_set<std::string> kOfThePixels = {
        "SIMPLE",   "XTENSION", "BITPIX",  "EXTEND",   "PCOUNT",   "GCOUNT",   "GROUPS",   "BZERO",    "BSCALE",
        "BLANK",    "DATAMIN",  "DATAMAX", "CHECKSUM", "DATASUM",  "END",      "TFIELDS",  "THEAP",    "ZIMAGE",
        "ZSIMPLE",  "ZTENSION", "ZEXTEND", "ZBITPIX",  "ZPCOUNT",  "ZGCOUNT",  "ZBLOCKED", "ZCMPTYPE", "ZQUANTIZ",
        "ZDITHER0", "ZBLANK",   "ZSCALE",  "ZZERO",    "ZMASKCMP", "ZHECKSUM", "ZDATASUM"};
    static const char* const kNumbered[] = {"NAXIS", "ZNAXIS", "ZTILE", "ZNAME", "ZVAL", "TTYPE", "TFORM", "TUNIT"};
    const std::string keyword = KeywordOf(card);
    if (kOfThePixels.count(keyword) != 0)
        return false;
    for (const char* stem : kNumbered) {
        if (IsNumbered(keyword, stem))
            return false;
    }
    // The name that tile compression gives a table.
    return !(keyword == "EXTNAME" && card.find("'COMPRESSED_IMAGE'") != std::string::npos);
}

bool HasCard(const std::vector<std::string>& cards, std::initializer_list<const char*> keywords)
{
    return std::any_of(keywords.begin(), keywords.end(),
                       [&](const char* keyword) { return CardText(cards, keyword).has_value(); });
}

// Lines of a text as cards that only comment.
void AddComments(const std::string& text, std::vector<std::string>& cards)
{
    constexpr std::size_t kLength = 70;
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t end = std::min({text.find('\n', start), start + kLength, text.size()});
        std::string line = Printable(text.substr(start, end - start));
        for (char& character : line) { // a header is ASCII
            if (static_cast<unsigned char>(character) > 126)
                character = '?';
        }
        cards.push_back(fmt::format("{:<80}", "COMMENT   " + line));
        start = end < text.size() && text[end] == '\n' ? end + 1 : end;
    }
}

std::string Number(double value)
{
    std::string text = fmt::format("{}", value);
    if (text.find_first_of(".e") == std::string::npos)
        text += ".0";
    std::replace(text.begin(), text.end(), 'e', 'E');
    return text;
}

std::optional<double> NumberIn(std::string text)
{
    std::replace(text.begin(), text.end(), 'D', 'E');
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (text.empty() || end != text.c_str() + text.size() || !std::isfinite(value))
        return std::nullopt;
    return value;
}

// What cards say of a setting: by the first of its keywords with a number that can be one, or else the first with a
// value.
struct TSaid {
    std::string keyword, text;
    std::optional<double> number;
    bool isUsable = false;

    std::optional<double> Usable() const { return isUsable ? number : std::nullopt; }
    // "GAIN is 'high', " and what would be needed. Nothing where there is nothing else.
    std::string Instead(const char* needed) const
    {
        if (isUsable || keyword.empty())
            return {};
        const char* const quote = number ? "" : "'";
        return keyword + " is " + quote + Printable(text) + quote + ", " + needed;
    }
};

template <class TAccepts>
TSaid SaidBy(const std::vector<std::string>& cards, std::initializer_list<const char*> keywords, TAccepts&& accepts)
{
    TSaid first;
    for (const char* keyword : keywords) {
        const std::optional<std::string> text = CardText(cards, keyword);
        if (!text || text->empty())
            continue;
        const std::optional<double> number = NumberIn(*text);
        if (number && accepts(*number))
            return {keyword, *text, number, true};
        if (first.keyword.empty())
            first = {keyword, *text, number, false};
    }
    return first;
}

} // namespace

std::optional<std::string> CardText(const std::vector<std::string>& cards, const std::string& keyword)
{
    constexpr std::size_t kKeyword = 8; // characters, filled with blanks
    std::string asInCards = keyword;
    asInCards.resize(std::max(keyword.size(), kKeyword), ' ');
    for (const std::string& card : cards) {
        if (card.compare(0, kKeyword, asInCards) != 0 || !HasValue(card))
            continue;
        const std::size_t start = card.find_first_not_of(' ', 10);
        if (start == std::string::npos)
            return std::nullopt;
        std::string text;
        if (card[start] == '\'') {
            for (std::size_t at = start + 1; at < card.size(); ++at) {
                if (card[at] == '\'' && (at + 1 >= card.size() || card[++at] != '\''))
                    break;
                text += card[at];
            }
        } else {
            text = card.substr(start, card.find('/', start) - start);
        }
        text.erase(text.find_last_not_of(' ') + 1);
        return text;
    }
    return std::nullopt;
}

std::optional<double> CardNumber(const std::vector<std::string>& cards, const std::string& keyword)
{
    const std::optional<std::string> text = CardText(cards, keyword);
    return text ? NumberIn(*text) : std::nullopt;
}

std::optional<std::int64_t> DayIn(const std::string& date)
{
    int year = 0, month = 0, day = 0;
    char one = 0, other = 0;
    if (std::sscanf(date.c_str(), "%4d%c%2d%c%2d", &year, &one, &month, &other, &day) != 5 || one != other ||
        (one != '-' && one != ':') || year < 1900 || month < 1 || month > 12 || day < 1 || day > 31)
        return std::nullopt;
    // Years that begin in March, so that the day that is sometimes added is the last one of its year.
    const std::int64_t shifted = year - (month < 3 ? 1 : 0);
    const std::int64_t dayOfYear = (153 * (month + (month < 3 ? 9 : -3)) + 2) / 5 + day - 1;
    constexpr std::int64_t kDaysTo1970 = 719468; // from 0000-03-01
    return shifted * 365 + shifted / 4 - shifted / 100 + shifted / 400 + dayOfYear - kDaysTo1970;
}

std::vector<std::string> CardsThatHold(const std::vector<std::string>& cards)
{
    std::vector<std::string> holding;
    bool kept = true;
    for (const std::string& card : cards) {
        if (KeywordOf(card) != "CONTINUE") // which belongs to the card before it
            kept = Holds(card);
        if (kept)
            holding.push_back(card);
    }
    while (!holding.empty() && holding.back().find_first_not_of(' ') == std::string::npos)
        holding.pop_back();
    return holding;
}

void TakeConditions(const std::vector<std::string>& cards, TPageMetadata& metadata)
{
    const auto any = [](double) { return true; };
    // In single precision it may be nothing, or without end.
    const auto positive = [](double value) {
        const auto single = static_cast<float>(value);
        return single > 0 && std::isfinite(single);
    };
    const TSaid exposure = SaidBy(cards, {"EXPTIME", "EXPOSURE"}, positive);
    metadata.exposureSeconds = exposure.Usable();
    metadata.isUnexposed = !exposure.isUsable && exposure.number && *exposure.number == 0;
    metadata.unusable.exposure =
        exposure.Instead(!exposure.number       ? "not a number of seconds"
                         : metadata.isUnexposed ? "as a bias frame's is, and nothing can be scaled with that"
                                                : "which is no exposure time");
    const TSaid gain = SaidBy(cards, {"GAIN"}, any);
    metadata.gain = gain.Usable();
    metadata.unusable.gain = gain.Instead("not a number");
    metadata.electronsPerAdu = SaidBy(cards, {"EGAIN"}, positive).Usable();
    const TSaid celsius = SaidBy(cards, {"CCD-TEMP", "SET-TEMP"}, any);
    metadata.sensorCelsius = celsius.Usable();
    metadata.unusable.celsius = celsius.Instead("not a number of degrees");
    const auto whole = [](double value) { return value >= 1 && value <= 1000 && value == std::floor(value); };
    const TSaid x = SaidBy(cards, {"XBINNING"}, whole), y = SaidBy(cards, {"YBINNING"}, whole);
    if (x.isUsable)
        metadata.binningX = static_cast<int>(*x.number);
    if (y.isUsable)
        metadata.binningY = static_cast<int>(*y.number);
    metadata.unusable.binning = (x.keyword.empty() || x.isUsable ? y : x).Instead("not a whole number from 1 to 1000");
    if (const std::optional<std::string> date = CardText(cards, "DATE-OBS"))
        metadata.takenDay = DayIn(*date);
    const auto depth = [](double value) { return value > 8 && value <= 16 && value == std::floor(value); };
    if (const auto bits = SaidBy(cards, {"BITDEPTH", "ADCBITS", "SIGBITS"}, depth).Usable())
        metadata.significantBits = *(metadata.cameraBits = static_cast<int>(*bits));
}

std::vector<std::string> CardsIn(const std::string& description)
{
    std::vector<std::string> cards;
    for (std::size_t start = 0; start < description.size();) {
        const std::size_t end = std::min(description.find('\n', start), description.size());
        if (end - start <= kCardCharacters && end - start > 10)
            cards.push_back(fmt::format("{:<80}", description.substr(start, end - start)));
        start = end + 1;
    }
    return cards;
}

std::string DescriptionOf(const std::vector<std::string>& cards)
{
    std::string text;
    for (const std::string& card : cards) {
        if (!text.empty())
            text += '\n';
        text += card.substr(0, card.find_last_not_of(' ') + 1);
    }
    return text;
}

std::string Card(const std::string& keyword, const std::string& value, const std::string& comment)
{
    // Texts begin in the eleventh column, numbers end in the thirtieth.
    const bool isText = value.compare(0, 1, "'") == 0;
    std::string card =
        isText ? fmt::format("{:<8}= {:<20}", keyword, value) : fmt::format("{:<8}= {:>20}", keyword, value);
    if (!comment.empty())
        card += " / " + comment;
    card.resize(kCardCharacters, ' ');
    return card;
}

std::string QuotedCardText(const std::string& text)
{
    constexpr std::size_t kLongest = 68;
    std::string quoted;
    for (const char character : Printable(text)) {
        const std::string added = character == '\''                             ? "''"
                                  : static_cast<unsigned char>(character) > 126 ? "?"
                                                                                : std::string(1, character);
        if (quoted.size() + added.size() > kLongest)
            break;
        quoted += added;
    }
    return fmt::format("'{:<8}'", quoted);
}

std::vector<std::string> CardsOf(const TPageMetadata& metadata)
{
    // A description that is a header becomes one again.
    const std::vector<std::string> described = CardsIn(metadata.description);
    const bool isHeader = metadata.cards.empty() && HasCard(described, {"EXPTIME", "EXPOSURE", "DATE-OBS", "INSTRUME"});
    std::vector<std::string> cards = CardsThatHold(isHeader ? described : metadata.cards);
    const auto add = [&cards](std::initializer_list<const char*> taken, const std::string& value, const char* comment) {
        if (!HasCard(cards, taken))
            cards.push_back(Card(*taken.begin(), value, comment));
    };
    if (metadata.exposureSeconds)
        add({"EXPTIME", "EXPOSURE"}, Number(*metadata.exposureSeconds), "exposure time in seconds");
    if (metadata.gain)
        add({"GAIN"}, Number(*metadata.gain), "");
    if (metadata.electronsPerAdu)
        add({"EGAIN"}, Number(*metadata.electronsPerAdu), "electrons per ADU");
    if (metadata.sensorCelsius)
        add({"CCD-TEMP", "SET-TEMP"}, Number(*metadata.sensorCelsius), "degrees Celsius");
    if (metadata.binningX)
        add({"XBINNING"}, std::to_string(*metadata.binningX), "");
    if (metadata.binningY)
        add({"YBINNING"}, std::to_string(*metadata.binningY), "");
    if (!metadata.model.empty())
        add({"INSTRUME"}, QuotedCardText(metadata.model), "");
    if (!metadata.artist.empty())
        add({"OBSERVER"}, QuotedCardText(metadata.artist), "");
    if (!metadata.software.empty())
        add({"CREATOR", "SWCREATE"}, QuotedCardText(metadata.software), "");
    // 2026:11:22 01:02:03 -> 2026-11-22T01:02:03
    if (metadata.date.size() == 19 && metadata.date[4] == ':' && metadata.date[7] == ':') {
        std::string date = metadata.date;
        date[4] = date[7] = '-';
        date[10] = 'T';
        add({"DATE"}, QuotedCardText(date), "");
    }
    if (metadata.cards.empty() && !isHeader)
        AddComments(metadata.description, cards);
    cards.insert(cards.end(), metadata.record.begin(), metadata.record.end());
    return cards;
}

std::string FullDescription(const TPageMetadata& metadata)
{
    std::string description = metadata.description;
    if (description.empty() && !metadata.cards.empty())
        return DescriptionOf(CardsOf(metadata));
    if (!metadata.record.empty())
        description += (description.empty() || description.back() == '\n' ? "" : "\n") + DescriptionOf(metadata.record);
    return description;
}

} // namespace workbench
