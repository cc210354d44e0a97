#include "bench/ios_uniform_floor.h"

#include "bench/floor_database.h"
#include "bench/floor_functions.h"
#include "bench/floor_tables.h"
#include "bench/works.h"
#include "evidence/files.h"

namespace bench {

namespace {

const auto mail_folder = QStringLiteral("private/var/mobile/Library/Mail/");

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
    run(connection.get(), create_statement_of("messages"));
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
