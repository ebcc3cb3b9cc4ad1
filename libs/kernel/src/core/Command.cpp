#include "core/Command.h"

#include "core/CommandRegistry.h"
#include "core/ListParser.h"
#include "core/Session.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>

namespace tarvo::kernel {

namespace {
char lower(char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

bool iequals(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(),
                                              [](char x, char y) { return lower(x) == lower(y); });
}
} // namespace

// ---- Tokens
// --------------------------------------------------------------------------------------

bool tokenize(std::string_view line, std::vector<Token>& tokens, std::string& error_text) {
    tokens.clear();
    size_t i = 0;
    const size_t n = line.size();
    while (i < n) {
        const char c = line[i];
        if (std::isspace(static_cast<unsigned char>(c))) {
            ++i;
            continue;
        }
        if (c == '#') {
            break;
        }
        Token token;
        token.offset = i;
        if (c == ',') {
            token.text = ",";
            token.comma = true;
            tokens.push_back(std::move(token));
            ++i;
            continue;
        }
        if (c == '\'' || c == '"') {
            const size_t close = line.find(c, i + 1);
            if (close == std::string_view::npos) {
                error_text = "Unterminated string starting at column " + std::to_string(i + 1);
                tokens.clear();
                return false;
            }
            token.text = std::string(line.substr(i + 1, close - i - 1));
            token.quoted = true;
            tokens.push_back(std::move(token));
            i = close + 1;
            continue;
        }
        size_t end = i;
        while (end < n && !std::isspace(static_cast<unsigned char>(line[end])) &&
               line[end] != ',' && line[end] != '#' && line[end] != '\'' && line[end] != '"') {
            ++end;
        }
        token.text = std::string(line.substr(i, end - i));
        tokens.push_back(std::move(token));
        i = end;
    }
    return true;
}

bool keyword_matches(std::string_view token, std::string_view word) {
    if (token.empty() || token.size() > word.size()) {
        return false;
    }
    if (token.size() < word.size() && token.size() < 3) {
        return false;
    }
    return iequals(token, word.substr(0, token.size()));
}

// Index of the word that `token` names among `words`: an exact match wins, else the one word of
// which it is a prefix of at least 3 letters. -1: none, -2: ambiguous.
int match_word(std::string_view token, std::span<const std::string_view> words) {
    for (size_t i = 0; i < words.size(); ++i) {
        if (iequals(token, words[i])) {
            return static_cast<int>(i);
        }
    }
    int found = -1;
    for (size_t i = 0; i < words.size(); ++i) {
        if (keyword_matches(token, words[i])) {
            if (found >= 0 && !iequals(words[static_cast<size_t>(found)], words[i])) {
                return -2;
            }
            found = static_cast<int>(i);
        }
    }
    return found;
}

// ---- Cursor
// --------------------------------------------------------------------------------------

Cursor::Cursor(std::vector<Token> tokens_, size_t position_)
    : tokens(std::move(tokens_)), position(position_) {}

void Cursor::expected(std::string_view what, bool quoted) {
    std::string& text = last_expectation;
    text.assign("expected ");
    if (quoted) {
        text += '\'';
    }
    text += what;
    if (quoted) {
        text += '\'';
    }
    if (at_end()) {
        text += " at the end of the line";
    } else {
        text.append(", found '").append(tokens[position].text) += '\'';
    }
    if (position > 0) {
        text.append(" after '").append(tokens[position - 1].text) += '\'';
    }
}

bool Cursor::keyword(std::string_view word) {
    if (!at_end() && !tokens[position].quoted && !tokens[position].comma &&
        keyword_matches(tokens[position].text, word)) {
        ++position;
        return true;
    }
    expected(word, true);
    return false;
}

bool Cursor::choice_of(const std::string_view* words, size_t count, int& index) {
    const auto alternatives = [&] {
        std::string text;
        for (size_t i = 0; i < count; ++i) {
            text.append(i == 0 ? "" : (i + 1 == count ? " or " : ", ")).append(words[i]);
        }
        return text;
    };
    if (at_end() || tokens[position].quoted || tokens[position].comma) {
        expected(alternatives());
        return false;
    }
    const int found = match_word(tokens[position].text, {words, count});
    if (found == -2) {
        last_expectation = "'" + tokens[position].text + "' is ambiguous: " + alternatives() + "?";
        return false;
    }
    if (found < 0) {
        expected(alternatives());
        return false;
    }
    index = found;
    ++position;
    return true;
}

bool Cursor::choice(const std::vector<std::string>& words, int& index) {
    const std::vector<std::string_view> views(words.begin(), words.end());
    return choice_of(views.data(), views.size(), index);
}

bool Cursor::choice(std::initializer_list<std::string_view> words, int& index) {
    return choice_of(words.begin(), words.size(), index);
}

bool Cursor::choice(std::initializer_list<std::string_view> words, std::string& word) {
    int index = 0;
    if (!choice_of(words.begin(), words.size(), index)) {
        return false;
    }
    word = words.begin()[index];
    return true;
}

namespace {
bool parse_double(std::string_view text, double& value) {
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
    }
    if (text.empty()) {
        return false;
    }
    double parsed = 0;
    const auto [ptr, ec] = std::from_chars(text.data(), text.data() + text.size(), parsed);
    if (ec != std::errc() || ptr != text.data() + text.size() || !std::isfinite(parsed)) {
        return false;
    }
    value = parsed;
    return true;
}
} // namespace

