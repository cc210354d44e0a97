#pragma once

#include <QStringList>

/// mail-extract report: the arguments behind the command's name; the exit code. Throws unusable_input.
int command_report(const QStringList &arguments);
