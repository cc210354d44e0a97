#include "bench/macos_floor.h"

#include "bench/floor_database.h"
#include "bench/floor_functions.h"
#include "bench/floor_tables.h"
#include "bench/macos_mail_files.h"
#include "bench/works.h"
#include "evidence/files.h"

#include <optional>

namespace bench {

namespace {

const auto store_folder = QStringLiteral("/Users/anna/Library/Mail/V6");
const auto index_path = store_folder + QLatin1String("/MailData/Envelope Index");

// The few mailboxes are decoded and described once, not once a message. No account is known, so only local mailboxes
// have their columns.
constexpr const char *describe_mailboxes =
    "CREATE TEMP TABLE described_mailboxes AS "
    "SELECT ROWID AS id, percent_decoded(url) AS url, behind_last_slash(percent_decoded(url)) AS name,"
    " 'Mailbox Account Name: On My Mac;Mailbox Name: ' || behind_last_slash(percent_decoded(url)) || ';Mailbox URL: ' "
    "||"
    " percent_decoded(url) || ';Total Message Count: ' || total_count || ';Unread Message Count: ' || unread_count ||"
    " ';Unseen Message Count: ' || unseen_count || ';Deleted Message Count: ' || deleted_count AS detail "
    "FROM e.mailboxes WHERE url LIKE 'local://%'";

constexpr const char *insert_messages =
    "INSERT INTO messages(reply_to,bcc,%1) "
    "SELECT mail_reply_to(m.ROWID), mail_bcc(m.ROWID), 0, ?1, m.message_id, trim(a.address), trim(a.comment),"
    " trim(s.subject), coalesce(m.date_sent, 0), coalesce(m.date_received, 0), coalesce(m.date_created, 0),"
    " m.date_last_viewed, x.detail, x.name, iif(x.id, 'On My Mac', NULL), x.url, iif(m.read = 1, 'Read', 'Unread'),"
    " (SELECT group_concat(ra.address, ', ') FROM e.recipients r CROSS JOIN e.addresses ra ON ra.ROWID = r.address_id"
    "  WHERE r.message_id = m.ROWID AND r.type = 0),"
    " (SELECT group_concat(ra.address, ', ') FROM e.recipients r CROSS JOIN e.addresses ra ON ra.ROWID = r.address_id"
    "  WHERE r.message_id = m.ROWID AND r.type = 1),"
    " mail_size(m.ROWID), m.type, m.conversation_id, trim(replace(m.snippet, '\"', '')),"
    " (SELECT group_concat(n.name, '; ') FROM e.attachments n WHERE n.message_id = m.ROWID), '',"
    " mail_name(m.ROWID), mail_addressed(m.ROWID), mail_addressed(m.ROWID), mail_addressed(m.ROWID),"
    " ?2 || coalesce(';++::++;' || mail_addressed(m.ROWID), ''), '',"
    " mail_exists(m.ROWID), mail_created(m.ROWID), mail_attributes(m.ROWID), NULL, ?3, ?4 "
    "FROM e.messages m"
    " LEFT JOIN described_mailboxes x ON x.id = m.mailbox"
    " LEFT JOIN e.subjects s ON s.ROWID = m.subject"
    " LEFT JOIN e.addresses a ON a.ROWID = m.sender";

constexpr const char *insert_attachment =
    "INSERT INTO all_attachments(%1) "
    "SELECT 0, system_user, message_id, message_date_sent, from_str, to_str, cc, message, subject, ?2, ?3, ?3, ?3, ?4,"
    " ?5, ?6, ?7, coalesce(?8 || ';++::++;', '') || source_file, artifacts_relation_source_file, ?9, NULL,"
    " source_count_name, os_scheme_display FROM messages WHERE INT = ?1";

/// The copy of the index, the mail files and the result database while a floor runs.
class macos_floor
{
public:
    macos_floor(const QString &root, const QString &database_path, stopwatch &watch);
    void insert_messages();
    void insert_attachments();
    void commit_and_remove();

private:
    void insert_attachments_of(sqlite3_stmt *message, sqlite3_stmt *insert);

