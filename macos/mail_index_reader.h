/// The look-ups of one index of the macOS mail store ("Envelope Index"): the texts that its messages name by row ids.
/// Statements are prepared once and serve as long as the index is open. Row ids are texts as the index holds them; NULL
/// finds nothing, and what is not found is a null text.
///
/// Each look-up logs its start, its end and the failure of its statement under its own name. Cancelled within its rows,
/// or where a mailbox has no account, it ends without logging so.
#pragma once

#include "core/source_session.h"

#include <QHash>
#include <QString>

#include <atomic>

/// The recipients of a message, addresses joined with ", "; blind copies are not among them.
struct struct_recipients
{
    QString to_str;
    QString cc;
};

struct struct_mailbox_detail
{
    QString mailbox_detail; ///< all that is known, each value behind its label, joined with ";"
    QString mailbox_name;
    QString mailbox_account_name;
    QString mailbox_url; ///< decoded
};

/// One look-up: the operation that its log lines name, and its statements, the second for the names that the columns
/// have in later generations (none: nullptr).
struct index_look_up
{
    operation_log log;
    const char *statement;
    const char *later_statement;
    failure_text failure;
};

/// Those that both families of the index have.
struct index_look_ups
{
    index_look_up sender;
    index_look_up subject;
    index_look_up attachments;
    index_look_up recipients;
};

class mail_index_reader
{
public:
    mail_index_reader(const mail_index_reader &) = delete;
    mail_index_reader &operator=(const mail_index_reader &) = delete;

    /// Out: address + "; : ;" + comment.
    QString sub_extract_sender_address(const QString &sender_id);
    /// Out: the trimmed subject. Logs neither start nor end.
    QString sub_extract_subject_text(const QString &subject_id);
    /// Out: the names joined with "; "; null when cancelled.
    QString sub_extract_attachmented_filenames(const QString &row_id);
    /// Out: those so far, each with ", " behind it, when cancelled.
    struct_recipients sub_extract_receiver_address(const QString &row_id);

protected:
    /// The session and the look-ups outlive the reader. A flag that is raised ends the look-ups.
    mail_index_reader(source_session &index, const index_look_ups &look_ups, const std::atomic<bool> &cancel_flag);
    ~mail_index_reader() = default;

private:
    const index_look_ups &look_ups;
    const std::atomic<bool> &is_cancelled;
    source_query senders;
    source_query subjects;
    source_query attachments;
    source_query recipients;
    source_query recipient_addresses;
};

/// The index of V3 to V9.
class later_index_reader : public mail_index_reader
{
public:
    /// The names of the accounts are read from the rows of the result database.
    later_index_reader(source_session &index, result_session &destination, const std::atomic<bool> &cancel_flag);

    /// Out: all empty for a mailbox of an account that has no row in accounts; "On My Mac" has none and needs none.
    struct_mailbox_detail sub_extract_mailbox_detail_11(const QString &mailbox_id);

private:
    struct known_mailbox
    {
        struct_mailbox_detail detail;
        bool has_account = true;
    };

    bool read_mailbox(const QString &mailbox_id, known_mailbox &mailbox);

    source_query mailboxes;
    source_query accounts;
    QHash<QString, known_mailbox> known_mailboxes; // by id: a mailbox holds thousands of messages
};

/// The index of V2.
class earlier_index_reader : public mail_index_reader
{
public:
    earlier_index_reader(source_session &index, const std::atomic<bool> &cancel_flag);

    /// Out: the trimmed URL, not decoded.
    QString sub_extract_mailbox_url(const QString &mailbox_id);

private:
    source_query mailboxes;
};
