#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The words of a line as a shell takes them: blanks part words; quotes of both kinds and
/// backslashes keep a blank. Nothing is expanded. None if a quote is not closed.
std::optional<std::vector<std::string>> split_words(std::string_view line);

/// A line that `split_words` takes apart into these words.
std::string join_words(const std::vector<std::string>& words);
