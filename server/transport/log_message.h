#pragma once
// The process's log: one block on standard output per call, a time-stamp line, then the text with
// every line indented by two blanks, then an empty line. Callable from any thread; each block is
// written and flushed in one piece.

#include <QString>

void log_message(const QString& text);
