/// Writes a database of the mail application's own store, as it lies in the application's package folder: a table a
/// kind, with columns of plain names, some of which name files below that folder.
#pragma once

#include "evidence/ese_file.h"

#include <QString>

#include <optional>

namespace evidence {

// The records. A null text or an empty number is absent from the record. Paths are relative to "LocalState/" and have
// backslashes. Instants are FILETIMEs: units of 100 nanoseconds since 1601.

struct windows_mail_attachment
{
    std::optional<qint64> size;
    QString file_name;
    QString content_type;
    QString body_file;
    QString content_id;
    QString content_location;
    std::optional<qint64> instance_number;
};

struct windows_mail_conversation
{
    std::optional<qint64> latest_message_time;
    std::optional<qint64> latest_received_time;
    QString latest_sender;
    QString latest_sender_email;
    QString latest_sender_name;
    QString normalized_subject;
    std::optional<qint64> total_message_count;
    std::optional<qint64> importance;
};

struct windows_mail_message
{
    QString conversation_server_id;
    std::optional<qint64> date_received;
    std::optional<qint64> date_last_modified;
    QString eml_file;
    QString from;
    QString from_email;
    QString from_name;
    QString gmail_message_id;
    std::optional<qint64> imap_uid;
    std::optional<qint64> last_modified_body_type;
    QString mime_message_id;
    QString preview_text;
    QString reply_to;
    QString subject;
    QString to;
};

class windows_mail_store
{
public:
    /// Makes the folder with its parents and the database with its three tables in it.
    explicit windows_mail_store(const QString &path, const ese_file_options &options = {});

    /// Records stay in the order in which they are added.
    void add(const windows_mail_attachment &attachment);
    void add(const windows_mail_conversation &conversation);
    void add(const windows_mail_message &message);

    /// Only now the file is a database. Once.
    void finish() { file.finish(); }

private:
    template <typename... values>
    void add_record(ese_table &table, const values &...fields);

    ese_file file;
    ese_table attachments;
    ese_table conversations;
    ese_table messages;
    int last_id = 0; // of all tables together
};

} // namespace evidence
