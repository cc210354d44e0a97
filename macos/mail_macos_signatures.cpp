// Table signature: the signatures of AllSignatures.plist with the text of their files, and the accounts that
// AccountsMap.plist assigns them to.
#include "core/result_session.h"
#include "core/row_writer.h"
#include "core/source_session.h"
#include "macos/mail_macos.h"
#include "macos/row_text.h"
#include "macos/signature_text.h"

#include <cerrno>

namespace {

constexpr failure_text destination_open_failure{"destination_db open --------FAILED------", "Error :- "};

// --- The signatures --------------------------------------------------------------------------------------------------

constexpr operation_log signatures_log{
    "void mail_macos::xcode_extract_allsignature(QString, QString, QString, QString, QString)"};

// A signature holds pictures at most; a file beyond that is none, and would fill the memory.
constexpr qint64 signature_size_limit = 16 << 20;

// A list can name one signature any number of times.
constexpr qint64 most_text = 64000000;

constexpr failure_text list_failure{"m_plist blank -------FAILED-------"};
constexpr failure_text signature_open_failure{"file open--------FAILED------", "Error :- "};
constexpr failure_text insert_failure{"insert query --------FAILED------", "Error :- ", "Query :- "};
constexpr const char *insert_signature =
    "INSERT into signature(bookmark,system_user, signature_name,signature_uid,signature,source_file,"
    "artifacts_relation_source_file,is_selected,source_count_name, os_scheme_display) values(?,?,?,?,?,?  ,?,?,?,?)";

// --- Their accounts --------------------------------------------------------------------------------------------------

constexpr failure_text map_failure{" m_plist blank -------FAILED-------"};
constexpr failure_text select_failure{"select --------FAILED------", "Error :- ", ""};
constexpr const char *select_source_file =
    "select source_file from signature where signature_uid = ? AND source_count_name = ?";
constexpr failure_text update_failure{"insert_query --------FAILED------", "Error :- ", ""};
constexpr const char *update_signature =
    "update signature Set related_account_id = ?, related_account_name = ?, source_file = ? where signature_uid = ? "
    "AND source_count_name = ?";

// Behind a reading that failed.
QString why_unread(const QString &path)
{
    const int error = errno;
    const std::optional<qint64> size = status_of(path).regular_size;
    return qt_error_string(!size ? EINVAL : *size > signature_size_limit ? EFBIG : error);
}

} // namespace

void mail_macos::xcode_extract_allsignature(const QString &file, const QString &user, const QString &destination_db,
                                            const QString &, const QString &signature_folder)
{
    const operation_log &log = signatures_log;
    log("starts");
    result_session destination{log, destination_db};
    if (!destination.open(destination_open_failure)) {
        return;
    }
    const property_list list = property_list::from_file(file);
    if (!list.root().is_array()) {
        log.failure(list_failure, file);
        log("End with failure");
        return;
    }
    const artifact_source_file shown_sources =
        joined_source_files(shown_source_of(file.trimmed(), user), shown_source_of(signature_folder.trimmed(), user));
    row_writer rows{*this,
                    destination,
                    log,
                    insert_signature,
                    insert_failure,
                    count_signature_rows_bool ? row_count::inserted : row_count::none};
    qint64 text_total = 0;
    for (const property_list_value &signature : list.root().elements()) {
        if (cancel_extraction_bool) {
            return;
        }
        const QString uid = stored_text("SignatureUniqueId", signature);
        const std::optional<QString> text = text_of_signature(signature_folder, uid);
        if (cancel_extraction_bool) {
            return;
        }
        text_total += text ? text->size() : 0;
        if (text_total > most_text) {
            log("signatures longer than 64 million characters -----FAILED-----, the rest is left out");
            return;
        }
        if (!text) {
            continue;
        }
        rows.insert({
            {"bookmark", QStringLiteral("0")},
            {"system_user", user},
            {"signature_name", stored_text("SignatureName", signature)},
            {"signature_uid", uid},
            {"signature", *text},
            {"source_file", shown_sources.source_file},
            {"artifacts_relation_source_file", shown_sources.artifacts_relation_source_file},
            {"is_selected", QStringLiteral("NO")},
            {"source_count_name", plugin_static_function::get_source_count_name()},
            {"os_scheme_display", os_scheme_display_QString},
        });
    }
    destination.finish();
    log("ends");
}

std::optional<QString> mail_macos::text_of_signature(const QString &folder, const QString &uid) const
{
    const QString name = uid + QLatin1String(".mailsignature");
    const QString path = folder + name;
    const bool is_inside = !leads_out(name) && source.contains(path) && source_boundary(folder).contains(path);
    const QByteArray content = is_inside ? read_source_file(path, signature_size_limit) : QByteArray();
    if (content.isNull()) {
        signatures_log.failure(signature_open_failure, path, is_inside ? why_unread(path) : qt_error_string(ENOENT));
        return std::nullopt;
    }
    const std::optional<html_text> converted = plain_text_of_signature(content, cancel_extraction_bool);
    if (!converted) {
        return std::nullopt;
    }
    if (converted->excess) {
        signatures_log("HTML beyond bounds, only freed of its markup-----",
                       QLatin1String(converted->excess) + QLatin1String(" of ") + path);
    }
    return converted->text;
}

void mail_macos::xcode_extract_updatesignature(const QString &file, const QString &, const QString &destination_db,
                                               const QString &)
{
    static constexpr operation_log log{
        "void mail_macos::xcode_extract_updatesignature(QString, QString, QString, QString)"};
    log("starts");
    result_session destination{log, destination_db};
    if (!destination.open(destination_open_failure)) {
        return;
    }
    const property_list map = property_list::from_file(file);
    if (!map.root().is_dictionary()) {
        log.failure(map_failure, file);
        log("end with failure");
        return;
    }
    source_query signature_rows{destination, log, select_source_file, select_failure};
    source_query update{destination, log, update_signature, update_failure};
    const QString source_count_name = plugin_static_function::get_source_count_name();
    for (const auto &[account_id, account] : map.root().entries()) {
        if (cancel_extraction_bool) {
            return;
        }
        if (!account.is_dictionary()) {
            continue;
        }
        const QString url = with_escapes_decoded(stored_text("AccountURL", account));
        const QStringList uids =
            with_escapes_decoded(stored_list("Signatures", account, cancel_extraction_bool)).split(QLatin1Char(';'));
        for (const QString &uid : uids) {
            if (cancel_extraction_bool) {
                return;
            }
            if (!signature_rows.execute({uid, source_count_name})) {
                continue;
            }
            const QString source_file = signature_rows.next() ? signature_rows.text("source_file") : QString();
            update.execute({account_id, url, sources_with(source_file, file, log), uid, source_count_name});
        }
    }
    destination.finish();
    log("ends");
}
