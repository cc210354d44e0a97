/// What the program writes to standard output and standard error, in UTF-8, and how evidence text is made harmless for
/// a terminal.
#pragma once

#include <QString>

bool stdout_is_terminal();

/// Columns of the terminal behind standard output; 80 where that is not known.
int terminal_width();

/// Writes the text as it stands. Failures are kept for output_failed().
void print(const QString &text);
void print_line(const QString &text = QString());
void flush_output();

/// Flushes standard output. Out: whether anything written to it was lost (a full disk, say).
bool output_failed();

/// One line on standard error: the program's name and the text, escaped.
void print_error(const QString &sentence);

/// Whether the character could move the cursor, change the terminal or turn the reading direction.
bool is_unsafe_for_terminal(QChar character);

/// The text with every such character shown as an escape ("\n", "\x1b", "\u202e"). Backslashes stay single: Windows
/// paths are to be readable, and where every character counts there are --csv and --jsonl.
QString escaped_for_terminal(const QString &text);
