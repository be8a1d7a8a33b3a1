#include "commandline/TextLayout.h"

namespace workbench {

namespace {

std::vector<std::string> Split(const std::string& text, char separator)
{
    std::vector<std::string> parts(1);
    for (const char character : text) {
        if (character == separator)
            parts.emplace_back();
        else
            parts.back() += character;
    }
    return parts;
}

// The words of a command; what stands in quotes is one.
std::vector<std::string> CommandWords(const std::string& command)
{
    std::vector<std::string> words(1);
    char quote = 0;
    for (const char character : command) {
        if (quote == 0 && character == ' ') {
            words.emplace_back();
            continue;
        }
        if (quote == 0 && (character == '\'' || character == '"'))
            quote = character;
        else if (character == quote)
            quote = 0;
        words.back() += character;
    }
    return words;
}

} // namespace

std::string WrappedPieces(const std::string& first, const std::vector<std::string>& pieces, std::size_t indent,
                          const std::string& lineEnd)
{
    std::string text, line = first;
    bool isLineBegun = false;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const std::size_t end = i + 1 < pieces.size() ? lineEnd.size() : 0;
        if (isLineBegun && line.size() + 1 + pieces[i].size() + end > kHelpColumns) {
            text += line + lineEnd + '\n';
            line = std::string(indent, ' ');
            isLineBegun = false;
        }
        line += (isLineBegun ? " " : "") + pieces[i];
        isLineBegun = true;
    }
    return text + line + '\n';
}

std::string WrappedText(const std::string& text, std::size_t indent)
{
    const std::string blanks(indent, ' ');
    std::string wrapped;
    for (const std::string& line : Split(text, '\n'))
        wrapped +=
            line.compare(0, 2, "  ") == 0 ? blanks + line + '\n' : WrappedPieces(blanks, Split(line, ' '), indent);
    return wrapped;
}

std::string WrappedText(const std::string& first, const std::string& text, std::size_t indent)
{
    const std::string wrapped = WrappedText(text, indent);
    return first.size() + 2 > indent ? first + '\n' + wrapped
                                     : first + std::string(indent - first.size(), ' ') + wrapped.substr(indent);
}

std::string WrappedCommand(const std::string& command, std::size_t indent)
{
    constexpr std::size_t kFurther = 4;
    constexpr std::size_t kLongestPiece = 40; // of an option with its values
    std::vector<std::string> pieces;
    bool inOption = false;
    for (const std::string& word : CommandWords(command)) {
        const bool isOption = word.size() > 1 && word.front() == '-';
        if (inOption && !isOption && pieces.back().size() + 1 + word.size() <= kLongestPiece)
            pieces.back() += " " + word;
        else
            pieces.push_back(word);
        inOption = isOption || inOption;
    }
    return WrappedPieces(std::string(indent, ' '), pieces, indent + kFurther, " \\");
}

} // namespace workbench
