/// One table of a store.vol, read through its reader of specific_table_readers.h.
#pragma once

#include "windows/specific_table.h"

/// Out: the records of the table, in stored order; none when file or table cannot be read. They stay in the reader's
/// list until it reads again.
template <typename record>
const QList<record> &records_of(const QString &file, const char *table_name, specific_table &reader,
                                QList<record> specific_table::*list)
{
    (reader.*list).clear();
    reader.start_parsing(file, QString::fromLatin1(table_name));
    return reader.*list;
}
