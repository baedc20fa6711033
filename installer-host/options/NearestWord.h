#pragma once

#include <string>
#include <vector>

namespace host {

/// The one of the known words that somebody who wrote `word` most likely meant: it differs in few letters or begins
/// with it. Empty when there is none.
std::string nearestWord(const std::string& word, const std::vector<std::string>& known);

}  // namespace host
