#pragma once

#include <QStringList>

/// Shows a result database: its tables, or the rows of one.
/// In: the arguments behind "show". Out: the exit code. Throws unusable_input.
int command_show(const QStringList &arguments);
