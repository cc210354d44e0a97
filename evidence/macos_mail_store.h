/// Writes one generation of a macOS mail store: its folder ("…/Library/Mail/V4"), the index in it and the mail files.
#pragma once

#include "evidence/emlx_file.h"
#include "evidence/known_rows.h"
#include "evidence/macos_index_layout.h"
#include "evidence/sqlite_file.h"

#include <QString>
#include <QVariant>

#include <initializer_list>
#include <memory>

namespace evidence {

/// A row of "messages". QVariant() is SQL NULL, and any column takes any type, as in a damaged index. A member whose
/// column the form lacks is not written.
struct macos_message
{
    QVariant row_id;         ///< NULL: assigned by the database
    QVariant message_id = 0; ///< a hash of the mail's Message-Id
    QVariant in_reply_to;
    QVariant sender; ///< from add_address; NULL in drafts
    QVariant subject_prefix;
    QVariant subject;   ///< from add_subject
    QVariant date_sent; ///< Unix seconds, as the three below
    QVariant date_received;
    QVariant date_created;
    QVariant date_last_viewed;
    QVariant mailbox; ///< from add_mailbox
    QVariant flags = 0;
    QVariant read = 0;
    QVariant flagged = 0;
    QVariant size = 0;
    QVariant type;
    QVariant conversation_id = 0;
    QVariant snippet;
};

struct macos_mailbox_counts
{
    QVariant total = 0;
    QVariant unread = 0;
    QVariant unseen = 0;
    QVariant deleted = 0;
};

class macos_mail_store
{
public:
    static constexpr int recipient_to = 0;
    static constexpr int recipient_cc = 1;
    static constexpr int recipient_bcc = 2;

    /// In: the folder of the generation, which is made with the index in it.
    macos_mail_store(const QString &folder, macos_index_form form, sqlite_storage storage);
    ~macos_mail_store();

    /// The row ids to put into messages and recipients. A text that stands already gives the row it has; addresses are
    /// compared without case, as on the computer.
    qint64 add_mailbox(const QString &url, const macos_mailbox_counts &counts = {});
    qint64 add_subject(const QString &subject);
    qint64 add_address(const QString &address, const QString &comment = QLatin1String(""));

    /// Out: the row id of the message, which also names its mail file.
    qint64 add_message(const macos_message &message);
    /// The recipients of a message of one type, in their positions from 0 on; call it once a message and type.
    void add_recipients(qint64 message_row_id, std::initializer_list<qint64> addresses, int type = recipient_to);
    void add_recipient(qint64 message_row_id, const QVariant &address, const QVariant &type, int position);
    /// The index's row of an attachment; see add_attachment_file for the file.
    void add_attachment(qint64 message_row_id, const QVariant &name);

    /// The mail file of a row: "<row id>.emlx", or "<row id>.partial.emlx" for a partial message. The mailbox is a
    /// folder below the store such as "IMAP-anna@mail.example.org/INBOX.mbox". Out: its path.
    QString add_emlx(const QString &mailbox_folder, qint64 row_id, const emlx_message &message);
    /// The same with any content and any name.
    QString add_emlx(const QString &mailbox_folder, qint64 row_id, const QString &file_name, const QByteArray &content);
    /// The file of an attachment, beside the mail file; part is such as "2" or "2.3". Out: its path.
    QString add_attachment_file(const QString &mailbox_folder, qint64 row_id, const QString &part, const QString &name,
                                const QByteArray &content);

    /// The index itself, for what no operation here writes.
    sqlite_file &index() { return index_file; }
    QString index_path() const { return folder_path + QLatin1String("/MailData/Envelope Index"); }
    /// Without a slash at its end.
    QString folder() const { return folder_path; }

    /// Commits the index and leaves it in its form; only mail files can be added behind it.
    void finish();

private:
    struct statements;

    /// The folder above "Messages" and "Attachments" for a row.
    QString data_folder(const QString &mailbox_folder, qint64 row_id) const;

    QString folder_path;
    sqlite_file index_file;
    std::unique_ptr<statements> inserts; // destroyed before the database its statements belong to
    known_rows mailboxes;
    known_rows subjects;
    known_rows addresses;
    QString made_folder; ///< the folder made last: mails come mailbox by mailbox
};

} // namespace evidence
