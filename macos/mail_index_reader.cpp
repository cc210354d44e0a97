// The look-ups of the two families of the mail index. Fill no table themselves.
#include "macos/mail_index_reader.h"

#include "core/joined_text.h"

#include "core/look_up_table.h"
#include "services/percent_encoding.h"

namespace {

// --- V3 to V9 --------------------------------------------------------------------------------------------------------

constexpr index_look_ups look_ups_of_later_index{
    {operation_log{"QString mail_macos::sub_extract_sender_address_11(QString, QString)"},
     "select address,comment from addresses where ROWID = ?", nullptr,
     failure_text{"Execute query_address -------FAILED-------", "Error :- ", ""}},
    {operation_log{"QString mail_macos::sub_extract_subject_text_11(QString, QString)"},
     "select subject from subjects where ROWID = ?", nullptr,
     failure_text{"Execute query_subject -------FAILED--------", "Error :- ", ""}},
    {operation_log{"QString mail_macos::sub_extract_attachmented_filenames_11(QString, QString)"},
     "select name from attachments where message_id = ?", "select name from attachments where message = ?",
     failure_text{"Execute query_attachment -22------FAILED--------", "Error :- ", ""}},
    {operation_log{"struct_recipients mail_macos::sub_extract_receiver_address_11(QString, QString)"},
     "select address_id,type from recipients where message_id = ?",
     "select address,type from recipients where message = ?",
     failure_text{"Execute query_recipient_id ------FAILED------", "Error :- ", ""}},
};

constexpr operation_log log_of_mailbox_detail{
    "struct_mailbox_detail mail_macos::sub_extract_mailbox_detail_11(QString, QString, QSqlQuery &)"};
constexpr const char *select_mailbox_detail =
    "select url,total_count, unread_count, unseen_count, deleted_count from mailboxes where ROWID = ?";
constexpr failure_text select_mailbox_failure{"Execute query_mailbox ------FAILED------", "Error :- ", ""};
constexpr const char *select_account = "select user_name from accounts where account_identifier LIKE ?";
constexpr failure_text select_account_failure{"select_account ------FAILED------", "Error :- ", "", false};

// An index can name millions of mailboxes.
constexpr int known_mailboxes_limit = 10000;

// --- V2 --------------------------------------------------------------------------------------------------------------

constexpr index_look_ups look_ups_of_earlier_index{
    {operation_log{"QString mail_macos::sub_extract_sender_address(QString, QString)"},
     "select address,comment from addresses where ROWID = ?", nullptr,
     failure_text{"Execute query_address -------FAILED-------", "Error :- ", ""}},
    {operation_log{"QString mail_macos::sub_extract_subject_text(QString, QString)"},
     "select subject from subjects where ROWID = ?", nullptr,
     failure_text{"Execute query_subject -------FAILED--------", "Error :- ", ""}},
    {operation_log{"QString mail_macos::sub_extract_attachmented_filenames(QString, QString)"},
     "select name,type from attachments where message_id = ?", nullptr,
     failure_text{"Execute query_attachment -11------FAILED--------", "Error :- ", ""}},
    {operation_log{"struct_recipients mail_macos::sub_extract_receiver_address(QString, QString)"},
     "select address_id,type from recipients where message_id = ?", nullptr,
     failure_text{"Execute query_recipient_id ------FAILED------", "Error :- ", ""}},
};

constexpr operation_log log_of_mailbox_url{"QString mail_macos::sub_extract_mailbox_url(QString, QString)"};
constexpr const char *select_mailbox_url = "select url from mailboxes where ROWID = ?";

// --- Both ------------------------------------------------------------------------------------------------------------

constexpr const char *select_recipient_address = "select address from addresses where ROWID = ?";
constexpr failure_text select_recipient_address_failure{"Execute query_recipient ------FAILED------", "Error :- ", ""};

// Every name that the tables of an index have had. Their ROWID may be a column like any other.
constexpr look_up_table looked_up_tables[] = {
    {"addresses", "ROWID,address,comment", "ROWID"},
    {"subjects", "ROWID,subject", "ROWID"},
    {"mailboxes", "ROWID,url,total_count,unread_count,unseen_count,deleted_count", "ROWID"},
    {"mailboxes", "ROWID,url", "ROWID"},
    {"recipients", "message_id,address_id,type", "message_id"},
    {"recipients", "message,address,type", "message"},
    {"attachments", "message_id,name,type", "message_id"},
    {"attachments", "message_id,name", "message_id"},
    {"attachments", "message,name", "message"},
};

source_query query_of(source_session &index, const index_look_up &look_up)
{
    if (look_up.later_statement) {
        return {index, look_up.log, {look_up.statement, look_up.later_statement}, look_up.failure};
    }
    return {index, look_up.log, look_up.statement, look_up.failure};
}

// In: entries that each have a separator and a blank behind them.
QString without_last_separator(const QString &entries)
{
    QString text = entries.trimmed();
    if (!text.isEmpty()) {
        text.chop(1);
    }
    return text;
}

QString url_of(const QString &stored)
{
    const QByteArray bytes = percent_decoded(stored.toUtf8());
    return QString::fromUtf8(bytes.constData(), bytes.size());
}

// The host part of a mailbox URL.
QString account_id_of(const QString &url)
{
    const QString separator = QStringLiteral("://");
    const int begin = url.indexOf(separator);
    const QString behind_scheme = begin < 0 ? url : url.mid(begin + separator.size());
    return behind_scheme.left(behind_scheme.indexOf(QLatin1Char('/')));
}

} // namespace