bool Cursor::number(double& value) {
    if (!at_end() && !tokens[position].quoted && parse_double(tokens[position].text, value)) {
        ++position;
        return true;
    }
    expected("a number");
    return false;
}

bool Cursor::length(double& value) {
    double parsed = 0;
    const size_t at = position;
    if (!number(parsed)) {
        return false;
    }
    if (std::abs(parsed) > kMaxModelExtent) {
        position = at;
        last_expectation = "'" + tokens[at].text + "'" +
                           (at > 0 ? " after '" + tokens[at - 1].text + "'" : std::string()) +
                           " is beyond the size of a model: lengths and coordinates are at most "
                           "1e7 in magnitude";
        return false;
    }
    value = parsed;
    return true;
}

bool Cursor::angle(double& value) {
    double parsed = 0;
    const size_t at = position;
    if (!number(parsed)) {
        return false;
    }
    if (std::abs(parsed) > kMaxAngleDegrees) {
        position = at;
        last_expectation = "angle '" + tokens[at].text +
                           "' is out of range: angles are at most 1e6 degrees in magnitude";
        return false;
    }
    value = std::fmod(parsed, 360.0);
    return true;
}

bool Cursor::integer(int& value) {
    double parsed = 0;
    if (!at_end() && !tokens[position].quoted && parse_double(tokens[position].text, parsed) &&
        parsed == std::floor(parsed) && std::abs(parsed) < 2147483647.0) {
        value = static_cast<int>(parsed);
        ++position;
        return true;
    }
    expected("an integer");
    return false;
}

bool Cursor::string(std::string& value, bool allow_bare) {
    if (!at_end() && (tokens[position].quoted || (allow_bare && !tokens[position].comma))) {
        value = tokens[position].text;
        ++position;
        return true;
    }
    expected("a quoted string");
    return false;
}

bool Cursor::entity_list(EntityList& list) {
    std::string error_text, missing;
    size_t pos = position;
    EntityList parsed;
    ListParseOptions options;
    options.missing_text = &missing;
    if (!parse_entity_list(tokens, pos, parsed, error_text, options)) {
        last_expectation = error_text;
        return false;
    }
    if (!missing.empty()) {
        deferred_warnings.push_back(std::move(missing));
    }
    position = pos;
    list = std::move(parsed);
    return true;
}

void Cursor::flush_warnings() {
    for (const std::string& text : deferred_warnings) {
        warning(text);
    }
    deferred_warnings.clear();
}

