/// What kind of source a folder is, told from the names in it. Only lists and stats folders.
#pragma once

#include "host/scheme_table.h"

#include <QString>
#include <QStringList>

struct recognised_source
{
    const scheme_entry *scheme = nullptr;
    QString root;             ///< what the plug-in gets as source root; ends in a slash
    QString source_type;      ///< what the plug-in gets as internal source type
    QStringList home_folders; ///< names of the home folders below root + "Users/", sorted
};

/// In: the absolute, clean path of a folder that exists; the scheme's internal name or "auto"; whether the folder is
/// one home folder. Throws unusable_input where the scheme is unknown, where no scheme or more than one fits, and where
/// a home folder does not lie below a folder named "Users".
recognised_source recognise_source(const QString &source, const QString &scheme_name, bool is_home);
