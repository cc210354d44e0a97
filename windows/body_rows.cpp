#include "windows/body_rows.h"

namespace {

// A commit waits for the disk, about as long as the text of some HTML files takes.
constexpr int rows_per_commit = 250;

struct row_kind
{
    operation_log log;
    failure_text open_failure;
    const char *insert_statement;
    failure_text insert_failure;
};

// By kind.
constexpr row_kind row_kinds[] = {
    {operation_log{"void mail_winos::extract_mail_data()"},
     {"[extract_mail_data]Destination Db opening ----FAILED---- ", "", nullptr, false},
     "insert into mail_data (bookmark,system_user,domain_user,body,file_name,file_size,file_path,export_file_paths,"
     "windows_path,creation_timestamp,modification_timestamp,last_access_timestamp,source_file ,source_count_name, "
     "os_scheme_display)values(0,?,?,?,?,?,?,?,?,?,?,?,?,?,?)",
     {nullptr, "[extract_mail_data]  query_insert execution -----FAILED------)", ""}},
    {operation_log{"void mail_winos::extract_non_html_files(const QString &)"},
     {"[extract_non_html_files]Destination Db opening  ------FAILED----- ", "", nullptr, false},
     "insert into mail_data (bookmark,system_user,domain_user,body,file_name,file_size,file_path,export_file_paths,"
     "windows_path,creation_timestamp,modification_timestamp,last_access_timestamp,source_file ,source_count_name,"
     "os_scheme_display) values(0,?,?,?,? ,?,?,?,?,? ,?,?,?,?,?)",
     {nullptr, "[extract_non_html_files]  in table maildata)", ""}},
};

} // namespace

body_row_writers::body_row_writers(extractor_frame &extractor, const QString &database_path)
    : frame(extractor), path(database_path)
{
}

bool body_row_writers::open(kind wanted)
{
    if (destination) {
        return true;
    }
    const row_kind &opener = row_kinds[static_cast<int>(wanted)];
    destination = std::make_unique<result_session>(opener.log, path);
    if (!destination->open(opener.open_failure)) {
        destination.reset();
        return false;
    }
    for (const kind each : {kind::html_file, kind::other_file}) {
        const row_kind &texts = row_kinds[static_cast<int>(each)];
        writers[static_cast<int>(each)].emplace(frame, *destination, texts.log, texts.insert_statement,
                                                texts.insert_failure);
    }
    return true;
}

void body_row_writers::insert(kind wanted, const row_values &row)
{
    writers[static_cast<int>(wanted)]->insert(row);
    if (++rows_since_commit == rows_per_commit) {
        destination->keep();
        rows_since_commit = 0;
    }
}
