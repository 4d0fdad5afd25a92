#include "modules/farm/hdr/option_words.h"

namespace {
constexpr std::string_view BLANKS = " \t\n";
constexpr std::string_view ESCAPED = "\"\\$`"; // within double quotes
constexpr char QUOTE = '\'';
constexpr char DOUBLE_QUOTE = '"';

/// Takes words from the front of a line.
class WordReader {
public:
    explicit WordReader(std::string_view line) : rest(line) {}

    bool find_word()
    {
        const std::size_t start = rest.find_first_not_of(BLANKS);
        rest.remove_prefix(start == std::string_view::npos ? rest.size() : start);
        return !rest.empty();
    }

    /// None if it has a quote that is not closed.
    std::optional<std::string> take_word()
    {
        std::string word;
        while (!rest.empty() && BLANKS.find(rest.front()) == std::string_view::npos) {
            const char c = take();
            const bool is_good = c == QUOTE          ? take_quoted(word)
                                 : c == DOUBLE_QUOTE ? take_double_quoted(word)
                                                     : take_bare(c, word);
            if (!is_good)
                return std::nullopt;
        }
        return word;
    }

private:
    char take()
    {
        const char c = rest.front();
        rest.remove_prefix(1);
        return c;
    }

    bool take_bare(char c, std::string& word)
    {
        if (c == '\\' && rest.empty())
            return false;
        word += c == '\\' ? take() : c;
        return true;
    }

    bool take_quoted(std::string& word)
    {
        const std::size_t end = rest.find(QUOTE);
        if (end == std::string_view::npos)
            return false;
        word += rest.substr(0, end);
        rest.remove_prefix(end + 1);
        return true;
    }

    // Within these a backslash means something before a few characters alone.
    bool take_double_quoted(std::string& word)
    {
        while (!rest.empty()) {
            char c = take();
            if (c == DOUBLE_QUOTE)
                return true;
            if (c == '\\' && !rest.empty() && ESCAPED.find(rest.front()) != std::string_view::npos)
                c = take();
            word += c;
        }
        return false;
    }

    std::string_view rest;
};
} // namespace

std::optional<std::vector<std::string>> split_words(std::string_view line)
{
    std::vector<std::string> words;
    WordReader reader(line);
    while (reader.find_word()) {
        const std::optional<std::string> word = reader.take_word();
        if (!word)
            return std::nullopt;
        words.push_back(*word);
    }
    return words;
}

std::string join_words(const std::vector<std::string>& words)
{
    std::string line;
    for (const std::string& word : words) {
        line += line.empty() ? "'" : " '";
        for (const char c : word)
            line += c == QUOTE ? std::string("'\\''") : std::string(1, c);
        line += QUOTE;
    }
    return line;
}
