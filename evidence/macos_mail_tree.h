/// Builds the mail data of a macOS volume below a root folder, piece by piece:
///
///     macos_mail_tree tree(folder);
///     macos_mail_store &store = tree.add_store(QStringLiteral("anna"), 4);
///     macos_message mail;
///     mail.mailbox = store.add_mailbox(QStringLiteral("local:///Notes"));
///     mail.subject = store.add_subject(QStringLiteral("Hello"));
///     mail.sender = store.add_address(QStringLiteral("ben@example.org"), QStringLiteral("Ben"));
///     const qint64 row_id = store.add_message(mail);
///     store.add_recipients(row_id, {store.add_address(QStringLiteral("anna@example.org"))});
///     store.add_attachment(row_id, QStringLiteral("plan.pdf"));
///     const QString box = QStringLiteral("Mailboxes/Notes.mbox");
///     const QString file = store.add_emlx(box, row_id, emlx_message());
///     store.add_attachment_file(box, row_id, QStringLiteral("2"), QStringLiteral("plan.pdf"), "%PDF-");
///     write_file_metadata(file, {{"kMDItemLastUsedDate", instant}}, metadata_place::apple_double);
///     tree.finish();
///
/// Everything that fails throws evidence_error.
#pragma once

#include "evidence/accounts_database.h"
#include "evidence/file_metadata_writer.h"
#include "evidence/macos_mail_store.h"
#include "evidence/property_list_file.h"

#include <map>
#include <vector>

namespace evidence {

/// An element of OpenedAttachments.plist or OpenedAttachmentsV2.plist; an invalid field leaves its key out.
struct macos_opened_attachment
{
    QVariant message_id;       ///< a text
    QVariant modified;         ///< a QDateTime
    QVariant opened;           ///< a QDateTime
    QVariant part_number;      ///< a text
    QVariant path;             ///< a text, from the root of the volume
    operator QVariant() const; // NOLINT(google-explicit-constructor): an element of a list like any other
};

class macos_mail_tree
{
public:
    /// In: the root, which is made, and the form in which all its databases are left. Nothing else stands at first.
    explicit macos_mail_tree(const QString &root, sqlite_storage storage = sqlite_storage::plain);

    /// The store of a user in a generation, 2 to 9; each may be added once. It lives as long as the tree.
    macos_mail_store &add_store(const QString &user, int generation);
    macos_mail_store &add_store(const QString &user, int generation, macos_index_form form);

    /// Accounts3.sqlite (generation 3) or Accounts4.sqlite (4) of a user, made by the first call.
    accounts_database &accounts(const QString &user, int generation);

    /// A file below the user's folder of opened attachments, such as "4C1F…/plan.pdf". Out: its path.
    QString add_download(const QString &user, const QString &relative_path, const QByteArray &content);
    /// One of the user's two lists of opened attachments: "OpenedAttachments.plist" or "OpenedAttachmentsV2.plist".
    /// Elements are usually macos_opened_attachment; the root may be of any kind. Out: its path.
    QString write_opened_attachments(const QString &user, const QString &file_name, const QVariant &root_value,
                                     property_list_form form = property_list_form::binary);

    /// A file of any content, its path relative to the root; its folder is made. Out: its path.
    QString add_file(const QString &relative_path, const QByteArray &content);

    /// Ends in a slash.
    QString root() const { return root_path; }
    /// The user's home without a slash at its end, whether it stands or not.
    QString home_of(const QString &user) const;
    QString store_folder(const QString &user, int generation) const;
    QString downloads_folder(const QString &user) const;

    /// Commits all databases and leaves them in their form.
    void finish();

private:
    QString root_path;
    sqlite_storage storage;
    std::vector<std::unique_ptr<macos_mail_store>> stores;
    std::map<QString, accounts_database> account_databases; // by path
};

} // namespace evidence
