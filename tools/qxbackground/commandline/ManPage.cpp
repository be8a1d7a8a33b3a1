#include "commandline/ManPage.h"

#include "commandline/TOptionText.h"
#include "commandline/TextLayout.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <map>

namespace workbench {

namespace {

// As it is printed, whatever characters it has; no line of it is taken for a request.
std::string Escaped(const std::string& text)
{
    std::string escaped;
    bool isLineStart = true;
    for (const char character : text) {
        if (isLineStart && (character == '.' || character == '\''))
            escaped += "\\&";
        isLineStart = character == '\n';
        switch (character) {
        case '\\':
            escaped += "\\e";
            break;
        case '-': // otherwise it may become a hyphen, which no shell understands
            escaped += "\\-";
            break;
        case '\'':
            escaped += "\\(aq";
            break;
        case '~':
            escaped += "\\(ti";
            break;
        case '^':
            escaped += "\\(ha";
            break;
        default:
            escaped += character;
        }
    }
    return escaped;
}

constexpr char kNewParagraph[] = ".PP\n";

std::string Bold(const std::string& text)
{
    return "\\fB" + Escaped(text) + "\\fR";
}

// Lines that begin with two blanks stay as they are, as in help.
std::string Paragraph(const std::string& text)
{
    std::string page = kNewParagraph;
    bool isVerbatim = false;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        const std::string line = text.substr(begin, end - begin);
        const bool wanted = line.compare(0, 2, "  ") == 0;
        if (wanted != isVerbatim)
            page += wanted ? ".PP\n.nf\n" : ".fi\n.PP\n";
        isVerbatim = wanted;
        page += Escaped(line) + "\n";
        begin = end + 1;
    }
    return page + (isVerbatim ? ".fi\n" : "");
}

// In lines that fit into what man leaves of 80 columns beside its margins.
std::string CommandLines(const std::string& command)
{
    constexpr std::size_t kMargins = 13;
    const std::string wrapped = WrappedCommand(command, kMargins);
    std::string lines;
    for (std::size_t begin = 0; begin < wrapped.size();) {
        const std::size_t end = wrapped.find('\n', begin) + 1;
        lines += wrapped.substr(begin + kMargins, end - begin - kMargins);
        begin = end;
    }
    return lines;
}

std::string Examples(const TVerb& verb)
{
    std::string page;
    for (const TVerb::TExample& example : verb.Examples())
        page += kNewParagraph + Escaped(example.what) + ":\n.PP\n.nf\n.RS 4\n" +
                Escaped(CommandLines(example.command)) + ".RE\n.fi\n";
    return page;
}

std::string Term(const std::string& term, const std::string& text)
{
    return ".TP\n" + term + "\n" + Escaped(text) + "\n";
}

// A section begins with a paragraph anyway.
std::string Section(const std::string& heading, const std::string& text)
{
    const std::size_t begin = std::char_traits<char>::length(kNewParagraph);
    return ".SH " + heading + "\n" + (text.compare(0, begin, kNewParagraph) == 0 ? text.substr(begin) : text);
}

std::string Terms(const std::string& heading, const std::vector<TProgramText::TTerm>& terms)
{
    std::string page;
    for (const TProgramText::TTerm& term : terms)
        page += Term(Bold(term.term), term.text);
    return Section(heading, page);
}

// Every verb that does something, not those that only have others.
void Collect(const TVerb& verb, std::vector<const TVerb*>& all)
{
    if (verb.Verbs().empty())
        all.push_back(&verb);
    for (const TVerb* inner : verb.Verbs())
        Collect(*inner, all);
}

std::string ShortName(const TVerb& verb, const TProgramText& program)
{
    return FullName(verb).substr(program.name.size() + 1);
}

std::string VerbSection(const TVerb& verb, const TProgramText& program)
{
    std::string page = ".SS " + ShortName(verb, program) + "\n";
    page += Escaped(verb.get_description()) + ".\n";
    if (verb.Verbs().empty()) {
        page += ".PP\n" + Bold(FullName(verb)) + " " + Escaped(WrappedPieces("", UsagePieces(verb), 0));
        for (const TOptionText& text : OptionTexts(verb)) {
            if (text.isArgument)
                page += Term("\\fI" + Escaped(text.Synopsis()) + "\\fR", text.FullHelp() + ".");
        }
        std::string names;
        for (const TOptionText& text : OptionTexts(verb)) {
            if (!text.isArgument && text.name != "--help")
                names += (names.empty() ? "" : ", ") + Bold(text.name);
        }
        if (!names.empty())
            page += ".PP\nOptions: " + names + ".\n";
    }
    for (const std::string& note : verb.Notes())
        page += Paragraph(note);
    page += Examples(verb);
    for (const TVerb* inner : verb.Verbs())
        page += VerbSection(*inner, program);
    return page;
}

struct TToldOption {
    TOptionText text;
    std::string verbs;
};

// Every option of the verbs; where verbs tell different things of one, each.
std::string OptionSection(const TVerb& root, const TProgramText& program)
{
    std::vector<const TVerb*> verbs;
    Collect(root, verbs);
    std::vector<TToldOption> told;
    std::map<std::string, std::size_t> places;
    for (const TVerb* verb : verbs) {
        for (const TOptionText& text : OptionTexts(*verb)) {
            if (text.isArgument || text.name == "--help")
                continue;
            const auto [place, isNew] = places.emplace(text.Synopsis() + text.FullHelp(), told.size());
            if (isNew)
                told.push_back({text, {}});
            std::string& names = told[place->second].verbs;
            names += (names.empty() ? "" : ", ") + ShortName(*verb, program);
        }
    }
    std::multimap<std::string, const TToldOption*> byName; // those of one name in the order of the verbs
    for (const TToldOption& one : told)
        byName.emplace(one.text.name, &one);
    std::string page;
    for (const TOptionText& text : OptionTexts(root))
        page += Term(Bold(text.Synopsis()), text.FullHelp() + ".");
    page += ".SS Options of verbs\n";
    for (const auto& [name, one] : byName)
        page += Term(Bold(one->text.Synopsis()), one->text.FullHelp() + ". (" + one->verbs + ")");
    return Section("OPTIONS", page);
}

// The day on which the page was made, or the one that a build which gives the same bytes each time was told.
std::string Day()
{
    const char* const given = std::getenv("SOURCE_DATE_EPOCH");
    const std::time_t now =
        given != nullptr ? static_cast<std::time_t>(std::strtoll(given, nullptr, 10)) : std::time(nullptr);
    char text[16] = "";
    const std::tm* const parts = std::gmtime(&now);
    if (parts == nullptr || std::strftime(text, sizeof(text), "%Y-%m-%d", parts) == 0)
        return {};
    return text;
}

} // namespace

