// The words that arguments and options may be, and the numbers of the wire that some stand for.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// By the name that the help gives it: "EVENT" and "LEVEL" in the order of ipc::EFbEventType and
// ipc::ELogLevel, "SIGNAL" in that of the catalogue, "KEY", "N", "SHELL". Empty for every other
// name: anything may stand there.
std::vector<std::string> KnownWords(std::string_view name);

// The place of the word among the known ones. Throws CUsageError that names what was expected and
// begins with what the word is not ("a log level").
std::size_t Choice(const std::string& word, std::string_view what, std::string_view name);
