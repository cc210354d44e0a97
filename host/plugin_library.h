/// The plug-in, loaded as any host loads it: by its one exported function.
#pragma once

#include "core/mail.h"

#include <QString>

#include <memory>

/// "libmail.so" beside this program.
QString default_plugin_file();

/// Loads the library, which stays loaded until the program ends, and creates the plug-in object. Throws unusable_input
/// where the file does not load or is no plug-in.
std::unique_ptr<mail> load_plugin(const QString &file);
