#pragma once

#include <QStringList>

/// Lists the schemes, their tabs and what each tab holds.
/// In: the arguments behind "tabs". Out: the exit code. Throws unusable_input.
int command_tabs(const QStringList &arguments);