std::string ManPage(const TVerb& root, const TProgramText& program)
{
    std::string title = program.name;
    for (char& character : title)
        character = static_cast<char>(character >= 'a' && character <= 'z' ? character - 'a' + 'A' : character);
    std::string page = ".TH " + title + " 1 " + Day() + " \"" + program.version + "\" \"User Commands\"\n";
    page += ".nh\n.ad l\n"; // names of options stay whole, and blanks single
    page += ".SH NAME\n" + Escaped(program.name + " - " + program.summary) + "\n";
    page += ".SH SYNOPSIS\n" + Bold(program.name) + " \\fIVERB\\fR [\\fIOPTIONS\\fR] ...\n.br\n" + Bold(program.name) +
            " help \\fIVERB\\fR\n";
    std::string about, verbs;
    for (const std::string& text : program.about)
        about += Paragraph(text);
    for (const TVerb* verb : root.Verbs())
        verbs += VerbSection(*verb, program);
    page += Section("DESCRIPTION", about) + Section("EXAMPLES", Examples(root)) + Section("VERBS", verbs);
    page += OptionSection(root, program);
    page += Terms("EXIT STATUS", program.exitStatus) + Terms("ENVIRONMENT", program.environment) +
            Terms("FILES", program.files);
    return page;
}

} // namespace workbench
