#include "bench/winos_floor.h"

#include "bench/floor_database.h"
#include "bench/floor_tables.h"
#include "bench/works.h"
#include "evidence/files.h"
#include "evidence/windows_profile.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

namespace bench {

namespace {

constexpr const char *insert_appointment = "INSERT INTO appointments(bookmark) VALUES(0)";
constexpr const char *insert_message =
    "INSERT INTO messages(bookmark,system_user,source_count_name,os_scheme_display,emlx_file_path,from_str,fromemail,"
    "fromname,mimemessegeid,previewtext,reply_to,subject,to_str) VALUES(0,?,?,?,?,?,?,?,?,?,?,?,?)";
constexpr const char *insert_mail_file =
    "INSERT INTO mail_data(bookmark,system_user,source_count_name,os_scheme_display,file_name,inside_text)"
    " VALUES(0,?,?,?,?,?)";
constexpr const char *insert_body =
    "INSERT INTO mail_data(bookmark,system_user,source_count_name,os_scheme_display,file_name,file_size,body)"
    " VALUES(0,?,?,?,?,?,?)";

// The columns of the exported table of messages that come first.
enum message_field
{
    id,
    date_received,
    date_last_modified,
    imap_uid,
    last_modified_body_type,
    conversation,
    gmail_id,
    eml_file,
    sender,
    sender_address,
    sender_name,
    mime_id,
    preview,
    reply_to,
    subject,
    receiver,
    field_count
};

evidence::windows_profile profile_below(const QString &root)
{
    return evidence::windows_profile(root, QLatin1String(winos_user));
}

/// The tables of a database as esedbexport writes them; removed with the object.
class exported_tables
{
public:
    exported_tables(const QString &database, const QString &folder) : target(folder + QLatin1String("tables"))
    {
        const QByteArray target_name = target.toUtf8();
        const QByteArray database_name = database.toUtf8();
        const char *words[] = {"esedbexport", "-t", target_name.constData(), database_name.constData(), nullptr};
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        pid_t child = 0;
        int status = ::posix_spawnp(&child, words[0], &actions, nullptr, const_cast<char *const *>(words), environ);
        posix_spawn_file_actions_destroy(&actions);
        if (status != 0 || ::waitpid(child, &status, 0) != child || status != 0) {
            throw evidence::evidence_error(
                QStringLiteral("esedbexport (Debian: libesedb-utils) does not export %1.").arg(database));
        }
    }
    ~exported_tables() { QDir(target + QLatin1String(".export")).removeRecursively(); }
    exported_tables(const exported_tables &) = delete;
    exported_tables &operator=(const exported_tables &) = delete;

    /// Opens the file of a table behind its line of column names.
    void open_table(const char *name, QFile &file) const
    {
        const QDir folder(target + QLatin1String(".export"));
        file.setFileName(folder.filePath(folder.entryList({QLatin1String(name) + QLatin1String(".*")}).value(0)));
        if (!file.open(QIODevice::ReadOnly)) {
            throw evidence::evidence_error(QStringLiteral("The table %1 was not exported.").arg(QLatin1String(name)));
        }
        file.readLine();
    }

private:
    QString target;
};

/// One statement, filled again and again; the first three values are those of all rows.
class floor_rows
{
public:
    floor_rows(sqlite3 *connection, const char *statement) : prepared(prepare(connection, statement)) {}

    void insert(std::initializer_list<QByteArray> values)
    {
        int position = 0;
        for (const char *shared : {winos_user, source_count_name, scheme_display}) {
            sqlite3_bind_text(prepared.get(), ++position, shared, -1, SQLITE_STATIC);
        }
        for (const QByteArray &value : values) {
            sqlite3_bind_text(prepared.get(), ++position, value.constData(), value.size(), SQLITE_STATIC);
        }
        if (sqlite3_step(prepared.get()) != SQLITE_DONE) {
            throw evidence::evidence_error(QStringLiteral("A row of the floor was not taken."));
        }
        sqlite3_reset(prepared.get());
    }

private:
    evidence::sqlite_statement prepared;
};

QByteArray content_of(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) ? file.readAll() : QByteArray();
}

QByteArray name_of(const QByteArray &path)
{
    return path.mid(path.lastIndexOf('/') + 1);
}

void insert_messages(const exported_tables &exported, const QString &folder, sqlite3 *connection)
{
    QFile table;
    exported.open_table("MailMessage", table);
    floor_rows messages(connection, insert_message);
    floor_rows mail_files(connection, insert_mail_file);
    for (QByteArray line = table.readLine(); !line.isEmpty(); line = table.readLine()) {
        const QList<QByteArray> fields = line.split('\t');
        if (fields.size() != field_count) {
            throw evidence::evidence_error(QStringLiteral("A message was exported in another form."));
        }
        const QByteArray path = QByteArray(fields.at(eml_file)).replace("\\\\", "/");
        messages.insert({path, fields.at(sender), fields.at(sender_address), fields.at(sender_name), fields.at(mime_id),
                         fields.at(preview), fields.at(reply_to), fields.at(subject), fields.at(receiver)});
        if (!content_of(folder + QString::fromUtf8(path)).isEmpty()) {
            mail_files.insert({name_of(path), fields.at(preview)});
        }
    }
}

} // namespace

void run_winos_store_floor(const QString &root, const QString &database_path, stopwatch &watch)
{
    const exported_tables exported(profile_below(root).store_path(),
                                   evidence::folder_of(database_path) + QLatin1Char('/'));
    watch.lap("export");
    const evidence::sqlite_connection connection = open_database(database_path);
    run(connection.get(), create_statement_of("appointments"));
    run(connection.get(), "BEGIN");
    QFile table;
    exported.open_table("Appointment", table);
    while (!table.readLine().isEmpty()) {
        run(connection.get(), insert_appointment);
    }
    run(connection.get(), "COMMIT");
}

void run_winos_walker_floor(const QString &root, const QString &database_path, stopwatch &watch)
{
    const QString folder = profile_below(root).local_state_path();
    const exported_tables exported(folder + QLatin1String("DBStore/store.edb"),
                                   evidence::folder_of(database_path) + QLatin1Char('/'));
    watch.lap("export");
    const evidence::sqlite_connection connection = open_database(database_path);
    run(connection.get(), create_statement_of("messages"));
    run(connection.get(), create_statement_of("mail_data"));
    run(connection.get(), "BEGIN");
    insert_messages(exported, folder, connection.get());
    watch.lap("rows");
    run(connection.get(), "COMMIT");
    watch.lap("commit");
}

void run_winos_bodies_floor(const QString &root, const QString &database_path, stopwatch &watch)
{
    const QString folder = evidence::folder_of(database_path) + QLatin1String("/Files/");
    evidence::make_folder(folder);
    const evidence::sqlite_connection connection = open_database(database_path);
    run(connection.get(), create_statement_of("mail_data"));
    run(connection.get(), "BEGIN");
    floor_rows rows(connection.get(), insert_body);
    QDirIterator files(profile_below(root).store_files_path(), QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = files.next();
        const QByteArray content = content_of(path);
        evidence::write_file(folder + files.fileName(), content);
        rows.insert({files.fileName().toUtf8(), QByteArray::number(content.size()), content});
    }
    watch.lap("rows");
    run(connection.get(), "COMMIT");
    watch.lap("commit");
    QDir(folder).removeRecursively();
    watch.lap("remove");
}

} // namespace bench
