#include "evidence/ios_file_tree.h"

#include "evidence/files.h"

namespace evidence {

namespace {

// The devices' own column types, defaults and UNIQUE indexes. The columns that ios_message fills lack the devices' NOT
// NULL, so that a tree can also hold what a damaged or repaired index hands out.
const auto envelope_schema = QStringLiteral(
    "CREATE TABLE messages (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, message_id INTEGER DEFAULT 0, global_message_id "
    "INTEGER, remote_id INTEGER, document_id TEXT COLLATE BINARY, sender INTEGER, subject_prefix TEXT COLLATE BINARY, "
    "subject INTEGER, summary INTEGER, date_sent INTEGER, date_received INTEGER, mailbox INTEGER, remote_mailbox "
    "INTEGER, flags INTEGER NOT NULL DEFAULT 0, read INTEGER DEFAULT 0, flagged INTEGER DEFAULT 0, deleted INTEGER NOT "
    "NULL DEFAULT 0, size INTEGER NOT NULL DEFAULT 0, conversation_id INTEGER DEFAULT 0, date_last_viewed INTEGER, "
    "list_id_hash INTEGER, unsubscribe_type INTEGER, searchable_message INTEGER, brand_indicator INTEGER, display_date "
    "INTEGER, flag_color INTEGER, color TEXT COLLATE BINARY, type INTEGER, fuzzy_ancestor INTEGER, "
    "automated_conversation INTEGER DEFAULT 0, root_status INTEGER DEFAULT -1, is_urgent INTEGER NOT NULL DEFAULT 0);"
    "CREATE TABLE mailboxes (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, url TEXT COLLATE BINARY NOT NULL, total_count "
    "INTEGER NOT NULL DEFAULT 0, unread_count INTEGER NOT NULL DEFAULT 0, deleted_count INTEGER NOT NULL DEFAULT 0, "
    "unseen_count INTEGER NOT NULL DEFAULT 0, unread_count_adjusted_for_duplicates INTEGER NOT NULL DEFAULT 0, "
    "change_identifier TEXT COLLATE BINARY, source INTEGER, alleged_change_identifier TEXT COLLATE BINARY, UNIQUE(url) "
    "ON CONFLICT ABORT);"
    "CREATE TABLE recipients (ROWID INTEGER PRIMARY KEY, message INTEGER NOT NULL, address INTEGER NOT NULL, type "
    "INTEGER, position INTEGER, UNIQUE(message, type, position) ON CONFLICT ABORT);");

const auto protected_schema = QStringLiteral(
    "CREATE TABLE subjects (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, subject TEXT COLLATE RTRIM NOT NULL, "
    "UNIQUE(subject) ON CONFLICT ABORT);"
    "CREATE TABLE addresses (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, address TEXT COLLATE NOCASE NOT NULL, comment "
    "TEXT COLLATE BINARY NOT NULL, UNIQUE(address, comment) ON CONFLICT ABORT);"
    "CREATE TABLE summaries (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, summary TEXT COLLATE RTRIM NOT NULL, "
    "UNIQUE(summary) ON CONFLICT ABORT);");

const auto mail_folder = QStringLiteral("private/var/mobile/Library/Mail/");

} // namespace

struct ios_file_tree::statements
{
    row_inserter message;
    row_inserter mailbox;
    row_inserter recipient;
    row_inserter subject;
    row_inserter summary;
    row_inserter address;
};

ios_file_tree::ios_file_tree(const QString &root, sqlite_storage storage)
    : root_path(root.endsWith(QLatin1Char('/')) ? root : root + QLatin1Char('/')), storage(storage),
      envelope(envelope_index_path(), storage), protected_file(protected_index_path(), storage)
{
    envelope.run(envelope_schema);
    protected_file.run(protected_schema);
    inserts.reset(new statements{
        envelope.prepare_insert(
            "INSERT INTO messages (ROWID, message_id, global_message_id, sender, subject, summary, date_sent, "
            "date_received, date_last_viewed, mailbox, read, flagged, conversation_id, display_date) "
            "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?8)"),
        envelope.prepare_insert("INSERT INTO mailboxes (url) VALUES (?)"),
        envelope.prepare_insert("INSERT INTO recipients (message, address, type, position) VALUES (?, ?, ?, ?)"),
        protected_file.prepare_insert("INSERT INTO subjects (subject) VALUES (?)"),
        protected_file.prepare_insert("INSERT INTO summaries (summary) VALUES (?)"),
        protected_file.prepare_insert("INSERT INTO addresses (address, comment) VALUES (?, ?)")});
}

ios_file_tree::~ios_file_tree() = default;

qint64 ios_file_tree::add_mailbox(const QString &url)
{
    return row_id_of(mailboxes, url, inserts->mailbox, url);
}

qint64 ios_file_tree::add_subject(const QString &subject)
{
    return row_id_of(subjects, text_key(subject), inserts->subject, subject);
}

qint64 ios_file_tree::add_summary(const QString &summary)
{
    return row_id_of(summaries, text_key(summary), inserts->summary, summary);
}

qint64 ios_file_tree::add_address(const QString &address, const QString &comment)
{
    return row_id_of(addresses, address_key(address, comment), inserts->address, address, comment);
}

qint64 ios_file_tree::add_message(const ios_message &message)
{
    return inserts->message(message.row_id, message.message_id, message.global_message_id, message.sender,
                            message.subject, message.summary, message.date_sent, message.date_received,
                            message.date_last_viewed, message.mailbox, message.read, message.flagged,
                            message.conversation_id);
}

void ios_file_tree::add_recipients(qint64 message_row_id, std::initializer_list<qint64> recipients, int type)
{
    int position = 0;
    for (const qint64 address : recipients) {
        add_recipient(message_row_id, address, type, position++);
    }
}

void ios_file_tree::add_recipient(qint64 message_row_id, qint64 address, int type, int position)
{
    inserts->recipient(message_row_id, address, type, position);
}

QString ios_file_tree::add_emlx(qint64 global_message_id, const QString &file_name, const emlx_message &message)
{
    const QString folder = message_folder_path(global_message_id);
    make_folder(folder);
    QString path = folder + file_name;
    write_file(path, emlx_bytes(message));
    return path;
}

QString ios_file_tree::add_file(const QString &relative_path, const QByteArray &content)
{
    QString path = root_path + relative_path;
    make_folder(folder_of(path));
    write_file(path, content);
    return path;
}

void ios_file_tree::write_mailbox_collections(const QString &last_selected_id, property_list_form form)
{
    const property_list_dictionary item{{"uniqueID", last_selected_id}, {"type", 0}};
    write_mailbox_collections(property_list_dictionary{{"lastSelectedItem", item}, {"version", 3}}, form);
}

void ios_file_tree::write_mailbox_collections(const QVariant &content, property_list_form form)
{
    write_property_list_file(mailbox_collections_path(), content, form);
}

accounts_database &ios_file_tree::accounts()
{
    if (!accounts_file) {
        accounts_file.emplace(accounts_path(), storage);
    }
    return *accounts_file;
}

QString ios_file_tree::envelope_index_path() const
{
    return root_path + mail_folder + QLatin1String("Envelope Index");
}

QString ios_file_tree::protected_index_path() const
{
    return root_path + mail_folder + QLatin1String("Protected Index");
}

QString ios_file_tree::accounts_path() const
{
    return root_path + QLatin1String("private/var/mobile/Library/Accounts/Accounts3.sqlite");
}

QString ios_file_tree::mailbox_collections_path() const
{
    return root_path + mail_folder + QLatin1String("MailboxCollections.plist");
}

QString ios_file_tree::message_folder_path(qint64 global_message_id) const
{
    return root_path + mail_folder + QLatin1String("MessageData/") + QString::number(global_message_id) +
           QLatin1Char('/');
}

void ios_file_tree::finish()
{
    inserts.reset();
    envelope.finish();
    protected_file.finish();
    if (accounts_file) {
        accounts_file->finish();
    }
}

} // namespace evidence
