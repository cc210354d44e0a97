// Table messages: one row a message of the device's two mail indexes, with the place of its mail file.
#include "ios/mail_ios_uniform.h"

#include "core/joined_text.h"
#include "core/result_session.h"
#include "core/row_writer.h"
#include "core/source_session.h"
#include "ios/mail_file_finder.h"
#include "services/plugin_helper_functions.h"

#include <QSet>

#include <optional>

namespace {

constexpr failure_text destination_open_failure{"Destination Db opening -----FAILED-----", "ERROR :- "};
constexpr failure_text source_open_failure{"Source Db opening -----FAILED-----", "ERROR :- "};

// In Envelope Index: a message, whose sender, subject and summary are row ids of Protected Index.
constexpr const char *select_messages =
    "SELECT message_id,sender,subject,date_sent,date_received,date_last_viewed,mailbox,read,flagged,"
    "conversation_id,summary,global_message_id,ROWID From messages";
constexpr failure_text select_messages_failure{"select query_select -----FAILED----- ", "ERROR :- ", "QUERY :- "};
constexpr const char *select_mailbox = "select url from mailboxes where ROWID = ?";
constexpr failure_text select_mailbox_failure{"Select query_select_mailbox -----FAILED-----", "ERROR :- ", "Query :- "};
constexpr const char *select_recipients = "select address from recipients where message = ?";
constexpr failure_text select_recipients_failure{"select query_select_recipients -----FAILED-----", "ERROR :- ",
                                                 "QUERY :- "};

// In Protected Index.
constexpr const char *select_subject = "select subject from subjects where ROWID = ?";
constexpr failure_text select_subject_failure{"select query_select_subject -----FAILED-----", "ERROR :- ", "QUERY :- "};
constexpr const char *select_sender = "select address,comment from addresses where ROWID = ?";
constexpr failure_text select_sender_failure{"select query_select_sender -----FAILED-----", "ERROR :- ", "QUERY :- "};
constexpr const char *select_summary = "select summary from summaries where ROWID = ?";
constexpr failure_text select_summary_failure{"select query_select_summary -----FAILED-----", "ERROR :- ", "QUERY :- "};
constexpr const char *select_receiver = "select address from addresses where ROWID = ?";
constexpr failure_text select_receiver_failure{"select query_select_receiver -----FAILED-----", "ERROR :- ",
                                               "QUERY :- "};

constexpr const char *insert_message =
    "insert into messages(bookmark,message_id,subject,from_str,sender_name,message,to_str,message_date_sent,"
    "message_date_received,message_last_view_date,mailbox_name,mailbox_url,view_status,flagged,conversation_id,row_id,"
    "emlx_file_name,emlx_file_path,source_file,source_count_name,os_scheme_display) values(0,?,?,?,?, ?,?,?,?,?, "
    "?,?,?,?,?, ?,?,?,?,?,?)";
constexpr failure_text insert_message_failure{"Insert query_insert -----FAILED-----", "ERROR :- ", "Query :- "};

struct message_record
{
    QString message_id;
    QString date_sent;
    QString date_received;
    QString date_last_viewed;
    bool is_read = false;
    QString flagged;
    QString conversation_id;
    QString row_id;
    QString mailbox_name;
    QString mailbox_url;
    QString subject;
    QString sender_address;
    QString sender_name;
    QString summary;
    QString recipients; // their addresses, joined by ","
    QString mail_file;  // full path
};

// Joins the two indexes and the mail files into messages.
class message_reader
{
public:
    message_reader(source_session &envelope, source_session &protected_index, const operation_log &log,
                   mail_file_finder &files, const std::atomic<bool> &cancel_flag)
        : messages{envelope, log, select_messages, select_messages_failure}, mailboxes{envelope, log, select_mailbox,
                                                                                       select_mailbox_failure},
          recipients{envelope, log, select_recipients, select_recipients_failure}, subjects{protected_index, log,
                                                                                            select_subject,
                                                                                            select_subject_failure},
          senders{protected_index, log, select_sender, select_sender_failure}, summaries{protected_index, log,
                                                                                         select_summary,
                                                                                         select_summary_failure},
          receivers{protected_index, log, select_receiver, select_receiver_failure}, log(log), mail_files(files),
          is_cancelled(cancel_flag)
    {
    }

    /// Out: false when the index cannot be read, which is logged.
    bool start() { return messages.execute(); }

    /// The next message; none behind the last one and, whatever was read of it, once the extraction is cancelled.
    std::optional<message_record> next()
    {
        if (!step(messages)) {
            return std::nullopt;
        }
        message_record message;
        message.message_id = messages.text("message_id");
        message.date_sent = messages.text("date_sent");
        message.date_received = messages.text("date_received");
        message.date_last_viewed = messages.text("date_last_viewed");
        message.is_read = messages.text("read") == QLatin1String("1");
        message.flagged = messages.text("flagged");
        message.conversation_id = messages.text("conversation_id");
        message.row_id = messages.text_at(row_id_position); // SQLite names it by the table's key column
        look_up_mailbox(message);
        look_up_texts(message);
        look_up_recipients(message);
        message.mail_file = mail_files.find(messages.text("global_message_id"));
        has_stopped = has_stopped || mail_files.was_cancelled();
        return has_stopped ? std::nullopt : std::make_optional(message);
    }