mail_index_reader::mail_index_reader(source_session &index, const index_look_ups &generation,
                                     const std::atomic<bool> &cancel_flag)
    : look_ups(generation), is_cancelled(cancel_flag), senders(query_of(index, look_ups.sender)),
      subjects(query_of(index, look_ups.subject)), attachments(query_of(index, look_ups.attachments)),
      recipients(query_of(index, look_ups.recipients)),
      recipient_addresses(index, look_ups.recipients.log, select_recipient_address, select_recipient_address_failure)
{
    for (const look_up_table &table : looked_up_tables) {
        make_look_up_fast(index, table);
    }
}

QString mail_index_reader::sub_extract_sender_address(const QString &sender_id)
{
    look_ups.sender.log("start");
    QString sender;
    if (senders.execute({sender_id}) && senders.next()) {
        sender = senders.text("address") + QLatin1String("; : ;") + senders.text("comment");
    }
    look_ups.sender.log("end");
    return sender;
}

QString mail_index_reader::sub_extract_subject_text(const QString &subject_id)
{
    return subjects.execute({subject_id}) && subjects.next() ? subjects.text("subject").trimmed() : QString();
}

QString mail_index_reader::sub_extract_attachmented_filenames(const QString &row_id)
{
    look_ups.attachments.log("start");
    joined_text names{look_ups.attachments.log};
    attachments.execute({row_id});
    while (attachments.next()) {
        if (is_cancelled) {
            return QString();
        }
        names.append(attachments.text("name"), QStringLiteral("; "));
    }
    look_ups.attachments.log("end");
    return without_last_separator(names.text());
}

struct_recipients mail_index_reader::sub_extract_receiver_address(const QString &row_id)
{
    look_ups.recipients.log("start");
    joined_text to{look_ups.recipients.log};
    joined_text cc{look_ups.recipients.log};
    recipients.execute({row_id});
    while (recipients.next()) {
        if (is_cancelled) {
            return {to.text(), cc.text()};
        }
        const QString address_id = recipients.text_at(0);
        const QString type = recipients.text("type");
        if (address_id.isEmpty() || !recipient_addresses.execute({address_id}) || !recipient_addresses.next()) {
            continue;
        }
        if (type == QLatin1String("0")) {
            to.append(recipient_addresses.text("address"), QStringLiteral(", "));
        } else if (type == QLatin1String("1")) {
            cc.append(recipient_addresses.text("address"), QStringLiteral(", "));
        }
    }
    look_ups.recipients.log("end");
    return {without_last_separator(to.text()), without_last_separator(cc.text())};
}

