#pragma once

#include <string>
#include <vector>

namespace Loggerctl {

/// A text of the file within quotes, escaped, and cut when it is long.
std::string Quoted(const std::string& text);

/// The candidate that is most like the word, by the number of letters to change; empty when none is
/// alike. One that differs in nothing but case, or blanks around it, is the most alike.
std::string Nearest(const std::string& word, const std::vector<std::string>& candidates);

/// "did you mean 'x'?" for the nearest candidate, or an empty text.
std::string DidYouMean(const std::string& word, const std::vector<std::string>& candidates);

std::string Trimmed(const std::string& text);

/// "if the application makes it: --handler name", for what a file does not say.
std::string IfItIsOwn(const std::string& makes, const std::string& option, const std::string& name);

/// "one (other)", or the one that is not empty.
std::string JoinedSuggestions(const std::string& one, const std::string& other);

/// The texts in one, with the separator between them.
std::string Join(const std::vector<std::string>& texts, const std::string& separator);

}  // namespace Loggerctl
