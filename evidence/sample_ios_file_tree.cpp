#include "evidence/sample_ios_file_tree.h"

#include "evidence/ios_file_tree.h"
#include "evidence/sample_random.h"
#include "evidence/sample_text.h"

#include <QDateTime>
#include <QLocale>

#include <algorithm>
#include <vector>

namespace evidence {

namespace {

constexpr qint64 first_date = 1577836800; // 2020-01-01 in Unix seconds
constexpr qint64 seconds_between_mails = 700;
constexpr uint64_t message_flags = 8590195713; // a mail that was read, as its file has it

/// A mail account of the device with the mailboxes it has below "<scheme>://<id>/".
struct account_layout
{
    const char *scheme;
    const char *description;
    const char *type;
    const char *inbox;
    const char *all_mail; ///< where every mail of the account stands a second time; empty: nowhere
    const char *drafts;
    const char *archive;
};

// clang-format off
constexpr std::array<account_layout, 3> layouts = {{
    {"imap", "Gmail",       "com.apple.account.Google",   "INBOX", "%5BGmail%5D/%5CAllMail", "%5BGmail%5D/%5CDrafts", "Reisen%20%26%20Pl%C3%A4ne"},
    {"imap", "Büro (IMAP)", "com.apple.account.IMAP",     "INBOX", "",                       "Entw%C3%BCrfe",         "Archiv/2023/%E4%BC%9A%E8%AD%B0"},
    {"ews",  "Exchange",    "com.apple.account.Exchange", "Inbox", "",                       "Drafts",                "Projekte/B%C3%BCro%25"},
}};
// clang-format on

struct sample_account
{
    QString id;
    qint64 inbox = 0;
    qint64 all_mail = 0; ///< 0: none
    qint64 drafts = 0;
    qint64 archive = 0;
};

/// The state of one tree while it is written.
class writer
{
public:
    writer(const QString &root, const sample_ios_file_tree_options &options)
        : options(options), random(options.seed), tree(root, options.storage),
          people_count(std::max<uint64_t>(20, static_cast<uint64_t>(options.message_count) / 12))
    {
    }

    sample_ios_file_tree_summary write()
    {
        for (const account_layout &layout : layouts) {
            add_account(layout);
        }
        summary.mailboxes += 1;
        local_mailbox = tree.add_mailbox(QStringLiteral("local:///Auf%20meinem%20iPhone"));
        summary.last_selected_account = accounts.front().id;
        tree.write_mailbox_collections(summary.last_selected_account);
        while (summary.messages < options.message_count) {
            add_mail();
        }
        tree.finish();
        return summary;
    }

private:
    void add_account(const account_layout &layout);
    qint64 mailbox(const account_layout &layout, const QString &id, const char *name);
    void add_mail();
    void add_row(const ios_message &message, const std::vector<qint64> &recipients);
    std::vector<qint64> pick_recipients();
    qint64 address_of(uint64_t person);
    void add_mail_file(const ios_message &message, const QString &subject, const sample_person &sender);

