#include "macos/emlx_catalog.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <string_view>
#include <utility>

namespace {

constexpr const char *select_names = "select INT,file_name from emlx_list where source_count_name = ?";
constexpr const char *select_emlx = "select file_name,file_path,source_file from emlx_list where INT = ?";
constexpr failure_text select_failure{"Execute query_emlx ------FAILED------", "Error :- ", ""};

// Names may share a hash, so what it finds is compared. The row ids of an index differ, so that names made to share
// one cost no more than a look at each of them.
std::size_t hash_of(const QString &name)
{
    const std::u16string_view text(reinterpret_cast<const char16_t *>(name.utf16()),
                                   static_cast<std::size_t>(name.size()));
    return std::hash<std::u16string_view>()(text);
}

} // namespace

emlx_catalog::emlx_catalog(result_session &session, const QString &source_name)
    : destination(session), source_count_name(source_name)
{
}

bool emlx_catalog::fail(const char *statement)
{
    failed_statement = statement;
    error_text = destination.database().error_text();
    return false;
}

bool emlx_catalog::load()
{
    if (!select_row.prepare(destination.database(), select_emlx)) {
        return fail(select_emlx);
    }
    sqlite_statement names;
    if (!names.prepare(destination.database(), select_names)) {
        return fail(select_names);
    }
    names.bind(0, source_count_name);
    sqlite_statement::outcome outcome = names.step();
    for (; outcome == sqlite_statement::outcome::row; outcome = names.step()) {
        entries.push_back({hash_of(names.text(1)), names.text(0).toLongLong()});
    }
    if (outcome != sqlite_statement::outcome::done) {
        return fail(select_names);
    }
    std::sort(entries.begin(), entries.end(), [](const entry &left, const entry &right) {
        return std::make_pair(left.name_hash, left.row) < std::make_pair(right.name_hash, right.row);
    });
    return true;
}

bool emlx_catalog::read_row(qint64 row, struct_emlx &record)
{
    select_row.bind(0, QString::number(row));
    const sqlite_statement::outcome outcome = select_row.step();
    if (outcome == sqlite_statement::outcome::row) {
        record = {select_row.text(0), select_row.text(1), select_row.text(2)};
    }
    select_row.reset();
    return outcome == sqlite_statement::outcome::row || fail(select_emlx);
}

struct_emlx emlx_catalog::find(const QString &row_id, const operation_log &log)
{
    if (!is_loaded) {
        is_loaded = true;
        load();
    }
    struct_emlx found;
    std::optional<qint64> first_row;
    for (const char *ending : {".emlx", ".partial.emlx"}) {
        const QString name = row_id + QLatin1String(ending);
        const std::size_t hash = hash_of(name);
        auto candidate =
            std::lower_bound(entries.cbegin(), entries.cend(), hash,
                             [](const entry &left, std::size_t wanted) { return left.name_hash < wanted; });
        for (; !failed_statement && candidate != entries.cend() && candidate->name_hash == hash; ++candidate) {
            struct_emlx record;
            if ((first_row && candidate->row > *first_row) || !read_row(candidate->row, record)) {
                break;
            }
            if (record.file_name == name) {
                first_row = candidate->row;
                found = record;
                break;
            }
        }
    }
    if (failed_statement) {
        log.failure(select_failure, destination.database_name(), error_text, failed_statement);
        return struct_emlx();
    }
    return found;
}
