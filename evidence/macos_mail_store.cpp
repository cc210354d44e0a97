#include "evidence/macos_mail_store.h"

#include "evidence/files.h"

namespace evidence {

namespace {

/// The folders of a mail's number: the digits of the thousands, the last one first.
QString thousands_folders(qint64 row_id)
{
    QString folders;
    for (qint64 thousands = row_id / 1000; thousands > 0; thousands /= 10) {
        folders += QString::number(thousands % 10) + QLatin1Char('/');
    }
    return folders;
}

} // namespace

struct macos_mail_store::statements
{
    row_inserter message;
    row_inserter mailbox;
    row_inserter recipient;
    row_inserter attachment;
    row_inserter subject;
    row_inserter address;
};

macos_mail_store::macos_mail_store(const QString &folder, macos_index_form form, sqlite_storage storage)
    : folder_path(folder), index_file(index_path(), storage)
{
    const macos_index_layout &layout = layout_of(form);
    index_file.run(QLatin1String(layout.messages));
    index_file.run(QLatin1String(layout.tables));
    inserts.reset(new statements{
        index_file.prepare_insert(layout.insert_message),
        index_file.prepare_insert("INSERT INTO mailboxes (url, total_count, unread_count, unseen_count, deleted_count) "
                                  "VALUES (?, ?, ?, ?, ?)"),
        index_file.prepare_insert(layout.insert_recipient), index_file.prepare_insert(layout.insert_attachment),
        index_file.prepare_insert("INSERT INTO subjects (subject) VALUES (?)"),
        index_file.prepare_insert("INSERT INTO addresses (address, comment) VALUES (?, ?)")});
}

macos_mail_store::~macos_mail_store() = default;

qint64 macos_mail_store::add_mailbox(const QString &url, const macos_mailbox_counts &counts)
{
    return row_id_of(mailboxes, url, inserts->mailbox, url, counts.total, counts.unread, counts.unseen, counts.deleted);
}

qint64 macos_mail_store::add_subject(const QString &subject)
{
    return row_id_of(subjects, subject, inserts->subject, subject);
}

qint64 macos_mail_store::add_address(const QString &address, const QString &comment)
{
    return row_id_of(addresses, address_key(address, comment), inserts->address, address, comment);
}

qint64 macos_mail_store::add_message(const macos_message &message)
{
    return inserts->message(message.row_id, message.message_id, message.sender, message.subject_prefix, message.subject,
                            message.date_sent, message.date_received, message.date_last_viewed, message.mailbox,
                            message.flags, message.read, message.flagged, message.size, message.type,
                            message.conversation_id, message.snippet, message.date_created, message.in_reply_to);
}

void macos_mail_store::add_recipients(qint64 message_row_id, std::initializer_list<qint64> recipients, int type)
{
    int position = 0;
    for (const qint64 address : recipients) {
        add_recipient(message_row_id, address, type, position++);
    }
}

void macos_mail_store::add_recipient(qint64 message_row_id, const QVariant &address, const QVariant &type, int position)
{
    inserts->recipient(message_row_id, address, type, position);
}

void macos_mail_store::add_attachment(qint64 message_row_id, const QVariant &name)
{
    inserts->attachment(message_row_id, name);
}

QString macos_mail_store::add_emlx(const QString &mailbox_folder, qint64 row_id, const emlx_message &message)
{
    const QLatin1String suffix(message.is_partial ? ".partial.emlx" : ".emlx");
    return add_emlx(mailbox_folder, row_id, QString::number(row_id) + suffix, emlx_bytes(message));
}

QString macos_mail_store::add_emlx(const QString &mailbox_folder, qint64 row_id, const QString &file_name,
                                   const QByteArray &content)
{
    const QString folder = data_folder(mailbox_folder, row_id) + QLatin1String("Messages/");
    if (folder != made_folder) {
        make_folder(folder);
        made_folder = folder;
    }
    QString path = folder + file_name;
    write_file(path, content);
    return path;
}

QString macos_mail_store::add_attachment_file(const QString &mailbox_folder, qint64 row_id, const QString &part,
                                              const QString &name, const QByteArray &content)
{
    const QString folder = data_folder(mailbox_folder, row_id) + QLatin1String("Attachments/") +
                           QString::number(row_id) + QLatin1Char('/') + part + QLatin1Char('/');
    make_folder(folder);
    QString path = folder + name;
    write_file(path, content);
    return path;
}

QString macos_mail_store::data_folder(const QString &mailbox_folder, qint64 row_id) const
{
    return folder_path + QLatin1Char('/') + mailbox_folder +
           QLatin1String("/0D5A7E1C-41B6-4E0F-9C33-5B1D2F6A8E70/Data/") + thousands_folders(row_id);
}

void macos_mail_store::finish()
{
    inserts.reset();
    index_file.finish();
}

} // namespace evidence
