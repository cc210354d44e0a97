#pragma once

#include <QStringList>

/// Prints an enciphered log as plain lines; a record that does not decipher gives a line that says so.
/// In: the arguments behind "decipher". Out: the exit code. Throws unusable_input.
int command_decipher(const QStringList &arguments);
