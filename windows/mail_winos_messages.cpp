// Table messages: one row a record of the table "Message" in store.vol, joined with the table "Recipient". The two have
// only a time in common; the key that the recipients of one message share stands in no message.
#include "core/joined_text.h"
#include "windows/mail_winos.h"
#include "windows/messages.h"
#include "windows/recipient_index.h"
#include "windows/recipients.h"
#include "windows/store_table.h"

#include <QSet>

namespace {

using message_record = specific_table::struct_messages;
using recipient_record = specific_table::struct_recipients;

constexpr operation_log message_log{"void mail_winos::extract_messages()"};

// In: the recipients of the message's time, of which the first tells the message's key; not empty.
QString receivers_of(const std::vector<int> &positions, const QList<recipient_record> &recipient_records)
{
    const QString &key = recipient_records.at(positions.front()).message_key_QString;
    joined_text receivers(message_log);
    for (const int at : positions) {
        const recipient_record &recipient = recipient_records.at(at);
        if (recipient.message_key_QString == key && recipient.recipient_kind_QString != QLatin1String("0")) {
            receivers.append(recipient.address_QString, QStringLiteral(";"));
        }
    }
    QString joined = QLatin1String("") + receivers.text();
    joined.chop(1); // the separator behind the last one
    return joined;
}

} // namespace

void mail_winos::extract_messages()
{
    static constexpr store_writer writer{
        "[extract_messages]---STARTS---",
        "[extract_messages]---ENDS---",
        {"[extract_messages]Destination Db opening  ------FAILED----- ", ""},
        "insert into messages(bookmark,system_user,domain_user,from_str,sender_name,to_str,subject,message,"
        "message_date_sent,source_file ,source_count_name, os_scheme_display) values(0,?,?,?,?,?,?,?,?,?,?,?)",
        {"[]Insert Query ---FAILED---- in message Table ", "", "", false}};
    messages_table = std::make_unique<messages>();
    recipients_table = std::make_unique<recipients>();
    write_store_rows(message_log, writer, [this](const QString &file, const row_source &shared, row_writer &rows) {
        const QList<message_record> &message_records =
            records_of(file, "Message", *messages_table, &specific_table::struct_messages_QList);
        const QList<recipient_record> &recipient_records = recipients_of(file);
        const recipient_index recipients_by_time(recipient_records, &recipient_record::message_time_QString);
        QSet<QString> seen_times;
        for (const message_record &message : message_records) {
            if (cancel_extraction_bool) {
                return;
            }
            if (seen_times.contains(message.message_time_QString)) {
                continue;
            }
            seen_times.insert(message.message_time_QString);
            const std::vector<int> positions = recipients_by_time.positions_of(message.message_time_QString);
            if (positions.empty()) {
                continue;
            }
            row_values row{
                {"system_user", shared.system_user},
                {"domain_user", shared.domain_user},
                {"from_str", message.from_str_QString},
                {"sender_name", message.sender_name_QString},
                {"to_str", receivers_of(positions, recipient_records)},
                {"subject", QLatin1String("") + message.subject_prefix_QString + message.subject_QString},
                {"message", message.message_text_QString.trimmed()},
                {"message_date_sent", epoch_text_of(message.date_sent_QString)},
            };
            append_source_columns(row, shared);
            rows.insert(row);
        }
    });
    messages_table.reset();
    recipients_table.reset();
}
