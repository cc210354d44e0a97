/// Builds the mail data of an iOS file system below a root folder, piece by piece:
///
///     ios_file_tree tree(folder);
///     ios_message mail;
///     mail.mailbox = tree.add_mailbox(QStringLiteral("imap://4F2B/INBOX"));
///     mail.subject = tree.add_subject(QStringLiteral("Hello"));
///     mail.sender = tree.add_address(QStringLiteral("anna@example.org"), QStringLiteral("Anna"));
///     mail.global_message_id = 17;
///     const qint64 row_id = tree.add_message(mail);
///     tree.add_recipients(row_id, {tree.add_address(QStringLiteral("ben@example.org"))});
///     tree.add_emlx(17, QStringLiteral("full.emlx"), emlx_message());
///     tree.finish();
///
/// Everything that fails throws evidence_error.
#pragma once

#include "evidence/accounts_database.h"
#include "evidence/emlx_file.h"
#include "evidence/known_rows.h"
#include "evidence/property_list_file.h"
#include "evidence/sqlite_file.h"

#include <QString>
#include <QVariant>

#include <initializer_list>
#include <memory>
#include <optional>

namespace evidence {

/// A row of "messages". QVariant() is SQL NULL, and any column takes any type, as in a damaged index.
struct ios_message
{
    QVariant row_id;                ///< NULL: assigned by the database
    QVariant message_id = 0;        ///< a hash of the mail's Message-Id
    QVariant global_message_id = 0; ///< names the folder of the mail file
    QVariant sender;                ///< from add_address; NULL in drafts
    QVariant subject;               ///< from add_subject
    QVariant summary;               ///< from add_summary
    QVariant date_sent;             ///< Unix seconds, as the two below
    QVariant date_received;
    QVariant date_last_viewed;
    QVariant mailbox; ///< from add_mailbox
    QVariant read = 0;
    QVariant flagged = 0;
    QVariant conversation_id = 0;
};

class ios_file_tree
{
public:
    static constexpr int recipient_to = 1;

    /// In: the root, which is made, and the form in which all its databases are left. Both indexes stand from here on;
    /// Accounts3.sqlite, MailboxCollections.plist and the mail files only when they are asked for.
    explicit ios_file_tree(const QString &root, sqlite_storage storage = sqlite_storage::plain);
    /// Finishes what was not finished, without a word when that fails.
    ~ios_file_tree();

    /// The row ids to put into messages and recipients. A text that stands already gives the row it has: as on the
    /// device, subjects and summaries are compared without their blanks at the end, addresses without case.
    qint64 add_mailbox(const QString &url);
    qint64 add_subject(const QString &subject);
    qint64 add_summary(const QString &summary);
    qint64 add_address(const QString &address, const QString &comment = QLatin1String(""));

    /// Out: the row id of the message.
    qint64 add_message(const ios_message &message);
    /// The recipients of a message of one type, in their positions from 0 on; call it once a message and type.
    void add_recipients(qint64 message_row_id, std::initializer_list<qint64> addresses, int type = recipient_to);
    void add_recipient(qint64 message_row_id, qint64 address, int type, int position);

    /// A mail file in the folder of that number, such as "full.emlx" or "partial.emlx". Out: its path.
    QString add_emlx(qint64 global_message_id, const QString &file_name, const emlx_message &message);
    /// A file of any content, its path relative to the root; its folder is made. Out: its path.
    QString add_file(const QString &relative_path, const QByteArray &content);

    /// MailboxCollections.plist, whose last selected item bears the id.
    void write_mailbox_collections(const QString &last_selected_id,
                                   property_list_form form = property_list_form::binary);
    /// The same file with any content.
    void write_mailbox_collections(const QVariant &content, property_list_form form);
    /// Accounts3.sqlite, made by the first call.
    accounts_database &accounts();

    /// The indexes themselves, for what no operation here writes.
    sqlite_file &envelope_index() { return envelope; }
    sqlite_file &protected_index() { return protected_file; }

    /// Ends in a slash.
    QString root() const { return root_path; }
    /// Paths of the four files, whether they stand or not, and of the folder above the mail files.
    QString envelope_index_path() const;
    QString protected_index_path() const;
    QString accounts_path() const;
    QString mailbox_collections_path() const;
    QString message_folder_path(qint64 global_message_id) const;

    /// Commits the databases and leaves them in their form; nothing is added behind it.
    void finish();

private:
    struct statements;

    QString root_path;
    sqlite_storage storage;
    sqlite_file envelope;
    sqlite_file protected_file;
    std::optional<accounts_database> accounts_file;
    std::unique_ptr<statements> inserts; // destroyed before the databases its statements belong to
    known_rows mailboxes;
    known_rows subjects;
    known_rows summaries;
    known_rows addresses;
};

} // namespace evidence
