#pragma once

#include <QStringList>

/// Runs the plug-in over one evidence source and tells what came of it.
/// In: the arguments behind "run". Out: the exit code. Throws unusable_input.
int command_run(const QStringList &arguments);
