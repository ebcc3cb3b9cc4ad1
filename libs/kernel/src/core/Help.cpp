#include "core/CommandRegistry.h"
#include "core/ListParser.h"
#include "core/Runner.h"

#include <algorithm>
#include <sstream>

namespace tarvo::kernel {

namespace {
// The reference page, generated from docs/commands.md at build time.
#include "CommandReference.inc"

std::vector<std::string> words_of(std::string_view text) {
    std::vector<std::string> words;
    std::istringstream in{std::string(text)};
    std::string word;
    while (in >> word) {
        words.push_back(word);
    }
    return words;
}

// Whether the topic's words name the command whose heading words are `heading`: each topic word
// matches the heading word at its place (full word or prefix of >= 3 letters). A heading that
// starts with "<list>" is also matched from its second word ("help size" finds "<list> size").
bool topic_matches(const std::vector<std::string>& topic, const std::vector<std::string>& heading) {
    for (size_t start = 0; start < 2 && start < heading.size(); ++start) {
        if (start == 1 && heading[0] != "<list>") {
            break;
        }
        if (topic.size() > heading.size() - start) {
            continue;
        }
        bool all = true;
        for (size_t i = 0; i < topic.size() && all; ++i) {
            all = keyword_matches(topic[i], heading[start + i]);
        }
        if (all) {
            return true;
        }
    }
    return false;
}
} // namespace

std::string_view command_reference() {
    return kCommandReference;
}

namespace {
// Headings of the reference sections whose text starts with "Not built yet.", as words.
const std::vector<std::vector<std::string>>& planned_headings() {
    static const std::vector<std::vector<std::string>> headings = [] {
        std::vector<std::vector<std::string>> found;
        std::istringstream in{std::string(kCommandReference)};
        std::string line, heading;
        while (std::getline(in, line)) {
            if (line.starts_with("### ")) {
                heading = line.substr(4);
            } else if (!heading.empty() && !line.empty()) {
                if (line.starts_with("Not built yet.")) {
                    found.push_back(words_of(heading));
                }
                heading.clear();
            }
        }
        return found;
    }();
    return headings;
}
} // namespace

namespace {
// Whether every literal word of the heading stands somewhere in the line. A heading can only
// match when it does, and this runs on every command: the entity lists of "<list> ..."
// headings, whose parse resolves ids against the model, are parsed only for lines that might.
bool words_present(const std::vector<std::string>& heading, const std::vector<Token>& tokens) {
    return std::all_of(heading.begin(), heading.end(), [&](const std::string& word) {
        return word == kListPlaceholder ||
               std::any_of(tokens.begin(), tokens.end(), [&](const Token& token) {
                   return !token.quoted && !token.comma && keyword_matches(token.text, word);
               });
    });
}
} // namespace

PlannedCommand planned_command(const std::vector<Token>& tokens) {
    PlannedCommand best;
    for (const std::vector<std::string>& heading : planned_headings()) {
        if (heading.size() <= best.words || !words_present(heading, tokens)) {
            continue;
        }
        size_t pos = 0, words = 0;
        for (; words < heading.size() && pos < tokens.size(); ++words) {
            const Token& token = tokens[pos];
            if (heading[words] == kListPlaceholder) {
                EntityList list;
                std::string ignored;
                ListParseOptions options;
                options.report_missing = false;
                if (!parse_entity_list(tokens, pos, list, ignored, options)) {
                    break;
                }
            } else if (!token.quoted && !token.comma &&
                       keyword_matches(token.text, heading[words])) {
                ++pos;
            } else {
                break;
            }
        }
        if (words == heading.size() && words > best.words) {
            best.words = words;
            best.heading.clear();
            for (const std::string& word : heading) {
                best.heading += (best.heading.empty() ? "" : " ") + word;
            }
        }
    }
    return best;
}

std::string help_text(std::string_view topic_text) {
    const std::vector<std::string> topic = words_of(topic_text);
    if (topic.empty()) {
        std::string text = "Commands (help <command> for details):\n";
        std::vector<std::pair<std::string, std::string>> lines;
        for (const RegisteredCommand& command : all_commands()) {
            if (command.alias) {
                continue;
            }
            std::string pattern;
            for (const std::string& word : command.words) {
                pattern += (pattern.empty() ? "" : " ") + word;
            }
            lines.emplace_back(pattern, command.definition.help_summary.empty()
                                            ? pattern
                                            : command.definition.help_summary);
        }
        std::sort(lines.begin(), lines.end());
        for (const auto& [pattern, summary] : lines) {
            text += "  " + summary + "\n";
        }
        return text;
    }

    // Sections of the reference: a line "### <command words>" up to the next heading.
    std::string text;
    std::istringstream in{std::string(command_reference())};
    std::string line;
    bool inside = false;
    while (std::getline(in, line)) {
        if (line.starts_with("#")) {
            inside = false;
            if (line.starts_with("### ")) {
                const std::string heading = line.substr(4);
                if (topic_matches(topic, words_of(heading))) {
                    inside = true;
                    if (!text.empty() && !text.ends_with("\n\n")) {
                        text += "\n";
                    }
                    text += heading + "\n";
                }
            }
            continue;
        }
        if (inside) {
            text += line + "\n";
        }
    }
    if (!text.empty()) {
        while (text.ends_with("\n\n")) {
            text.pop_back();
        }
        return text;
    }
    // Commands without a section yet: their one-line summary.
    for (const RegisteredCommand& command : all_commands()) {
        if (topic_matches(topic, command.words)) {
            text += (command.definition.help_summary.empty() ? command.words.front()
                                                             : command.definition.help_summary) +
                    "\n";
        }
    }
    return text;
}

} // namespace tarvo::kernel