void Cursor::optional_comma() {
    if (!at_end() && tokens[position].comma) {
        ++position;
    }
}

std::string Cursor::rest() const {
    std::string text;
    for (size_t i = position; i < tokens.size(); ++i) {
        if (!text.empty()) {
            text += ' ';
        }
        text += tokens[i].quoted ? "'" + tokens[i].text + "'" : tokens[i].text;
    }
    return text;
}

bool Cursor::fail(const std::string& text) {
    return error(text);
}

bool Cursor::expect_end() {
    if (at_end()) {
        flush_warnings();
        return true;
    }
    last_expectation = "unexpected '" + tokens[position].text + "'";
    return fail(last_expectation);
}

// ---- Registry
// ------------------------------------------------------------------------------------

namespace {
std::vector<RegisteredCommand>& registry() {
    static std::vector<RegisteredCommand> commands;
    return commands;
}

std::vector<std::string> split_words(std::string_view pattern) {
    std::vector<std::string> words;
    size_t i = 0;
    while (i < pattern.size()) {
        while (i < pattern.size() && pattern[i] == ' ') {
            ++i;
        }
        size_t end = i;
        while (end < pattern.size() && pattern[end] != ' ') {
            ++end;
        }
        if (end > i) {
            std::string word(pattern.substr(i, end - i));
            if (word != kListPlaceholder) {
                std::transform(word.begin(), word.end(), word.begin(), lower);
            }
            words.push_back(std::move(word));
        }
        i = end;
    }
    return words;
}
} // namespace

bool register_command(CommandSpec definition) {
    std::vector<std::string> words = split_words(definition.keyword);
    if (words.empty() || !definition.handler) {
        return false;
    }
    for (const RegisteredCommand& command : registry()) {
        if (command.words == words) {
            return false;
        }
    }
    RegisteredCommand command;
    command.words = std::move(words);
    command.definition = std::move(definition);
    registry().push_back(std::move(command));
    return true;
}

bool register_alias(const std::string& alias, const std::string& target) {
    const std::vector<std::string> alias_words = split_words(alias);
    const std::vector<std::string> target_words = split_words(target);
    const RegisteredCommand* original = nullptr;
    for (const RegisteredCommand& command : registry()) {
        if (command.words == alias_words || alias_words.empty()) {
            return false;
        }
        if (command.words == target_words) {
            original = &command;
        }
    }
    if (!original) {
        return false;
    }
    RegisteredCommand command;
    command.words = alias_words;
    command.definition = original->definition;
    command.alias = true;
    registry().push_back(std::move(command));
    return true;
}

std::vector<std::string> registered_commands() {
    std::vector<std::string> patterns;
    for (const RegisteredCommand& command : registry()) {
        if (command.alias) {
            continue;
        }
        std::string pattern;
        for (const std::string& word : command.words) {
            pattern += (pattern.empty() ? "" : " ") + word;
        }
        patterns.push_back(pattern);
    }
    std::sort(patterns.begin(), patterns.end());
    return patterns;
}

const std::vector<RegisteredCommand>& all_commands() {
    return registry();
}

void clear_commands() {
    registry().clear();
}

