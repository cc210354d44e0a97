// Table all_attachments: one row a name of the table "Attachment" in store.vol, joined with the table "Recipient". Sent
// and received attachments are read in a pass each.
#include "core/joined_text.h"
#include "windows/attachments.h"
#include "windows/mail_winos.h"
#include "windows/recipient_index.h"
#include "windows/recipients.h"

#include <QHash>
#include <QSet>

namespace {

using attachment_record = specific_table::struct_attachments;
using recipient_record = specific_table::struct_recipients;

/// What the recipients with the key of an attachment tell of its message.
struct attached_message
{
    QString from;
    QString to;
    QString date; // FILETIME
};

// Looks messages up by their key. Each attachment of a message has the list of its receivers in its row, so that the
// lists of one store are bounded together: a hostile one names hundreds of thousands of receivers and of attachments.
class message_finder
{
public:
    message_finder(const operation_log &operation, const QList<recipient_record> &all, const char *kind_of_sender)
        : log(operation), records(all), sender_kind(kind_of_sender),
          recipients_by_key(all, &recipient_record::message_key_QString)
    {
    }

    attached_message find(const QString &key)
    {
        auto known = found.find(key);
        if (known == found.end()) {
            known = found.insert(key, message_of(key));
        }
        attached_message message = *known;
        remaining_characters -= message.to.size();
        if (remaining_characters < 0) {
            log("receivers of the attachments of a store longer than 500 million characters -----FAILED-----, the list "
                "of an attachment is left out");
            remaining_characters += message.to.size();
            message.to = QLatin1String("");
        }
        return message;
    }

private:
    attached_message message_of(const QString &key) const
    {
        attached_message message{QLatin1String(""), QLatin1String(""), QString()};
        joined_text receivers(log);
        for (const int at : recipients_by_key.positions_of(key)) {
            const recipient_record &recipient = records.at(at);
            message.date = recipient.message_time_QString;
            if (recipient.recipient_kind_QString == QLatin1String(sender_kind)) {
                message.from = recipient.address_QString;
            } else {
                receivers.append(recipient.address_QString, QStringLiteral(";"));
            }
        }
        message.to += receivers.text();
        message.to.chop(1); // the separator behind the last one
        return message;
    }

    const operation_log &log;
    const QList<recipient_record> &records;
    const char *sender_kind;
    recipient_index recipients_by_key;
    QHash<QString, attached_message> found;
    qint64 remaining_characters = 500000000;
};

} // namespace

struct mail_winos::attachment_pass
{
    const char *direction_flag;
    const char *sender_kind; // of the recipient record that holds the sender
};

void mail_winos::extract_attachments(const operation_log &log, const store_writer &writer, const attachment_pass &pass)
{
    attachments_table = std::make_unique<attachments>();
    recipients_table = std::make_unique<recipients>();
    write_store_rows(log, writer, [&](const QString &file, const row_source &shared, row_writer &rows) {
        const QList<attachment_record> &attachment_records = attachments_of(file);
        const QList<recipient_record> &recipient_records = recipients_of(file);
        message_finder messages_by_key(log, recipient_records, pass.sender_kind);
        QSet<QString> seen_names;
        for (const attachment_record &attachment : attachment_records) {
            if (cancel_extraction_bool) {
                return;
            }
            if (attachment.direction_flag_QString != QLatin1String(pass.direction_flag) ||
                seen_names.contains(attachment.file_name_QString)) {
                continue;
            }
            seen_names.insert(attachment.file_name_QString);
            const attached_message message = messages_by_key.find(attachment.message_key_QString);
            row_values row{
                {"system_user", shared.system_user},
                {"domain_user", shared.domain_user},
                {"file_name", attachment.file_name_QString},
                {"file_size", attachment.file_size_QString},
                {"suffix", attachment.suffix_QString},
                {"from_str", message.from},
                {"to_str", message.to},
                {"message_date_sent", epoch_text_of(message.date)},
            };
            append_source_columns(row, shared);
            rows.insert(row);
        }
    });
    attachments_table.reset();
    recipients_table.reset();
}

void mail_winos::extract_sent_attachments()
{
    static constexpr operation_log log{"void mail_winos::extract_sent_attachments()"};
    static constexpr store_writer writer{
        "[extract_sent_attachments]---STARTS---",
        "[extract_sent_attachments]---ENDS---",
        {"[extract_sent_attachments]Destination Db opening -------FAILED-------- ", ""},
        "INSERT INTO all_attachments(bookmark,system_user,domain_user,file_name,file_size,suffix,from_str,to_str,"
        "message_date_sent,source_file ,source_count_name,os_scheme_display) VALUES(0,?,?,?,?,?,?,?,?,?,?,?)",
        {"[extract_sent_attachments]Insert Query ---FAILED---- in sent_attachments Table ", "", "", false}};
    extract_attachments(log, writer, {"false", "0"});
}

void mail_winos::extract_received_attachments()
{
    static constexpr operation_log log{"void mail_winos::extract_received_attachments()"};
    static constexpr store_writer writer{
        "[extract_received_attachments]---STARTS---",
        "[extract_received_attachments]---ENDS---",
        {"[extract_sent_attachments]Destination Db opening ------FAILED----- ", ""},
        "INSERT INTO all_attachments(bookmark,system_user,domain_user,file_name,file_size,suffix,from_str,to_str,"
        "message_date_sent,source_file ,source_count_name, os_scheme_display)VALUES(0,?,?,?,?,?,?,?,?,?,?,?)",
        {"[extract_received_attachments]Insert Query ---FAILED---- in sent_attachments Table ", "", "", false}};
    extract_attachments(log, writer, {"true", "1"});
}