    stopwatch &watch;
    QString index_copy;
    macos_mail_files files;
    evidence::sqlite_connection connection;
};

QByteArray with_columns(const char *statement, const char *columns)
{
    return QByteArray(statement).replace("%1", columns);
}

macos_floor::macos_floor(const QString &root, const QString &database_path, stopwatch &watch)
    : watch(watch), files(root.chopped(1).toStdString(), store_folder.toStdString())
{
    const QString folder = evidence::folder_of(database_path) + QLatin1Char('/');
    evidence::make_folder(folder);
    index_copy = copy_database(root.chopped(1) + index_path, folder);
    watch.lap("copy");

    connection = open_database(database_path);
    add_text_functions(connection.get());
    files.add_functions(connection.get());
    run(connection.get(), create_statement_of("messages"));
    run(connection.get(), create_statement_of("emlx_list"));
    run(connection.get(), "ATTACH ? AS e", {index_copy});
    run(connection.get(), describe_mailboxes);
    run(connection.get(), "BEGIN");
    files.list(connection.get(), source_count_name);
    watch.lap("list");
}

void macos_floor::insert_messages()
{
    run(connection.get(), with_columns(bench::insert_messages, macos_message_columns).constData(),
        {QLatin1String(macos_user), index_path, QLatin1String(source_count_name), QLatin1String(scheme_display)});
    watch.lap("rows");
}

void macos_floor::insert_attachments()
{
    run(connection.get(), create_statement_of("all_attachments"));
    const evidence::sqlite_statement messages =
        prepare(connection.get(), "SELECT INT, attachment_filename, emlx_file_name, emlx_file_path FROM messages "
                                  "WHERE attachment_filename != ''");
    const evidence::sqlite_statement insert =
        prepare(connection.get(), with_columns(insert_attachment, macos_attachment_columns));
    while (sqlite3_step(messages.get()) == SQLITE_ROW) {
        insert_attachments_of(messages.get(), insert.get());
    }
    run(connection.get(), "DELETE FROM messages");
    watch.lap("attachments");
}

std::string text(sqlite3_stmt *statement, int column)
{
    const auto *characters = reinterpret_cast<const char *>(sqlite3_column_text(statement, column));
    return {characters, static_cast<size_t>(sqlite3_column_bytes(statement, column))};
}

/// All but the first name keep the blank in front of them.
void macos_floor::insert_attachments_of(sqlite3_stmt *message, sqlite3_stmt *insert)
{
    const std::string names = text(message, 1);
    const std::string mail_name = text(message, 2);
    const std::string mail_path = text(message, 3);
    const std::map<std::string, std::string> path_of_name = files.attachments_of(mail_path, mail_name);
    const std::string folder = mail_path.empty() ? std::string() : attachments_folder(mail_path, mail_name);
    for (size_t start = 0; start <= names.size();) {
        const size_t end = std::min(names.find(';', start), names.size());
        const std::string name = names.substr(start, end - start);
        const auto found = path_of_name.find(start == 0 ? name : name.substr(1));
        const std::string path = found == path_of_name.end() ? std::string() : found->second;
        const file_facts facts = files.facts_of(path);
        const size_t dot = name.rfind('.');
        const std::string suffix = dot == std::string::npos ? std::string() : name.substr(dot + 1);
        sqlite3_bind_int64(insert, 1, sqlite3_column_int64(message, 0));
        const std::string exists = facts.exists;
        int position = 1;
        for (const std::string *value :
             {&name, &path, &exists, &facts.size, &suffix, &facts.created, &folder, &facts.attributes}) {
            const char *bytes = value->empty() ? nullptr : value->data(); // which binds NULL
            sqlite3_bind_text(insert, ++position, bytes, static_cast<int>(value->size()), SQLITE_STATIC);
        }
        sqlite3_step(insert);
        sqlite3_reset(insert);
        start = end + 1;
    }
}

void macos_floor::commit_and_remove()
{
    run(connection.get(), "COMMIT");
    connection.reset();
    watch.lap("commit");
    remove_database(index_copy);
    watch.lap("remove");
}

} // namespace

void run_macos_messages_floor(const QString &root, const QString &database_path, stopwatch &watch)
{
    macos_floor floor(root, database_path, watch);
    floor.insert_messages();
    floor.commit_and_remove();
}

void run_macos_attachments_floor(const QString &root, const QString &database_path, stopwatch &watch)
{
    macos_floor floor(root, database_path, watch);
    floor.insert_messages();
    floor.insert_attachments();
    floor.commit_and_remove();
}

} // namespace bench
