#pragma once
// The translation of a client's key event into what the interactor expects: the client sends a
// Qt key code and the text of the key, the view wants a character code and an X-style key
// symbol. The text decides when it is a printable ASCII character; otherwise the key code does.
//
// Threads: pure functions, any thread.

#include <QString>

struct KeySymbol {
    char key_code = 0;
    // Null when neither the text nor the key code has a symbol; static storage otherwise.
    const char* key_sym = nullptr;
};

// `text` is the key's text (its first UTF-16 unit counts), `key` a Qt::Key value.
KeySymbol key_symbol(const QString& text, int key);
