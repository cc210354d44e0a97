/// ESE files with one table, and what the library alone reads of such a file. A call that fails leaves an empty handle,
/// on which the next ones fail.
#pragma once

#include "evidence/ese_file.h"
#include "windows/ese_handles.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <vector>

inline void write_table(const QString &path, const char *name, const std::vector<evidence::ese_column> &columns,
                        const std::vector<std::vector<evidence::ese_value>> &records,
                        const evidence::ese_file_options &options = {})
{
    evidence::ese_file file(path, options);
    evidence::ese_table table = file.add_table(name, columns);
    for (const std::vector<evidence::ese_value> &record : records) {
        table.add_record(record);
    }
    file.finish();
}

inline QByteArray content_of(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline ese_file_handle opened_file(const QString &path)
{
    libesedb_file_t *file = nullptr;
    libesedb_file_initialize(&file, nullptr);
    libesedb_file_open(file, QFile::encodeName(path).constData(), libesedb_get_access_flags_read(), nullptr);
    return ese_file_handle(file);
}

inline ese_table_handle table_of(libesedb_file_t *file, const QByteArray &name)
{
    libesedb_table_t *table = nullptr;
    libesedb_file_get_table_by_utf8_name(file, reinterpret_cast<const uint8_t *>(name.constData()),
                                         static_cast<size_t>(name.size()), &table, nullptr);
    return ese_table_handle(table);
}

inline int record_count(const ese_table_handle &table)
{
    int count = -1;
    libesedb_table_get_number_of_records(table.get(), &count, nullptr);
    return count;
}

inline ese_record_handle record_at(const ese_table_handle &table, int index)
{
    libesedb_record_t *record = nullptr;
    libesedb_table_get_record(table.get(), index, &record, nullptr);
    return ese_record_handle(record);
}

/// A null QByteArray is an absent value.
inline QByteArray raw_value(const ese_record_handle &record, int entry)
{
    size_t size = 0;
    if (libesedb_record_get_value_data_size(record.get(), entry, &size, nullptr) != 1) {
        return QByteArray();
    }
    QByteArray bytes(static_cast<int>(size), '\0');
    libesedb_record_get_value_data(record.get(), entry, reinterpret_cast<uint8_t *>(bytes.data()), size, nullptr);
    return bytes;
}
