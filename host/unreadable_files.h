/// What of the source this program itself could not read: while it recognises the source, and looks for the files of a
/// backup. What the plug-in could not read stands in the log.
#pragma once

#include <QStringList>

/// To be called before a source is looked at.
void listen_for_unreadable_files();

/// Out: each with the reason, "/evidence/Users/anna: Permission denied"; each once.
const QStringList &unreadable_files();
