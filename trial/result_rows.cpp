#include "trial/result_rows.h"

#include "evidence/files.h"
#include "trial/workplace.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <memory>

namespace trial {

namespace {

namespace fs = std::filesystem;

// Numbers that count rows of the run, and times that a copied file does not keep.
constexpr std::array<const char *, 6> passing_columns = {"INT",
                                                         "relationtableint",
                                                         "date_added",
                                                         "creation_timestamp",
                                                         "content_creation_date",
                                                         "content_modification_date"};

using database_handle = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;
using statement_handle = std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)>;

[[noreturn]] void fail(const fs::path &database, sqlite3 *handle)
{
    throw evidence::evidence_error(QStringLiteral("The result database %1 cannot be read: %2.")
                                       .arg(text_of(database), QString::fromUtf8(sqlite3_errmsg(handle))));
}

// For writing, as the next run opens it: only so is the journal of an ended one rolled back.
database_handle open(const fs::path &path)
{
    sqlite3 *handle = nullptr;
    const int status = sqlite3_open_v2(path.c_str(), &handle, SQLITE_OPEN_READWRITE, nullptr);
    database_handle database(handle, &sqlite3_close);
    if (status != SQLITE_OK) {
        fail(path, handle);
    }
    return database;
}

template <typename row_function>
void for_each_row(const fs::path &path, sqlite3 *database, const QByteArray &query, const row_function &take)
{
    sqlite3_stmt *prepared = nullptr;
    int status = sqlite3_prepare_v2(database, query.constData(), -1, &prepared, nullptr);
    const statement_handle statement(prepared, &sqlite3_finalize);
    while (status == SQLITE_OK || status == SQLITE_ROW) {
        status = sqlite3_step(prepared);
        if (status == SQLITE_ROW) {
            take(prepared);
        }
    }
    if (status != SQLITE_DONE) {
        fail(path, database);
    }
}

QByteArray column_text(sqlite3_stmt *statement, int column)
{
    return QByteArray(reinterpret_cast<const char *>(sqlite3_column_text(statement, column)),
                      sqlite3_column_bytes(statement, column));
}

bool is_passing(const QByteArray &column)
{
    return std::any_of(passing_columns.begin(), passing_columns.end(),
                       [&](const char *passing) { return column == passing; });
}

result_row row_of(sqlite3_stmt *statement)
{
    result_row row;
    for (int column = 0; column < sqlite3_column_count(statement); ++column) {
        const QByteArray name = sqlite3_column_name(statement, column);
        if (sqlite3_column_type(statement, column) != SQLITE_NULL && !is_passing(name)) {
            const QByteArray value = column_text(statement, column);
            row.text += "  " + name + " = " + value + '\n';
            row.cells[name] = value;
        }
    }
    return row;
}

} // namespace

result_rows read_rows(const fs::path &path)
{
    result_rows rows;
    if (!fs::exists(path)) {
        return rows;
    }
    const database_handle database = open(path);
    std::vector<QByteArray> tables;
    for_each_row(path, database.get(), "select name from sqlite_master where type = 'table'",
                 [&](sqlite3_stmt *row) { tables.push_back(column_text(row, 0)); });
    for (const QByteArray &table : tables) {
        std::vector<result_row> &of_table = rows[table];
        for_each_row(path, database.get(), "select * from '" + table + '\'',
                     [&](sqlite3_stmt *row) { of_table.push_back(row_of(row)); });
    }
    return rows;
}

size_t count_of(const result_rows &rows)
{
    size_t count = 0;
    for (const auto &table : rows) {
        count += table.second.size();
    }
    return count;
}

QString integrity_fault(const fs::path &path, const fs::path &scratch_folder)
{
    if (!fs::exists(path)) {
        return {};
    }
    fs::remove_all(scratch_folder);
    fs::create_directory(scratch_folder);
    const fs::path copy = scratch_folder / path.filename();
    for (const char *suffix : {"", "-journal", "-wal"}) {
        if (fs::exists(path.string() + suffix)) {
            fs::copy_file(path.string() + suffix, copy.string() + suffix);
        }
    }
    QByteArray verdict;
    try {
        const database_handle database = open(copy);
        for_each_row(path, database.get(), "pragma integrity_check",
                     [&](sqlite3_stmt *row) { verdict += column_text(row, 0) + '\n'; });
    } catch (const evidence::evidence_error &failure) {
        verdict = failure.what();
    }
    fs::remove_all(scratch_folder);
    return verdict == "ok\n" ? QString() : QString::fromUtf8(verdict);
}

result_rows distinct(result_rows rows)
{
    std::vector<result_row> &listed = rows["emlx_list"];
    const auto by_text = [](const result_row &one, const result_row &other) { return one.text < other.text; };
    std::sort(listed.begin(), listed.end(), by_text);
    listed.erase(std::unique(listed.begin(), listed.end(),
                             [](const result_row &one, const result_row &other) { return one.text == other.text; }),
                 listed.end());
    return rows;
}

QString missing_rows(const result_rows &wanted, const result_rows &present)
{
    QString missing;
    for (const auto &[table, rows] : wanted) {
        std::map<QByteArray, int> counts;
        const auto found = present.find(table);
        if (found != present.end()) {
            for (const result_row &row : found->second) {
                ++counts[row.text];
            }
        }
        for (const result_row &row : rows) {
            if (--counts[row.text] < 0) {
                missing +=
                    QStringLiteral("missing in %1\n%2").arg(QString::fromUtf8(table), QString::fromUtf8(row.text));
            }
        }
    }
    return missing;
}

} // namespace trial