    /// Whether the reading ended because the extraction was cancelled.
    bool was_cancelled() const { return has_stopped; }

private:
    static constexpr int row_id_position = 12;

    // There is no further row once the extraction is cancelled.
    bool step(source_query &query)
    {
        const bool is_on_row = query.next();
        has_stopped = has_stopped || query.was_cancelled() || (is_on_row && is_cancelled);
        return is_on_row && !has_stopped;
    }

    void look_up_mailbox(message_record &message)
    {
        if (mailboxes.execute({messages.text("mailbox")}) && mailboxes.next()) {
            const QByteArray url = mailboxes.text("url").toUtf8();
            message.mailbox_url = QString::fromUtf8(QByteArray::fromPercentEncoding(url));
            message.mailbox_name = message.mailbox_url.mid(message.mailbox_url.lastIndexOf(QLatin1Char('/')) + 1);
        }
    }

    // Row ids are unique, so each look-up has one row at most; of several the last would count.
    void look_up_texts(message_record &message)
    {
        subjects.execute({messages.text("subject")});
        while (step(subjects)) {
            message.subject = subjects.text("subject");
        }
        senders.execute({messages.text("sender")});
        while (step(senders)) {
            message.sender_address = senders.text("address");
            message.sender_name = senders.text("comment");
        }
        summaries.execute({messages.text("summary")});
        while (step(summaries)) {
            message.summary = summaries.text("summary");
        }
    }

    void look_up_recipients(message_record &message)
    {
        QSet<QString> known;
        joined_text addresses{log};
        recipients.execute({message.row_id});
        while (step(recipients)) {
            receivers.execute({recipients.text("address")});
            while (step(receivers)) {
                const QString address = receivers.text("address");
                if (!known.contains(address)) {
                    known.insert(address);
                    addresses.append(address, QStringLiteral(","));
                }
            }
        }
        message.recipients = addresses.text();
        if (!message.recipients.isEmpty()) {
            message.recipients.chop(1);
        }
    }

    source_query messages;
    source_query mailboxes;
    source_query recipients;
    source_query subjects;
    source_query senders;
    source_query summaries;
    source_query receivers;
    const operation_log &log;
    mail_file_finder &mail_files;
    const std::atomic<bool> &is_cancelled;
    bool has_stopped = false;
};

} // namespace

void mail_ios_uniform::extract_mail_messages()
{
    static constexpr operation_log log{"void mail_ios_uniform::extract_mail_messages()"};
    log("Starts");
    if (source_file_envelope_index_QString.trimmed().isEmpty() ||
        source_file_protected_index_QString.trimmed().isEmpty()) {
        return;
    }
    const QString envelope_copy = plugin_helper_obj->get_adhoc_path_for_database(source_file_envelope_index_QString);
    const QString protected_copy = plugin_helper_obj->get_adhoc_path_for_database(source_file_protected_index_QString);

    result_session destination{log, destination_db_path_QString};
    if (!destination.open(destination_open_failure)) {
        return;
    }
    source_session envelope{log, envelope_copy, cancel_extraction_bool};
    source_session protected_index{log, protected_copy, cancel_extraction_bool};
    if (!envelope.open(source_open_failure) || !protected_index.open(source_open_failure)) {
        return;
    }
    mail_file_finder mail_files{source_root_path_QString,
                                source_root_path_QString +
                                    QLatin1String("private/var/mobile/Library/Mail/MessageData/"),
                                cancel_extraction_bool};
    message_reader messages{envelope, protected_index, log, mail_files, cancel_extraction_bool};
    if (!messages.start()) {
        return;
    }
    row_writer rows{*this, destination, log, insert_message, insert_message_failure};
    const QString source_file = relative_path(source_file_envelope_index_QString) + QLatin1Char(';') +
                                relative_path(source_file_protected_index_QString);
    const QString source_count_name = plugin_static_function::get_source_count_name();
    while (const std::optional<message_record> message = messages.next()) {
        rows.insert({
            {"message_id", message->message_id},
            {"subject", message->subject},
            {"from_str", message->sender_address},
            {"sender_name", message->sender_name},
            {"message", message->summary},
            {"to_str", message->recipients},
            {"message_date_sent", message->date_sent},
            {"message_date_received", message->date_received},
            {"message_last_view_date", message->date_last_viewed},
            {"mailbox_name", message->mailbox_name},
            {"mailbox_url", message->mailbox_url},
            {"view_status", message->is_read ? tr("Read") : tr("Unread")},
            {"flagged", message->flagged},
            {"conversation_id", message->conversation_id},
            {"row_id", message->row_id},
            {"emlx_file_name", message->mail_file.mid(message->mail_file.lastIndexOf(QLatin1Char('/')) + 1)},
            {"emlx_file_path", relative_path(message->mail_file)},
            {"source_file", source_file},
            {"source_count_name", source_count_name},
            {"os_scheme_display", os_scheme_display_QString},
        });
    }
    if (messages.was_cancelled()) {
        return;
    }
    destination.finish();
    log("Ends");
}
