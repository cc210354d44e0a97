// Table emlx_list: one row a mail file below a store folder, which the extraction of messages looks up by name. And
// what of a mail file's headers the mail index lacks.
#include "core/operation_log.h"
#include "core/result_session.h"
#include "core/row_writer.h"
#include "macos/mail_macos.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>

namespace {

constexpr failure_text destination_open_failure{"to open destination DB--------FAILED------", "Error :- "};
constexpr failure_text insert_failure{"insert in emlx_list ----------FAILED------- ", "Error :- ", "Query :- "};
constexpr failure_text emlx_open_failure{"file open -----FAILED-------", "Error :- "};

constexpr const char *insert_emlx_of_later_store =
    "insert into emlx_list (bookmark, file_path, file_name, source_file,artifacts_relation_source_file,"
    "source_count_name) values(?,?,?,?, ?,?)";
constexpr const char *insert_emlx_of_earlier_store =
    "insert into emlx_list (bookmark, file_path, file_name,source_file,artifacts_relation_source_file,"
    "source_count_name) values(?,?,?,?, ?,?)";

QString without_quotes(const QString &text)
{
    return text.trimmed().remove(QLatin1Char('"'));
}

// The first folder below the store folder; empty when the path does not tell it.
QString account_folder_of(const QString &path, const QString &mail_folder)
{
    const QStringList parts = path.split(mail_folder);
    const QStringList below = parts.value(1).split(QLatin1Char('/'));
    return parts.size() < 2 || below.size() < 2 ? QString() : mail_folder + QLatin1Char('/') + below.at(1);
}

} // namespace

// A link counts as the file that it leads to, if that is inside the source.
bool mail_macos::is_emlx_file(const QString &path, folder_walk::entry_kind kind) const
{
    return kind == folder_walk::entry_kind::file ||
           (kind == folder_walk::entry_kind::link && source.contains(path) && QFileInfo(path).isFile());
}

bool mail_macos::list_emlx_files(const QString &mail_folder, bool is_behind_root, row_writer &rows) const
{
    if (!source.contains(mail_folder)) {
        return true;
    }
    const auto stored = [=](const QString &path) { return is_behind_root ? behind_source_root(path) : path; };
    const QString source_count_name = plugin_static_function::get_source_count_name();
    folder_walk walk(mail_folder, links::follow);
    while (walk.next()) {
        if (cancel_extraction_bool) {
            return false;
        }
        if (!walk.relative_path().endsWith(".emlx")) {
            continue;
        }
        const QString path = mail_folder + QLatin1Char('/') + QFile::decodeName(walk.relative_path());
        if (!is_emlx_file(path, walk.kind())) {
            continue;
        }
        const artifact_source_file account = plugin_static_function::get_final_artifact_source_file(
            stored(account_folder_of(path, mail_folder)), QString(), source_type_internal_QString);
        rows.insert({
            {"bookmark", QStringLiteral("0")},
            {"file_path", plugin_static_function::get_relative_file_path(stored(without_quotes(path)), QString(),
                                                                         source_type_internal_QString)},
            {"file_name", without_quotes(path.mid(path.lastIndexOf(QLatin1Char('/')) + 1))},
            {"source_file", account.source_file},
            {"artifacts_relation_source_file", account.artifacts_relation_source_file},
            {"source_count_name", source_count_name},
        });
    }
    return true;
}

void mail_macos::extract_emlx_file_location_11(const QString &mail_folder)
{
    static constexpr operation_log log{"void mail_macos::extract_emlx_file_location_11(QString)"};
    log("start");
    result_session destination{log, destination_db_path_QString};
    if (!destination.open(destination_open_failure)) {
        return;
    }
    row_writer rows{*this, destination, log, insert_emlx_of_later_store, insert_failure, row_count::none};
    for (int user = 0; user < system_user_QStringList.size(); ++user) { // the folder is listed once for each
        if (cancel_extraction_bool || !list_emlx_files(mail_folder, false, rows)) {
            return;
        }
    }
    log("end");
}

void mail_macos::extract_emlx_file_location()
{
    static constexpr operation_log log{"void mail_macos::extract_emlx_file_location()"};
    log("start");
    result_session destination{log, destination_db_path_QString};
    if (!destination.open(destination_open_failure)) {
        return;
    }
    row_writer rows{*this, destination, log, insert_emlx_of_earlier_store, insert_failure, row_count::none};
    for (const QString &user : qAsConst(system_user_QStringList)) {
        const QString mail_folder =
            source_root_path_QString + QLatin1String("Users/") + user + QLatin1String("/Library/Mail/V2");
        if (cancel_extraction_bool || !list_emlx_files(mail_folder, true, rows)) {
            return;
        }
    }
    log("end");
}

struct_emlx mail_macos::sub_extract_emlx_file_for_messages_11_12(const QString &row_id, emlx_catalog &db) const
{
    static constexpr operation_log log{
        "struct_emlx mail_macos::sub_extract_emlx_file_for_messages_11_12(QString, QSqlDatabase&)"};
    log("start");
    const struct_emlx emlx = db.find(row_id, log);
    log("end");
    return emlx;
}

struct_emlx mail_macos::sub_extract_emlx_file_for_messages(const QString &row_id, emlx_catalog &db) const
{
    static constexpr operation_log log{
        "struct_emlx mail_macos::sub_extract_emlx_file_for_messages(QString, QSqlDatabase&)"};
    log("start");
    const struct_emlx emlx = db.find(row_id, log);
    log("end");
    return emlx;
}

struct_address_bcc_replyto mail_macos::get_cc_and_replytofield(const QString &path) const
{
    static constexpr operation_log log{"struct_address_bcc_replyto mail_macos::get_cc_and_replytofield(QString)"};
    if (path.trimmed().isEmpty()) {
        return struct_address_bcc_replyto();
    }
    errno = ENOENT; // stands for what leads out of the source as well
    const file_descriptor file = source.contains(path) ? open_source_file(path) : file_descriptor();
    if (!file.is_open()) {
        log.failure(emlx_open_failure, path, qt_error_string(errno));
        return struct_address_bcc_replyto();
    }
    emlx_header_scanner headers{file, cancel_extraction_bool};
    const struct_address_bcc_replyto addresses = headers.scan();
    if (headers.has_cut_line()) {
        log("address line longer than 16 MiB, its end is left out-----", path);
    }
    return addresses;
}
