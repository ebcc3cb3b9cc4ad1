// Fuzz target of the command language's front half: one input is one command line (variables
// already substituted). It is tokenized, dispatched over the session's own commands and a set
// of module-shaped patterns, matched against the planned commands of the reference, and then
// read through the cursor: at every token each accessor is tried in turn, as handlers do. Nothing
// is executed. Beyond crashes and sanitizer faults it checks:
//  - tokens tile the line as the grammar says (offsets rising, commas alone, quoted text is
//    the text between the quotes, bare words hold no blank, quote, comma or '#');
//  - dispatch and the cursor never point past the tokens, and an accessor that refuses leaves
//    the cursor where it was and says what it expected;
//  - numbers come back finite, lengths and angles inside their limits.

#include "FuzzCatalog.h"
#include "core/Command.h"
#include "core/CommandRegistry.h"
#include "core/Runner.h"

#include <cctype>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace tarvo::kernel;

[[noreturn]] void fault(const char* what, std::string_view line) {
    std::fprintf(stderr, "fuzz_command: %s\nline: %.*s\n", what, static_cast<int>(line.size()),
                 line.data());
    __builtin_trap();
}

void register_once() {
    static const bool done = [] {
        fuzz_support::FuzzCatalog::installed();
        register_session_commands();
        const auto none = [](Cursor&) { return true; };
        for (const char* pattern :
             {"create box", "create cylinder", "create sphere", "move", "delete", "delete mesh",
              "import step", "export step", "<list> name", "<list> size", "<list> scheme",
              "list <list>", "list model", "subtract", "webcut", "color", "compress ids"}) {
            register_command({pattern, none, true, pattern});
        }
        register_alias("colour", "color");
        return true;
    }();
    (void)done;
}

void check_tokens(std::string_view line, const std::vector<Token>& tokens) {
    size_t next = 0; // no token may start before the end of the previous one
    for (const Token& token : tokens) {
        if (token.offset < next || token.offset >= line.size()) {
            fault("token offsets out of order", line);
        }
        if (token.comma) {
            if (token.text != "," || token.quoted || line[token.offset] != ',') {
                fault("bad comma token", line);
            }
            next = token.offset + 1;
        } else if (token.quoted) {
            const char quote = line[token.offset];
            const size_t end = token.offset + 1 + token.text.size();
            if ((quote != '\'' && quote != '"') || end >= line.size() || line[end] != quote ||
                line.substr(token.offset + 1, token.text.size()) != token.text) {
                fault("quoted token is not the text between its quotes", line);
            }
            next = end + 1;
        } else {
            if (token.text.empty() || line.substr(token.offset, token.text.size()) != token.text) {
                fault("bare token is not its text", line);
            }
            for (char c : token.text) {
                if (std::isspace(static_cast<unsigned char>(c)) || c == ',' || c == '#' ||
                    c == '\'' || c == '"') {
                    fault("bare token holds a separator", line);
                }
            }
            next = token.offset + token.text.size();
        }
    }
}

// Tries one accessor; a refusal must leave the cursor in place and explain itself.
template <class Accessor> bool attempt(Cursor& cursor, std::string_view line, Accessor accessor) {
    const size_t at = cursor.pos();
    if (accessor()) {
        if (cursor.pos() <= at || cursor.pos() > cursor.all_tokens().size()) {
            fault("an accessor succeeded without moving forward", line);
        }
        return true;
    }
    if (cursor.pos() != at || cursor.expectation().empty()) {
        fault("an accessor refused but moved or said nothing", line);
    }
    return false;
}

void walk(Cursor& cursor, std::string_view line) {
    while (!cursor.at_end()) {
        double number = 0, length = 0, angle = 0;
        int integer = 0, index = 0;
        std::string text;
        EntityList list;
        if (attempt(cursor, line, [&] { return cursor.integer(integer); }) ||
            attempt(cursor, line, [&] { return cursor.angle(angle); }) ||
            attempt(cursor, line, [&] { return cursor.length(length); }) ||
            attempt(cursor, line, [&] { return cursor.number(number); }) ||
            attempt(cursor, line, [&] { return cursor.entity_list(list); }) ||
            attempt(cursor, line, [&] { return cursor.keyword("radius"); }) ||
            attempt(cursor, line,
                    [&] {
                        return cursor.choice({"x", "y", "z", "axis", "about"}, index);
                    }) ||
            attempt(cursor, line,
                    [&] {
                        return cursor.choice({"top", "tolerance"}, text);
                    }) ||
            attempt(cursor, line, [&] { return cursor.string(text); })) {
            if (!std::isfinite(number) || std::abs(length) > kMaxModelExtent ||
                !(std::abs(angle) < 360)) {
                fault("a number out of its limits came back", line);
            }
            continue;
        }
        const size_t at = cursor.pos();
        cursor.optional_comma();
        if (cursor.pos() == at) {
            cursor.set_pos(at + 1); // a word no accessor wants: a handler would fail here
        }
    }
    cursor.flush_warnings();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    register_once();
    const std::string_view line(reinterpret_cast<const char*>(data), size);
    std::vector<Token> tokens;
    std::string error_text;
    if (!tokenize(line, tokens, error_text)) {
        if (!tokens.empty() || error_text.empty()) {
            fault("a refused line left tokens or no reason", line);
        }
        return 0;
    }
    check_tokens(line, tokens);

    const DispatchResult match = dispatch(tokens);
    if (match.command) {
        if (match.position > tokens.size()) {
            fault("dispatch points past the tokens", line);
        }
        for (size_t start : match.list_starts) {
            if (start >= match.position) {
                fault("a matched list starts after the pattern", line);
            }
        }
    } else if (match.error_text.empty() && !tokens.empty()) {
        fault("dispatch found nothing and said nothing", line);
    }
    const PlannedCommand planned = planned_command(tokens);
    if (planned.words > 0 && planned.heading.empty()) {
        fault("a planned command without a heading", line);
    }

    Cursor cursor(tokens, match.command ? match.position : 0);
    walk(cursor, line);
    return 0;
}
