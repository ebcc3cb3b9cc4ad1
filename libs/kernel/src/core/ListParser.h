#pragma once
// Token-level parser of entity lists (grammar in EntityList.h). Internal to core/.
// Threading: kernel thread only.

#include "core/Command.h"
#include "core/EntityList.h"

#include <string>
#include <vector>

namespace tarvo::kernel {

struct ListParseOptions {
    // Print one warning for ids that do not exist.
    bool report_missing = true;
    // When set (and report_missing), the warning's text goes here instead of being printed.
    std::string* missing_text = nullptr;
    // Type of bare selectors when the text does not start with a type word ("1 to 3"); empty:
    // a type word is required.
    std::string default_type;
};

// Parses a list starting at tokens[pos]; on success `pos` is after the list. A list must have at
// least one item. On a syntax error gives false, `error_text` says why and `pos` is unchanged.
bool parse_entity_list(const std::vector<Token>& tokens, size_t& pos, EntityList& list,
                       std::string& error_text, const ListParseOptions& options = {});

// Whether tokens[pos] starts an entity list (a type word).
bool starts_entity_list(const std::vector<Token>& tokens, size_t pos);

} // namespace tarvo::kernel
