/// Where a run writes: the checks before the first write, and the first write itself.
#pragma once

#include <QString>

struct output_places
{
    QString result_directory; ///< absolute and clean
    QString log_file;         ///< absolute and clean
    bool replace_log;         ///< the host's own log, made anew by each run; a log that the user named is continued
};

/// In: the options' values as given; an empty log means the host's own in the result folder. Out: the places, of which
/// nothing exists yet that did not before. Throws unusable_input where one cannot be written to, lies in the source
/// (through links too), or where the source lies in the folder that the plug-in empties.
output_places checked_output_places(const QString &result_option, const QString &log_option, const QString &source);

/// Creates the result folder and an empty log, or the named log if it is missing. Throws unusable_input, with nothing
/// left behind, where that fails.
void create_output_places(const output_places &places);
