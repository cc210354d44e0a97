/// The host's object that knows where the files of an iOS device backup lie.
#pragma once

#include <QString>

class ios_uid_backup_parser
{
public:
    virtual ~ios_uid_backup_parser() = default;

    /// In: the path of a file as the device knows it, its domain in front. Out: the path of that file in the backup,
    /// or an empty text when the backup does not hold it.
    virtual QString get_backup_file_path(QString domain_path) = 0;
};
