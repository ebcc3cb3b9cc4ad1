#pragma once
// Internal side of the command registry: dispatch of a tokenized line to a registered pattern.
// Threading: kernel thread only.

#include "core/Command.h"

#include <span>
#include <string>
#include <vector>

namespace tarvo::kernel {

inline constexpr const char* kListPlaceholder = "<list>";

struct RegisteredCommand {
    std::vector<std::string> words; // lower case; "<list>" for a placeholder
    CommandSpec definition;
    bool alias = false; // matched only in full, hidden from the command summary
};

struct DispatchResult {
    const RegisteredCommand* command = nullptr; // null: no match (see error_text)
    size_t position = 0;                        // first token after the pattern
    std::vector<size_t> list_starts;            // token index of each "<list>" match
    std::string error_text;
    bool ambiguous = false;
    size_t matched_words = 0; // pattern words matched, also when no pattern matched completely
};

DispatchResult dispatch(const std::vector<Token>& tokens);

// A command of the reference that is planned but not built yet ("Not built yet." in
// docs/commands.md), as far as the line's tokens name it.
struct PlannedCommand {
    std::string heading; // its heading, e.g. "<list> size"; empty: none
    size_t words = 0;    // heading words that the tokens matched (0: none)
};
// The planned command with the most words that the tokens match from their start, word by word
// as dispatch matches ("<list>" an entity list).
PlannedCommand planned_command(const std::vector<Token>& tokens);

// Index of the word `token` names: exact match first, else unique prefix of >= 3 letters.
// -1: none; -2: ambiguous.
int match_word(std::string_view token, std::span<const std::string_view> words);

const std::vector<RegisteredCommand>& all_commands();
void clear_commands();

} // namespace tarvo::kernel
