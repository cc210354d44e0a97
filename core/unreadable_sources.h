/// What stands in the evidence source and cannot be read: no permission, a broken medium. To the extraction it is like
/// something that is not there, so it is told: "nothing found" would be a false statement.
#pragma once

#include <QByteArray>
#include <QString>

/// In: the path, that of the folder where a closed folder keeps all below it from being read; the system's error text.
using unreadable_source_listener = void (*)(const QString &path, const QString &error_text);

/// The listener is told each path once from now on, in the thread that reads. Null: nobody is told.
void tell_unreadable_sources_to(unreadable_source_listener listener);

/// From now on the listener is told each path once more.
void tell_unreadable_sources_anew();

/// What was tried.
enum class source_access
{
    look_up, ///< whether something is there, all links followed
    open,
    read, ///< what is open already: any error of that is told
    attributes
};

/// To be called behind the call that failed; leaves errno as it is. In: what was to be opened or read, in the file
/// system's bytes, and the errno of that. An error that says that there is no such thing is passed over, and so is what
/// a link leads to in a folder that may not be entered: that may be the examiner's.
void note_unreadable_source(const QByteArray &path, int error, source_access tried);
