// What the writers of the tables in store.vol share: the result database around them, the file and user that their
// rows name. Fills no table itself.
#include "core/result_session.h"
#include "windows/attachments.h"
#include "windows/mail_winos.h"
#include "windows/recipients.h"
#include "windows/store_table.h"

#include <numeric>

namespace {

// To read a table anew costs more than its records take in memory, unless these are without end.
// The bound is for all stores together.
constexpr int most_kept_records = 500000;

template <typename record>
const QList<record> &kept_records_of(const QString &file, const char *table_name, specific_table &reader,
                                     QList<record> specific_table::*list, QHash<QString, QList<record>> &kept)
{
    const auto known = kept.constFind(file);
    if (known != kept.constEnd()) {
        return *known;
    }
    const QList<record> &records = records_of(file, table_name, reader, list);
    const int kept_records =
        std::accumulate(kept.cbegin(), kept.cend(), 0,
                        [](int count, const QList<record> &of_store) { return count + of_store.size(); });
    if (records.size() > most_kept_records - kept_records) {
        return records;
    }
    return *kept.insert(file, records);
}

} // namespace

mail_winos::row_source mail_winos::row_source_of(const QString &path, const QString &path_of_user) const
{
    const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_system_account account =
        plugin_static_function::extract_user_name_from_sourcefile(path_of_user, source_root_path_QString);
    row_source shared;
    shared.system_user = account.system_user;
    shared.domain_user = account.domain_user;
    shared.source_file = plugin_static_function::get_final_artifact_source_file(
                             behind_source_root(path), account.system_user, source_type_internal_QString)
                             .source_file;
    shared.source_count_name = plugin_static_function::get_source_count_name();
    return shared;
}

void mail_winos::append_source_columns(row_values &row, const row_source &shared) const
{
    row.insert(row.end(), {
                              {"source_file", shared.source_file},
                              {"source_count_name", shared.source_count_name},
                              {"os_scheme_display", os_scheme_display_QString},
                          });
}

void mail_winos::write_store_rows(
    const operation_log &log, const store_writer &writer,
    const std::function<void(const QString &file, const row_source &shared, row_writer &rows)> &write_rows)
{
    log(writer.start_line);
    result_session destination{log, destination_db_path_QString};
    if (!destination.open(writer.open_failure)) {
        return;
    }
    row_writer rows{*this, destination, log, writer.insert_statement, writer.insert_failure};
    for (const QString &file : qAsConst(store_vol_file_QStringList)) {
        if (!cancel_extraction_bool) {
            write_rows(file, row_source_of(file, file), rows);
        }
        if (cancel_extraction_bool) {
            return;
        }
    }
    destination.finish();
    log(writer.end_line);
}

const QList<specific_table::struct_recipients> &mail_winos::recipients_of(const QString &file)
{
    return kept_records_of(file, "Recipient", *recipients_table, &specific_table::struct_recipients_QList,
                           recipients_of_store);
}

const QList<specific_table::struct_attachments> &mail_winos::attachments_of(const QString &file)
{
    return kept_records_of(file, "Attachment", *attachments_table, &specific_table::struct_attachments_QList,
                           attachments_of_store);
}
