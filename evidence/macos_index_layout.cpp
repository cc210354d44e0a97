#include "evidence/macos_index_layout.h"

#include "evidence/files.h"

namespace evidence {

namespace {

// Tables, column types and indexes as the computers have them, without what no reader of mail looks at. The columns
// that macos_message fills lack the NOT NULL of the later generations, so that a store can also hold what a damaged or
// repaired index hands out.

constexpr const char *messages_of_v2 =
    "CREATE TABLE messages (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, message_id, document_id BLOB, in_reply_to, "
    "remote_id INTEGER, sender INTEGER, subject_prefix, subject INTEGER, date_sent INTEGER, date_received INTEGER, "
    "date_created INTEGER, date_last_viewed INTEGER, mailbox INTEGER, remote_mailbox INTEGER, original_mailbox "
    "INTEGER, "
    "flags INTEGER, read, flagged, size INTEGER, color, encoding, type INTEGER, pad, conversation_id INTEGER DEFAULT "
    "-1, snippet TEXT DEFAULT NULL, fuzzy_ancestor INTEGER DEFAULT NULL, automated_conversation INTEGER DEFAULT 0, "
    "root_status INTEGER DEFAULT -1, conversation_position INTEGER DEFAULT -1);";

constexpr const char *messages_of_v2_without_in_reply_to =
    "CREATE TABLE messages (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, message_id, remote_id INTEGER, sender INTEGER, "
    "subject_prefix, subject INTEGER, date_sent INTEGER, date_received INTEGER, date_created INTEGER, date_last_viewed "
    "INTEGER, mailbox INTEGER, remote_mailbox INTEGER, original_mailbox INTEGER, flags INTEGER, read, flagged, size "
    "INTEGER, color, encoding, type INTEGER, pad, conversation_id INTEGER DEFAULT -1, snippet TEXT DEFAULT NULL);";

constexpr const char *messages_of_v3_to_v7 =
    "CREATE TABLE messages (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, message_id, document_id BLOB, in_reply_to, "
    "remote_id INTEGER, sender INTEGER, subject_prefix, subject INTEGER, date_sent INTEGER, date_received INTEGER, "
    "date_created INTEGER, date_last_viewed INTEGER, mailbox INTEGER, remote_mailbox INTEGER, flags INTEGER, read, "
    "flagged, size INTEGER, color, type INTEGER, conversation_id INTEGER DEFAULT -1, snippet TEXT DEFAULT NULL, "
    "fuzzy_ancestor INTEGER DEFAULT NULL, automated_conversation INTEGER DEFAULT 0, root_status INTEGER DEFAULT -1, "
    "conversation_position INTEGER DEFAULT -1, deleted INTEGER DEFAULT 0);";

constexpr const char *messages_of_v3_to_v7_without_in_reply_to =
    "CREATE TABLE messages (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, message_id, document_id BLOB, remote_id INTEGER, "
    "sender INTEGER, subject_prefix, subject INTEGER, date_sent INTEGER, date_received INTEGER, date_created INTEGER, "
    "date_last_viewed INTEGER, mailbox INTEGER, remote_mailbox INTEGER, flags INTEGER, read, flagged, size INTEGER, "
    "color, type INTEGER, conversation_id INTEGER DEFAULT -1, snippet TEXT DEFAULT NULL, deleted INTEGER DEFAULT 0);";

constexpr const char *messages_of_v8 =
    "CREATE TABLE messages (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, message_id INTEGER DEFAULT 0, global_message_id "
    "INTEGER, remote_id INTEGER, document_id TEXT COLLATE BINARY, sender INTEGER, subject_prefix TEXT COLLATE BINARY, "
    "subject INTEGER, snippet TEXT COLLATE BINARY, date_sent INTEGER, date_received INTEGER, mailbox INTEGER, "
    "remote_mailbox INTEGER, flags INTEGER DEFAULT 0, read INTEGER DEFAULT 0, flagged INTEGER DEFAULT 0, deleted "
    "INTEGER NOT NULL DEFAULT 0, size INTEGER DEFAULT 0, conversation_id INTEGER DEFAULT 0, date_last_viewed INTEGER, "
    "list_id_hash INTEGER, unsubscribe_type INTEGER, searchable_message INTEGER, brand_indicator INTEGER, display_date "
    "INTEGER, flag_color INTEGER, color TEXT COLLATE BINARY, type INTEGER, fuzzy_ancestor INTEGER, "
    "automated_conversation INTEGER DEFAULT 0, root_status INTEGER DEFAULT -1);";

constexpr const char *messages_of_v9 =
    "CREATE TABLE messages (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, message_id INTEGER DEFAULT 0, global_message_id "
    "INTEGER, remote_id INTEGER, document_id TEXT COLLATE BINARY, sender INTEGER, subject_prefix TEXT COLLATE BINARY, "
    "subject INTEGER, summary INTEGER, date_sent INTEGER, date_received INTEGER, mailbox INTEGER, remote_mailbox "
    "INTEGER, flags INTEGER DEFAULT 0, read INTEGER DEFAULT 0, flagged INTEGER DEFAULT 0, deleted INTEGER NOT NULL "
    "DEFAULT 0, size INTEGER DEFAULT 0, conversation_id INTEGER DEFAULT 0, date_last_viewed INTEGER, list_id_hash "
    "INTEGER, unsubscribe_type INTEGER, searchable_message INTEGER, brand_indicator INTEGER, display_date INTEGER, "
    "flag_color INTEGER, color TEXT COLLATE BINARY, type INTEGER, fuzzy_ancestor INTEGER, automated_conversation "
    "INTEGER DEFAULT 0, root_status INTEGER DEFAULT -1, is_urgent INTEGER NOT NULL DEFAULT 0);";

constexpr const char *tables_to_v7 =
    "CREATE TABLE subjects (ROWID INTEGER PRIMARY KEY, subject COLLATE RTRIM, normalized_subject COLLATE RTRIM);"
    "CREATE TABLE addresses (ROWID INTEGER PRIMARY KEY, address COLLATE NOCASE, comment, UNIQUE(address, comment));"
    "CREATE TABLE mailboxes (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, url UNIQUE, total_count INTEGER DEFAULT 0, "
    "unread_count INTEGER DEFAULT 0, unseen_count INTEGER DEFAULT 0, deleted_count INTEGER DEFAULT 0, "
    "unread_count_adjusted_for_duplicates INTEGER DEFAULT 0, change_identifier, source INTEGER, "
    "alleged_change_identifier);"
    "CREATE TABLE recipients (ROWID INTEGER PRIMARY KEY, message_id INTEGER NOT NULL REFERENCES messages(ROWID) ON "
    "DELETE CASCADE, type INTEGER, address_id INTEGER, position INTEGER);"
    "CREATE INDEX recipients_message_id_index ON recipients (message_id, position);"
    "CREATE TABLE attachments (ROWID INTEGER PRIMARY KEY, message_id INTEGER NOT NULL REFERENCES messages(ROWID) ON "
    "DELETE CASCADE, name TEXT, type TEXT, UNIQUE(message_id, name));";

constexpr const char *tables_from_v8 =
    "CREATE TABLE subjects (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, subject TEXT COLLATE RTRIM NOT NULL);"
    "CREATE TABLE addresses (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, address TEXT COLLATE NOCASE NOT NULL, comment "
    "TEXT "
    "COLLATE BINARY NOT NULL, UNIQUE(address, comment) ON CONFLICT ABORT);"
    "CREATE TABLE mailboxes (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, url TEXT COLLATE BINARY NOT NULL, total_count "
    "INTEGER DEFAULT 0, unread_count INTEGER DEFAULT 0, deleted_count INTEGER DEFAULT 0, unseen_count INTEGER DEFAULT "
    "0, "
    "unread_count_adjusted_for_duplicates INTEGER DEFAULT 0, change_identifier TEXT COLLATE BINARY, source INTEGER, "
    "alleged_change_identifier TEXT COLLATE BINARY, UNIQUE(url) ON CONFLICT ABORT);"
    "CREATE TABLE recipients (ROWID INTEGER PRIMARY KEY, message INTEGER NOT NULL, address INTEGER, type INTEGER, "
    "position INTEGER, UNIQUE(message, type, position) ON CONFLICT ABORT);"
    "CREATE TABLE attachments (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, message INTEGER NOT NULL REFERENCES "
    "messages(ROWID) ON DELETE CASCADE, attachment_id TEXT COLLATE BINARY, name TEXT COLLATE BINARY, UNIQUE(message, "
    "attachment_id) ON CONFLICT ABORT);";

constexpr const char *insert_complete =
    "INSERT INTO messages (ROWID, message_id, sender, subject_prefix, subject, date_sent, date_received, "
    "date_last_viewed, mailbox, flags, read, flagged, size, type, conversation_id, snippet, date_created, in_reply_to) "
    "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15, ?16, ?17, ?18)";
constexpr const char *insert_without_in_reply_to =
    "INSERT INTO messages (ROWID, message_id, sender, subject_prefix, subject, date_sent, date_received, "
    "date_last_viewed, mailbox, flags, read, flagged, size, type, conversation_id, snippet, date_created) "
    "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15, ?16, ?17)";
constexpr const char *insert_without_date_created =
    "INSERT INTO messages (ROWID, message_id, sender, subject_prefix, subject, date_sent, date_received, "
    "date_last_viewed, mailbox, flags, read, flagged, size, type, conversation_id, snippet) "
    "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15, ?16)";
constexpr const char *insert_without_snippet =
    "INSERT INTO messages (ROWID, message_id, sender, subject_prefix, subject, date_sent, date_received, "
    "date_last_viewed, mailbox, flags, read, flagged, size, type, conversation_id) "
    "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15)";

constexpr const char *insert_recipient_to_v7 =
    "INSERT INTO recipients (message_id, address_id, type, position) VALUES (?, ?, ?, ?)";
constexpr const char *insert_recipient_from_v8 =
    "INSERT INTO recipients (message, address, type, position) VALUES (?, ?, ?, ?)";
constexpr const char *insert_attachment_to_v7 = "INSERT INTO attachments (message_id, name) VALUES (?, ?)";
constexpr const char *insert_attachment_from_v8 = "INSERT INTO attachments (message, name) VALUES (?, ?)";

// clang-format off
constexpr macos_index_layout layouts[] = {
    {macos_index_form::v2,                           messages_of_v2,                            tables_to_v7,   insert_complete,             insert_recipient_to_v7,   insert_attachment_to_v7},
    {macos_index_form::v2_without_in_reply_to,       messages_of_v2_without_in_reply_to,        tables_to_v7,   insert_without_in_reply_to,  insert_recipient_to_v7,   insert_attachment_to_v7},
    {macos_index_form::v3_to_v7,                     messages_of_v3_to_v7,                      tables_to_v7,   insert_complete,             insert_recipient_to_v7,   insert_attachment_to_v7},
    {macos_index_form::v3_to_v7_without_in_reply_to, messages_of_v3_to_v7_without_in_reply_to,  tables_to_v7,   insert_without_in_reply_to,  insert_recipient_to_v7,   insert_attachment_to_v7},
    {macos_index_form::v8,                           messages_of_v8,                            tables_from_v8, insert_without_date_created, insert_recipient_from_v8, insert_attachment_from_v8},
    {macos_index_form::v9,                           messages_of_v9,                            tables_from_v8, insert_without_snippet,      insert_recipient_from_v8, insert_attachment_from_v8},
};
// clang-format on

} // namespace

macos_index_form usual_index_form(int generation)
{
    if (generation < 3) {
        return macos_index_form::v2;
    }
    if (generation < 8) {
        return macos_index_form::v3_to_v7;
    }
    return generation == 8 ? macos_index_form::v8 : macos_index_form::v9;
}

const macos_index_layout &layout_of(macos_index_form form)
{
    for (const macos_index_layout &layout : layouts) {
        if (layout.form == form) {
            return layout;
        }
    }
    throw evidence_error(QStringLiteral("There is no layout for this form of the index."));
}

} // namespace evidence
