/// The files below a folder of a Windows profile, in the order in which the file system lists them, a subfolder's where
/// it is met. Names that begin with "." are passed over, with all that stands below them: on Windows no program hides
/// its files that way. A link counts as the file it leads to, if that lies inside the source; linked folders are not
/// walked.
#pragma once

#include "services/source_files.h"

#include <QString>

#include <atomic>

class profile_files
{
public:
    /// In: the folder, with a slash behind. One that does not open, or leads out of the source, has no files. Boundary
    /// and flag outlive the walk.
    profile_files(const source_boundary &source, const QString &folder, const std::atomic<bool> &cancel_flag);

    /// Steps to the next file. Out: false behind the last one and when the flag is raised.
    bool next();
    /// The file in hand.
    const QString &path() const { return current_path; }
    QString name() const { return current_path.mid(current_path.lastIndexOf(QLatin1Char('/')) + 1); }

private:
    bool is_file() const;

    const source_boundary &source;
    QString folder;
    const std::atomic<bool> &is_cancelled;
    folder_walk walk;
    QString current_path;
};