DispatchResult dispatch(const std::vector<Token>& tokens) {
    DispatchResult result;
    std::vector<const RegisteredCommand*> alive;
    for (const RegisteredCommand& command : registry()) {
        alive.push_back(&command);
    }

    // Best complete match so far: the one with the most pattern words, since matching goes on
    // as long as some pattern is longer.
    const RegisteredCommand* best = nullptr;
    size_t best_pos = 0;
    std::vector<size_t> best_lists;

    size_t pos = 0;
    size_t depth = 0;
    std::vector<size_t> list_starts;
    std::vector<std::string_view> words; // literal words wanted at the last position looked at
    std::vector<std::string_view> exact_words; // words of aliases: matched in full only
    bool list_wanted = false;
    while (!alive.empty()) {
        std::vector<const RegisteredCommand*> longer;
        for (const RegisteredCommand* command : alive) {
            if (command->words.size() == depth) {
                best = command;
                best_pos = pos;
                best_lists = list_starts;
            } else {
                longer.push_back(command);
            }
        }
        alive = std::move(longer);
        if (alive.empty()) {
            break;
        }
        words.clear();
        exact_words.clear();
        list_wanted = false;
        for (const RegisteredCommand* command : alive) {
            const std::string& word = command->words[depth];
            // An alias word only adds itself where no real pattern has the same word here.
            const bool alias_word =
                command->alias &&
                std::none_of(alive.begin(), alive.end(), [&](const RegisteredCommand* other) {
                    return !other->alias && other->words[depth] == word;
                });
            if (word == kListPlaceholder) {
                list_wanted = true;
            } else if (alias_word) {
                if (std::find(exact_words.begin(), exact_words.end(), word) == exact_words.end()) {
                    exact_words.push_back(word);
                }
            } else if (std::find(words.begin(), words.end(), word) == words.end()) {
                words.push_back(word);
            }
        }
        if (pos >= tokens.size()) {
            break;
        }
        const Token& token = tokens[pos];
        // Whole words first (patterns, then aliases), then prefixes of pattern words.
        int found = -1;
        if (!token.quoted && !token.comma) {
            for (size_t i = 0; i < words.size() && found < 0; ++i) {
                if (iequals(token.text, words[i])) {
                    found = static_cast<int>(i);
                }
            }
            for (size_t i = 0; i < exact_words.size() && found < 0; ++i) {
                if (iequals(token.text, exact_words[i])) {
                    words.push_back(exact_words[i]);
                    found = static_cast<int>(words.size()) - 1;
                }
            }
            if (found < 0) {
                found = match_word(token.text, words);
            }
        }
        if (found == -2) {
            std::string candidates;
            for (std::string_view word : words) {
                if (keyword_matches(token.text, word)) {
                    candidates += (candidates.empty() ? "" : ", ") + std::string(word);
                }
            }
            result.error_text = "'" + token.text + "' is ambiguous: could be " + candidates;
            result.ambiguous = true;
            return result;
        }
        if (found >= 0) {
            const std::string_view word = words[static_cast<size_t>(found)];
            std::erase_if(alive, [&](const RegisteredCommand* command) {
                return command->words[depth] != word;
            });
            ++pos;
            ++depth;
            continue;
        }
        if (list_wanted && starts_entity_list(tokens, pos)) {
            EntityList list;
            std::string list_error;
            size_t list_pos = pos;
            ListParseOptions options;
            options.report_missing = false;
            if (parse_entity_list(tokens, list_pos, list, list_error, options)) {
                std::erase_if(alive, [&](const RegisteredCommand* command) {
                    return command->words[depth] != kListPlaceholder;
                });
                list_starts.push_back(pos);
                pos = list_pos;
                ++depth;
                continue;
            }
            if (!best) {
                result.error_text = list_error;
                return result;
            }
        }
        break;
    }
    result.matched_words = depth;
    if (!best) {
        if (tokens.empty()) {
            return result;
        }
        if (depth == 0) {
            result.error_text = "Unknown command '" + tokens[0].text + "'";
            return result;
        }
        std::string wanted;
        for (size_t i = 0; i < words.size(); ++i) {
            wanted += (i == 0 ? "" : ", ") + std::string(words[i]);
        }
        if (list_wanted) {
            wanted += std::string(wanted.empty() ? "" : ", ") + "an entity list";
        }
        std::string said;
        for (size_t i = 0; i < pos && i < tokens.size(); ++i) {
            said += (i == 0 ? "" : " ") + tokens[i].text;
        }
        result.error_text = "Incomplete or unknown command '" + said +
                            (pos < tokens.size() ? " " + tokens[pos].text : std::string()) +
                            "': expected " + wanted + " after '" + said + "'";
        return result;
    }
    result.command = best;
    result.position = best_pos;
    result.list_starts = std::move(best_lists);
    return result;
}

} // namespace tarvo::kernel
