/// The result database, read as a host reads it: read-only, nothing left beside it.
#pragma once

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QStringList>

/// Where a run with this result directory keeps its database.
QString result_database_path(const QString &result_directory);

/// In: the result directory of a run, any folder on the way down from it, or the database itself. Out: the database.
/// Throws unusable_input where there is none.
QString find_result_database(const QString &given);

/// Whether the file is missing, empty or begins as a SQLite database does.
bool is_sqlite_or_empty(const QString &path);

/// One at a time.
class result_database
{
public:
    /// Throws unusable_input where the file cannot be opened or is no database.
    explicit result_database(const QString &path);
    ~result_database();
    result_database(const result_database &) = delete;
    result_database &operator=(const result_database &) = delete;

    const QString &path() const { return database_path; }
    /// Names of the tables in the order of their creation.
    const QStringList &tables() const { return table_names; }
    QStringList columns(const QString &table) const;

    qint64 row_count(const QString &table) const;

    /// Rows of the table that a source of the case brought; 0 where the table has none or does not exist.
    qint64 rows_of_source(const QString &table, int source_number) const;

    /// Runs a query, forward only. Throws unusable_input where it fails.
    QSqlQuery select(const QString &statement) const;
    /// To be called when a query has no further row. Throws unusable_input where that was because of a failure.
    void check_ended_well(const QSqlQuery &query) const;

private:
    [[noreturn]] void refuse(const QString &reason) const;

    const QString database_path;
    QSqlDatabase database;
    QStringList table_names;
};

/// The name as an SQL identifier.
QString quoted_name(const QString &name);
