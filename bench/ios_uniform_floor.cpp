#include "bench/ios_uniform_floor.h"

#include "bench/floor_database.h"
#include "bench/floor_functions.h"
#include "bench/works.h"
#include "evidence/files.h"

namespace bench {

namespace {

const auto mail_folder = QStringLiteral("private/var/mobile/Library/Mail/");

constexpr const char *create_messages =
    "CREATE TABLE IF NOT EXISTS 'messages'(bookmark INTEGER,INT INTEGER PRIMARY KEY,system_user VARCHAR(1024),"
    "domain_user VARCHAR(1024),subject VARCHAR(1024),subject_prefix VARCHAR(1024),sender_name VARCHAR(1024),"
    "from_str VARCHAR(1024),to_str VARCHAR(1024),cc VARCHAR(1024),bcc VARCHAR(1024),reply_to VARCHAR(1024),"
    "message VARCHAR(1024),message_date_sent INTEGER,message_date_received INTEGER,"
    "message_last_view_date INTEGER,mailbox_name VARCHAR(1024),mailbox_account_name VARCHAR(1024),"
    "mailbox_url VARCHAR(1024),mailbox_detail VARCHAR(1024),emlx_file_name VARCHAR(1024),"
    "emlx_file_path VARCHAR(1024),file_exist VARCHAR(1024),emlx_file_size INTEGER,emlx_file_date_created INTEGER,"
    "message_id VARCHAR(1024),row_id VARCHAR(1024),flagged VARCHAR(1024),message_type VARCHAR(1024),"
    "view_status VARCHAR(1024),attachment_filename VARCHAR(1024),attachment_type VARCHAR(1024),"
    "conversation_id VARCHAR(1024),comment VARCHAR(1024),fromemail VARCHAR(1024),fromname VARCHAR(1024),"
    "gmailmapuniquemessegeid VARCHAR(1024),imapuid VARCHAR(1024),lastmodifiedbodytype VARCHAR(1024),"
    "mimemessegeid VARCHAR(1024),previewtext VARCHAR(1024),date_added INTEGER,first_date INTEGER,"
    "last_date INTEGER,content_type VARCHAR(1024),fs_name VARCHAR(1024),fs_node_count VARCHAR(1024),"
    "wherefrom VARCHAR(1024),latitude VARCHAR(1024),longitude VARCHAR(1024),altitude VARCHAR(1024),"
    "torrent_file_list VARCHAR(1024),content_modification_date INTEGER,content_creation_date INTEGER,"
    "fs_content_change_date INTEGER,fs_creation_date INTEGER,last_used_date INTEGER,used_dates VARCHAR(1024),"
    "bookmarked_extended_attributes VARCHAR(1024),bookmarked_exif_data VARCHAR(1024),"
    "extended_attributes_key_value VARCHAR(1024),extended_attributes_value_for_search VARCHAR(1024),"
    "preview_file_path varchar(1024),export_file_paths varchar(1024),LINKFILENAME VARCHAR(1024),"
    "trawl_tag_value VARCHAR(1024),notes_icon VARCHAR(1024),tags_icon VARCHAR(1024),"
    "os_scheme_display VARCHAR(1024),source_count_name VARCHAR(1024),source_file VARCHAR(1024),"
    "artifacts_relation_source_file VARCHAR(1024),notes VARCHAR(1024))";

// The few mailboxes are decoded once, not once a message.
constexpr const char *decode_mailboxes =
    "CREATE TEMP TABLE decoded_mailboxes AS "
    "SELECT ROWID AS id, percent_decoded(url) AS url, behind_last_slash(percent_decoded(url)) AS name FROM e.mailboxes";

constexpr const char *insert_messages =
    "INSERT INTO messages(%1) "
    "SELECT 0, m.message_id, s.subject, a.address, a.comment, b.summary,"
    " (SELECT joined_once(ra.address) FROM e.recipients r CROSS JOIN p.addresses ra ON ra.ROWID = r.address"
    "  WHERE r.message = m.ROWID),"
    " m.date_sent, m.date_received, m.date_last_viewed, x.name, x.url,"
    " CASE m.read WHEN 1 THEN 'Read' ELSE 'Unread' END, m.flagged, m.conversation_id, m.ROWID,"
    " mail_file_name(m.global_message_id), mail_file_path(m.global_message_id), ?1, ?2, ?3 "
    "FROM e.messages m"
    " LEFT JOIN decoded_mailboxes x ON x.id = m.mailbox"
    " LEFT JOIN p.subjects s ON s.ROWID = m.subject"
    " LEFT JOIN p.addresses a ON a.ROWID = m.sender"
    " LEFT JOIN p.summaries b ON b.ROWID = m.summary";

void insert_rows(sqlite3 *connection)
{
    const QString folder = QLatin1Char('/') + mail_folder;
    const QString source_file = folder + QLatin1String("Envelope Index;") + folder + QLatin1String("Protected Index");
    const QByteArray statement = QString::fromLatin1(insert_messages).arg(QLatin1String(ios_uniform_columns)).toUtf8();
    run(connection, statement.constData(),
        {source_file, QLatin1String(source_count_name), QLatin1String(scheme_display)});
}

} // namespace

void run_ios_uniform_floor(const QString &root, const QString &database_path, stopwatch &watch)
{
    const QString folder = evidence::folder_of(database_path) + QLatin1Char('/');
    evidence::make_folder(folder);
    const QString envelope_copy = copy_database(root + mail_folder + QLatin1String("Envelope Index"), folder);
    const QString protected_copy = copy_database(root + mail_folder + QLatin1String("Protected Index"), folder);
    watch.lap("copy");

    const QString mail_files = mail_folder + QLatin1String("MessageData/");
    mail_folder_lister finder((root + mail_files).toStdString(), (QLatin1Char('/') + mail_files).toStdString());
    evidence::sqlite_connection connection = open_database(database_path);
    add_text_functions(connection.get());
    finder.add_functions(connection.get());
    run(connection.get(), create_messages);
    run(connection.get(), "ATTACH ? AS e", {envelope_copy});
    run(connection.get(), "ATTACH ? AS p", {protected_copy});
    run(connection.get(), decode_mailboxes);
    run(connection.get(), "CREATE UNIQUE INDEX temp.decoded_mailbox_ids ON decoded_mailboxes(id)");
    run(connection.get(), "BEGIN");
    insert_rows(connection.get());
    watch.lap("rows");
    run(connection.get(), "COMMIT");
    connection.reset();
    watch.lap("commit");

    remove_database(envelope_copy);
    remove_database(protected_copy);
    watch.lap("remove");
}

} // namespace bench