later_index_reader::later_index_reader(source_session &index, result_session &destination,
                                       const std::atomic<bool> &cancel_flag)
    : mail_index_reader(index, look_ups_of_later_index, cancel_flag),
      mailboxes(index, log_of_mailbox_detail, select_mailbox_detail, select_mailbox_failure),
      accounts(destination, log_of_mailbox_detail, select_account, select_account_failure)
{
}

struct_mailbox_detail later_index_reader::sub_extract_mailbox_detail_11(const QString &mailbox_id)
{
    log_of_mailbox_detail("start");
    known_mailbox mailbox;
    const auto known = known_mailboxes.constFind(mailbox_id);
    if (known != known_mailboxes.constEnd()) {
        mailbox = *known;
    } else if (read_mailbox(mailbox_id, mailbox)) {
        if (known_mailboxes.size() == known_mailboxes_limit) {
            known_mailboxes.clear();
        }
        known_mailboxes.insert(mailbox_id, mailbox);
    }
    if (mailbox.has_account) {
        log_of_mailbox_detail("End");
    }
    return mailbox.detail;
}

// Out: false when a statement failed; it is tried and logged again for the next message.
bool later_index_reader::read_mailbox(const QString &mailbox_id, known_mailbox &mailbox)
{
    if (!mailboxes.execute({mailbox_id})) {
        return false;
    }
    if (!mailboxes.next()) {
        return true;
    }
    const QString url = url_of(mailboxes.text("url"));
    const QString account_id = account_id_of(url);
    QString account_name = QStringLiteral("On My Mac");
    if (!url.startsWith(QLatin1String("local://"))) {
        mailbox.has_account = false;
        if (account_id.isEmpty()) {
            return true;
        }
        if (!accounts.execute({account_id})) {
            return false;
        }
        if (!accounts.next()) {
            return true;
        }
        mailbox.has_account = true;
        account_name = accounts.text("user_name");
    }
    const QString name = url.mid(url.lastIndexOf(QLatin1Char('/')) + 1);
    const std::pair<const char *, QString> parts[] = {
        {"Mailbox Account Name: ", account_name},
        {"Mailbox Account ID: ", account_id},
        {"Mailbox Name: ", name},
        {"Mailbox URL: ", url},
        {"Total Message Count: ", mailboxes.text("total_count")},
        {"Unread Message Count: ", mailboxes.text("unread_count")},
        {"Unseen Message Count: ", mailboxes.text("unseen_count")},
        {"Deleted Message Count: ", mailboxes.text("deleted_count")},
    };
    QString detail;
    for (const auto &[label, value] : parts) {
        if (!value.isEmpty()) {
            detail += QLatin1String(label) + value + QLatin1Char(';');
        }
    }
    if (detail.endsWith(QLatin1Char(';'))) {
        detail.chop(1);
    }
    mailbox.detail = {detail, name, account_name, url};
    return true;
}

earlier_index_reader::earlier_index_reader(source_session &index, const std::atomic<bool> &cancel_flag)
    : mail_index_reader(index, look_ups_of_earlier_index, cancel_flag),
      mailboxes(index, log_of_mailbox_url, select_mailbox_url, select_mailbox_failure)
{
}

QString earlier_index_reader::sub_extract_mailbox_url(const QString &mailbox_id)
{
    log_of_mailbox_url("start");
    const QString url =
        mailboxes.execute({mailbox_id}) && mailboxes.next() ? mailboxes.text("url").trimmed() : QString();
    log_of_mailbox_url("End");
    return url;
}
