/// What the catalog of an ESE file tells of one table and the library does not hand out: the codepages of its columns
/// and the root of its tree of long values.
#pragma once

#include "windows/ese_handles.h"

#include <QByteArray>
#include <QHash>

class ese_table_layout
{
public:
    /// Reads the catalog as far as it can be read; a table that it does not name has neither codepages nor a tree. A
    /// table made after a template has the columns of the template beside its own.
    ese_table_layout(libesedb_file_t *file, const QByteArray &table_name);

    /// In: a column's name. Out: the number of its codepage; 0 for none known.
    quint32 codepage(const QByteArray &column_name) const { return codepages.value(column_name, 0); }
    /// Out: the page of the root; 0 for a table without long values.
    quint32 long_value_root() const { return root_page; }

private:
    QHash<QByteArray, quint32> codepages;
    quint32 root_page = 0;
};