    const sample_ios_file_tree_options &options;
    sample_random random;
    ios_file_tree tree;
    uint64_t people_count;
    std::vector<sample_account> accounts;
    qint64 local_mailbox = 0;
    qint64 next_row_id = 1;
    qint64 next_global_id = 1;
    sample_ios_file_tree_summary summary;
};

/// Each account of the settings has a parent, whose description is the name the user gave.
void writer::add_account(const account_layout &layout)
{
    sample_account account;
    account.id = uuid_of(random);
    account_row parent;
    parent.type = tree.accounts().add_account_type(QLatin1String(layout.type), QString::fromUtf8(layout.description));
    parent.date = 704051992.309041 + static_cast<double>(random.below(10000000)) + 0.25;
    parent.description = QString::fromUtf8(layout.description);
    parent.identifier = uuid_of(random);
    parent.owning_bundle_id = QStringLiteral("com.apple.Preferences");
    parent.user_name = person_of(accounts.size()).address;
    account_row row = parent;
    row.parent = tree.accounts().add_account(parent);
    row.description = QString();
    row.identifier = account.id;
    row.owning_bundle_id = QStringLiteral("com.apple.accountsd");
    tree.accounts().add_account(row);

    account.inbox = mailbox(layout, account.id, layout.inbox);
    account.all_mail = *layout.all_mail != '\0' ? mailbox(layout, account.id, layout.all_mail) : 0;
    account.drafts = mailbox(layout, account.id, layout.drafts);
    account.archive = mailbox(layout, account.id, layout.archive);
    accounts.push_back(account);
}

qint64 writer::mailbox(const account_layout &layout, const QString &id, const char *name)
{
    ++summary.mailboxes;
    return tree.add_mailbox(QLatin1String(layout.scheme) + QLatin1String("://") + id + QLatin1Char('/') +
                            QLatin1String(name));
}

void writer::add_mail()
{
    const sample_account &account = accounts[random.below(accounts.size())];
    const bool is_draft = random.one_in(40);
    const sample_person sender = person_of(random.below(people_count));
    const QString subject = subject_of(random);
    const qint64 sent = first_date + next_global_id * seconds_between_mails + static_cast<qint64>(random.below(600));

    ios_message message;
    message.message_id = static_cast<qint64>(random.bits());
    message.global_message_id = next_global_id++;
    message.sender = is_draft ? QVariant() : QVariant(tree.add_address(sender.address, sender.name));
    message.subject = tree.add_subject(subject);
    message.summary = random.one_in(10) ? QVariant() : QVariant(tree.add_summary(text_of(random, 120)));
    message.date_sent = is_draft ? QVariant() : QVariant(sent);
    message.date_received = sent + static_cast<qint64>(random.below(90));
    message.mailbox = is_draft            ? account.drafts
                      : random.one_in(5)  ? account.archive
                      : random.one_in(50) ? local_mailbox
                                          : account.inbox;
    message.read = random.one_in(4) ? 0 : 1;
    message.date_last_viewed = message.read == 1 ? QVariant(sent + 3600) : QVariant();
    message.flagged = random.one_in(30) ? 1 : 0;
    message.conversation_id = static_cast<qint64>(random.bits() >> 1U);
    const std::vector<qint64> recipients = is_draft && random.one_in(2) ? std::vector<qint64>() : pick_recipients();

    add_row(message, recipients);
    if (account.all_mail != 0 && message.mailbox == account.inbox && summary.messages < options.message_count) {
        message.mailbox = account.all_mail;
        add_row(message, recipients);
    }
    if (!random.one_in(12)) {
        add_mail_file(message, subject, sender);
    }
}

/// Deleted mails leave gaps in the row ids.
void writer::add_row(const ios_message &message, const std::vector<qint64> &recipients)
{
    ios_message row = message;
    row.row_id = next_row_id;
    next_row_id += random.one_in(20) ? 3 : 1;
    const qint64 row_id = tree.add_message(row);
    int position = 0;
    for (const qint64 recipient : recipients) {
        tree.add_recipient(row_id, recipient, ios_file_tree::recipient_to, position++);
    }
    summary.recipients += position;
    ++summary.messages;
}

/// One to three, and now and then the first of them once more.
std::vector<qint64> writer::pick_recipients()
{
    std::vector<qint64> recipients;
    for (uint64_t count = 1 + random.below(3); count > 0; --count) {
        recipients.push_back(address_of(random.below(people_count)));
    }
    if (random.one_in(15)) {
        recipients.push_back(recipients.front());
    }
    return recipients;
}

qint64 writer::address_of(uint64_t number)
{
    const sample_person person = person_of(number);
    return tree.add_address(person.address, person.name);
}

void writer::add_mail_file(const ios_message &message, const QString &subject, const sample_person &sender)
{
    const qint64 global_id = message.global_message_id.toLongLong();
    const QDateTime received = QDateTime::fromSecsSinceEpoch(message.date_received.toLongLong(), Qt::UTC);
    emlx_message mail;
    mail.headers = {
        {"From", encoded_header(sender.name) + " <" + sender.address.toUtf8() + '>'},
        {"Subject", encoded_header(subject)},
        {"Date", QLocale::c().toString(received, QStringLiteral("ddd, d MMM yyyy hh:mm:ss '+0000'")).toLatin1()},
        {"Message-Id", '<' + QByteArray::number(message.message_id.toULongLong(), 16) + "@example.com>"},
    };
    mail.text = text_of(random, options.emlx_text_characters);
    mail.properties = {{"date-received", message.date_received},
                       {"flags", static_cast<qint64>(message_flags)},
                       {"remote-id", QString::number(global_id)}};
    if (random.one_in(8)) {
        mail.is_partial = true;
        mail.attachments = {{QStringLiteral("Übersicht.pdf"), "application/pdf", QByteArray("%PDF-1.4\n%\n")}};
        tree.add_emlx(global_id, QStringLiteral("partial.emlx"), mail);
        tree.add_file(tree.message_folder_path(global_id).mid(tree.root().size()) + QStringLiteral("2.emlxpart"),
                      mail.attachments.front().content.toBase64());
    } else {
        tree.add_emlx(global_id, QStringLiteral("full.emlx"), mail);
    }
    ++summary.emlx_files;
}

} // namespace

sample_ios_file_tree_summary write_sample_ios_file_tree(const QString &root,
                                                        const sample_ios_file_tree_options &options)
{
    return writer(root, options).write();
}

} // namespace evidence
