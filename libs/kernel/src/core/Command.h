#pragma once
// The command registry and the argument cursor of the command language.
//
// A command is registered under a pattern of one or more words, e.g. "create box",
// "create cylinder", "delete mesh", "delete", "move", or with the placeholder "<list>" for an
// entity list: "<list> size", "<list> scheme". Patterns hold only literal words and "<list>";
// numbers are the handler's business ("block" is the pattern of "block 3 add volume 1").
//
// Dispatch of one line: the runner walks the patterns word by word. At each position a token
// matches a literal word when it equals it, or is a prefix of at least 3 letters of exactly one of
// the words that the remaining patterns have at that position (case-insensitive); a prefix of
// two or more candidates is rejected as ambiguous. "<list>" matches an entity list. Of all
// patterns matched completely, the longest wins ("delete mesh volume 1" goes to "delete mesh",
// "delete volume 1" to "delete"). The handler then gets a Cursor positioned after the pattern;
// lists matched by "<list>" are in Cursor::pattern_lists(), in order.
//
// A handler returns true on success. On failure it reports why with Cursor::fail() or error()
// and returns false; if it returns false without saying why, the runner prints a generic error
// built from the cursor's last expectation ("expected a number after 'radius'"). Either way the
// user sees exactly one "ERROR: " line and the error count rises by one. If the command is
// undoable the runner also rolls the model back (see Undo.h).
//
// Where to register: in a module function (e.g. register_geometry_commands()) that
// init_modules() in KernelApi.cpp calls; add one line there. Not from static initialisers:
// the kernel is a static library, and the linker drops objects that nothing references. The
// registry is emptied by destroy() and filled again by the next init().
//
// Threading: kernel thread only.

#include "core/EntityList.h"

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace tarvo::kernel {

// The size of a model: geometry whose lengths or coordinates go beyond this (in model units)
// is refused. OpenCASCADE's tolerances are absolute (1e-7), so a model far larger loses its
// precision, and overflowing numbers make its algorithms loop or crash.
inline constexpr double kMaxModelExtent = 1e7;
// A larger angle is a mistake, not a number of turns; it would also lose all its precision.
inline constexpr double kMaxAngleDegrees = 1e6;

struct Token {
    std::string text;    // without the quotes for a string
    bool quoted = false; // was in single or double quotes
    bool comma = false;  // a separating ','
    size_t offset = 0;   // position in the line, for messages
};

// Splits one line into tokens. Blanks separate, ',' is a token of its own, quotes make one token,
// '#' outside quotes ends the line. False (and `error_text` set) on an unterminated quote.
bool tokenize(std::string_view line, std::vector<Token>& tokens, std::string& error_text);

// Case-insensitive: `token` is `word` or a prefix of it at least 3 letters long.
bool keyword_matches(std::string_view token, std::string_view word);

class Cursor {
public:
    explicit Cursor(std::vector<Token> tokens, size_t position = 0);

    // Consumes the next token if it matches `word` (full word or prefix of >= 3 letters,
    // case-insensitive). Does not consume anything otherwise.
    bool keyword(std::string_view word);

    // Consumes the next token if it matches exactly one of `words`; gives its index. Exact
    // matches beat prefixes; a prefix of several words matches none (and the expectation says it
    // is ambiguous).
    bool choice(std::initializer_list<std::string_view> words, int& index);
    bool choice(const std::vector<std::string>& words, int& index);
    // The same, giving the canonical word.
    bool choice(std::initializer_list<std::string_view> words, std::string& word);

    // Numbers: a plain finite decimal ("2", "-1.5e3"). integer() refuses fractions.
    bool number(double& value);
    bool integer(int& value);
    // Numbers of geometry. length(): a length, coordinate, distance or component of a direction,
    // at most kMaxModelExtent in magnitude. angle(): degrees, at most kMaxAngleDegrees in
    // magnitude, given back reduced to (-360, 360). Beyond the limit the expectation says so.
    bool length(double& value);
    bool angle(double& value);
    // A quoted string; with `allow_bare`, also a single unquoted word.
    bool string(std::string& value, bool allow_bare = false);
    // An entity list (grammar in EntityList.h). False on a syntax error; unknown ids are skipped,
    // which is no failure, so the list may come back empty. The warning about them waits until
    // the line has parsed (expect_end(), or the handler's success): in "scale volume 1 2" the 2
    // is a mistake of syntax, not a volume to report.
    bool entity_list(EntityList& list);
    // Prints the warnings that entity_list() held back.
    void flush_warnings();
    // Skips a ',' if there is one.
    void optional_comma();

    bool at_end() const { return position >= tokens.size(); }
    // The next token, or nullptr at the end.
    const Token* peek() const { return at_end() ? nullptr : &tokens[position]; }
    // Everything not consumed yet, joined by blanks; for messages.
    std::string rest() const;
    size_t pos() const { return position; }
    void set_pos(size_t p) { position = p; }

    // Prints "ERROR: <text>" (once per command, see Session.h) and returns false.
    bool fail(const std::string& text);
    // Fails with "unexpected '<token>'" unless at the end; for handlers that are done parsing.
    // At the end, prints the held-back warnings.
    bool expect_end();

    // What the last failed accessor wanted, e.g. "expected a number, found 'abc'".
    const std::string& expectation() const { return last_expectation; }

    // Lists matched by "<list>" placeholders of the command pattern.
    const std::vector<EntityList>& pattern_lists() const { return lists; }
    std::vector<EntityList>& pattern_lists() { return lists; }

    // The whole line's tokens (for handlers that print what they did).
    const std::vector<Token>& all_tokens() const { return tokens; }

private:
    // Messages are written into the reused last_expectation: handlers try accessor after
    // accessor, and most attempts fail, so a failure must not cost an allocation.
    void expected(std::string_view what, bool quoted = false);
    bool choice_of(const std::string_view* words, size_t count, int& index);

    std::vector<Token> tokens;
    size_t position = 0;
    std::string last_expectation;
    std::vector<EntityList> lists;
    std::vector<std::string> deferred_warnings;
};

using CommandHandler = std::function<bool(Cursor&)>;

struct CommandSpec {
    std::string keyword;      // pattern, e.g. "create box", "<list> size"
    CommandHandler handler;   // parses the rest and runs the command
    bool undoable = true;     // snapshot before, roll back on failure, push on undo stack
    std::string help_summary; // one line shown by `help`, e.g. "create box <dx> [<dy> <dz>]"
};

// False (and nothing changed) if a command with the same pattern is already registered or the
// pattern is empty.
bool register_command(CommandSpec definition);

// Another spelling of a registered pattern ("colour" for "color"). An alias matches only when
// typed in full, so it never makes a prefix ambiguous ("col" still means "color"). False if
// `target` is not registered or `alias` is taken.
bool register_alias(const std::string& alias, const std::string& target);

// All registered patterns, sorted, for help and completion.
std::vector<std::string> registered_commands();

} // namespace tarvo::kernel
