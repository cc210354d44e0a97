#include "evidence/sample_macos_mail_tree.h"

#include "evidence/macos_configuration.h"
#include "evidence/macos_mail_tree.h"
#include "evidence/sample_emlx.h"
#include "evidence/sample_random.h"
#include "evidence/sample_text.h"

#include <QDateTime>

#include <algorithm>
#include <array>

namespace evidence {

namespace {

constexpr qint64 first_date = 1388534400; // 2014-01-01 in Unix seconds
constexpr qint64 seconds_between_mails = 400;
constexpr uint64_t people_divisor = 12;

/// A store with its part of the mails.
struct store_layout
{
    const char *user;
    int generation;
    int percent;
};

/// A mailbox: its URL, and its folder below the store.
struct mailbox_layout
{
    const char *url;
    const char *folder;
    int share; ///< in the draw of a mail's mailbox
};

/// An account: the scheme and identifier of its URLs, its user and its name.
struct account_layout
{
    const char *scheme;
    const char *identifier;
    const char *user_name;
    const char *description;
};

// clang-format off
constexpr std::array<store_layout, 3> volume_stores = {{
    {"anna", 6, 70},
    {"anna", 2, 10},
    {"jörg", 9, 20},
}};
constexpr store_layout single_store = {"anna", 6, 100};

// Mails of the last one are drafts.
constexpr std::array<mailbox_layout, 6> mailbox_layouts = {{
    {"imap://anna@mail.example.org/INBOX",                                         "IMAP-anna@mail.example.org/INBOX.mbox",                                    8},
    {"imap://9B6E1F20-3C4D-4E5A-8F60-A1B2C3D4E5F6/%5BGmail%5D/All%20Mail",         "9B6E1F20-3C4D-4E5A-8F60-A1B2C3D4E5F6/[Gmail].mbox/All Mail.mbox",         6},
    {"imap://9B6E1F20-3C4D-4E5A-8F60-A1B2C3D4E5F6/Reisen%20%26%20Pl%C3%A4ne",      "9B6E1F20-3C4D-4E5A-8F60-A1B2C3D4E5F6/Reisen & Pläne.mbox",                2},
    {"ews://17D2A0C4-55B1-4E0E-9E77-0C1B2A394857/Inbox",                           "17D2A0C4-55B1-4E0E-9E77-0C1B2A394857/Inbox.mbox",                         2},
    {"local:///Auf%20meinem%20Mac/%E4%BC%9A%E8%AD%B0",                             "Mailboxes/Auf meinem Mac.mbox/会議.mbox",                                 1},
    {"imap://anna@mail.example.org/Entw%C3%BCrfe",                                 "IMAP-anna@mail.example.org/Entwürfe.mbox",                                1},
}};

// Those that the mailboxes belong to.
constexpr std::array<account_layout, 3> account_layouts = {{
    {"imap", "anna@mail.example.org",                "anna@mail.example.org",      "Privat"},
    {"imap", "9B6E1F20-3C4D-4E5A-8F60-A1B2C3D4E5F6", "anna.mueller@gmail.example", "Gmail"},
    {"ews",  "17D2A0C4-55B1-4E0E-9E77-0C1B2A394857", "amueller@firma.example",     "Büro"},
}};
// clang-format on
constexpr size_t drafts = mailbox_layouts.size() - 1;

/// The state of one tree while it is written.
class writer
{
public:
    writer(const QString &root, const sample_macos_mail_tree_options &options)
        : options(options), random(options.seed), mails(random), tree(root, options.storage),
          people_count(std::max<uint64_t>(20, static_cast<uint64_t>(options.message_count) / people_divisor)),
          emlx_count(options.emlx_count < 0 ? options.message_count - options.message_count / 12 : options.emlx_count)
    {
        for (size_t mailbox = 0; mailbox < mailbox_layouts.size(); ++mailbox) {
            draw.insert(draw.end(), static_cast<size_t>(mailbox_layouts[mailbox].share), mailbox);
        }
    }

    sample_macos_mail_tree_summary write()
    {
        if (options.is_single_store) {
            add_store(single_store, options.message_count);
        } else {
            qint64 left = options.message_count;
            for (const store_layout &layout : volume_stores) {
                const bool is_last = &layout == &volume_stores.back();
                const qint64 count = is_last ? left : options.message_count * layout.percent / 100;
                add_store(layout, count);
                left -= count;
            }
            add_opened_attachments();
            add_configuration();
        }
        tree.finish();
        return summary;
    }

private:
    void add_store(const store_layout &layout, qint64 count);
    void add_mail(macos_mail_store &store, const std::vector<qint64> &mailboxes);
    sample_mail mail_with_people(macos_mail_store &store, qint64 row_id, bool is_draft);
    void add_recipients(macos_mail_store &store, qint64 row_id, sample_mail &mail, int type, uint64_t count);
    void add_attachments(macos_mail_store &store, qint64 row_id, sample_mail &mail);
    void add_files(macos_mail_store &store, qint64 row_id, const mailbox_layout &mailbox, const sample_mail &mail);
    void add_opened_attachments();
    void add_configuration();

    const sample_macos_mail_tree_options &options;
    sample_random random;
    sample_emlx mails;
    macos_mail_tree tree;
    uint64_t people_count;
    qint64 emlx_count;
    std::vector<size_t> draw; ///< each mailbox as often as its share
    qint64 next_row_id = 1;   ///< goes on from store to store, as a migrated store's row ids do
    sample_macos_mail_tree_summary summary;
};

void writer::add_store(const store_layout &layout, qint64 count)
{
    const QString user = QString::fromUtf8(layout.user);
    if (!summary.users.contains(user)) {
        summary.users.append(user);
    }
    ++summary.stores;
    macos_mail_store &store = tree.add_store(user, layout.generation);
    std::vector<qint64> mailboxes;
    for (const mailbox_layout &mailbox : mailbox_layouts) {
        macos_mailbox_counts counts;
        counts.total = static_cast<qint64>(random.below(5000));
        counts.unread = static_cast<qint64>(random.below(50));
        mailboxes.push_back(store.add_mailbox(QString::fromUtf8(mailbox.url), counts));
    }
    for (; count > 0; --count) {
        add_mail(store, mailboxes);
    }
}

void writer::add_mail(macos_mail_store &store, const std::vector<qint64> &mailboxes)
{
    const size_t mailbox = draw[random.below(draw.size())];
    const bool is_draft = mailbox == drafts;
    const qint64 row_id = next_row_id;
    next_row_id += random.one_in(20) ? 3 : 1; // deleted mails leave gaps
    sample_mail mail = mail_with_people(store, row_id, is_draft);
    if (random.one_in(3)) {
        add_attachments(store, row_id, mail);
    }

    macos_message message;
    message.row_id = row_id;
    message.message_id = mail.message_id;
    message.in_reply_to = random.one_in(4) ? QVariant(static_cast<qint64>(random.bits() >> 1U)) : QVariant();
    message.sender = is_draft ? QVariant() : QVariant(store.add_address(mail.sender.address, mail.sender.name));
    message.subject_prefix = random.one_in(5) ? QVariant(QStringLiteral("Re: ")) : QVariant(QLatin1String(""));
    message.subject = store.add_subject(mail.subject);
    message.date_sent = is_draft ? QVariant() : QVariant(mail.date);
    message.date_received = mail.date + static_cast<qint64>(random.below(90));
    message.date_created = message.date_received;
    message.read = random.one_in(4) ? 0 : 1;
    message.date_last_viewed = message.read == 1 ? QVariant(mail.date + 3600) : QVariant();
    message.mailbox = mailboxes[mailbox];
    message.flagged = random.one_in(30) ? 1 : 0;
    message.size = static_cast<qint64>(2000 + random.below(60000));
    message.type = 0;
    message.conversation_id = static_cast<qint64>(random.bits() >> 1U);
    message.snippet = random.one_in(10) ? QVariant() : QVariant(text_of(random, 120));
    store.add_message(message);

    // Evenly spread: the file is due when the running share passes the next whole number.
    const qint64 number = summary.messages++;
    if ((number + 1) * emlx_count / options.message_count > number * emlx_count / options.message_count) {
        add_files(store, row_id, mailbox_layouts[mailbox], mail);
    }
}

sample_mail writer::mail_with_people(macos_mail_store &store, qint64 row_id, bool is_draft)
{
    sample_mail mail;
    mail.sender = person_of(random.below(people_count));
    mail.subject = subject_of(random);
    mail.date = first_date + row_id * seconds_between_mails + static_cast<qint64>(random.below(300));
    mail.message_id = static_cast<qint64>(random.bits());
    mail.has_reply_to = random.one_in(4);
    if (!is_draft || random.one_in(2)) {
        add_recipients(store, row_id, mail, macos_mail_store::recipient_to, 1 + random.below(3));
    }
    if (random.one_in(5)) {
        add_recipients(store, row_id, mail, macos_mail_store::recipient_cc, 1 + random.below(2));
    }
    if (random.one_in(20)) {
        add_recipients(store, row_id, mail, macos_mail_store::recipient_bcc, 1 + random.below(4));
    }
    return mail;
}

void writer::add_recipients(macos_mail_store &store, qint64 row_id, sample_mail &mail, int type, uint64_t count)
{
    for (int position = 0; position < static_cast<int>(count); ++position) {
        const sample_person person = person_of(random.below(people_count));
        store.add_recipient(row_id, store.add_address(person.address, person.name), type, position);
        mail.recipients[static_cast<size_t>(type)].append(person);
        ++summary.recipients;
    }
}

void writer::add_attachments(macos_mail_store &store, qint64 row_id, sample_mail &mail)
{
    mail.attachments = mails.attachments(1 + static_cast<int>(random.below(3)));
    for (const mail_attachment &attachment : mail.attachments) {
        store.add_attachment(row_id, attachment.file_name);
        ++summary.attachments;
    }
}

/// The attachments of a partial mail lie beside it; of a whole one they lie there too when they were looked at.
void writer::add_files(macos_mail_store &store, qint64 row_id, const mailbox_layout &mailbox, const sample_mail &mail)
{
    const QString folder = QString::fromUtf8(mailbox.folder);
    const emlx_message message = mails.message(mail);
    store.add_emlx(folder, row_id, message);
    ++summary.emlx_files;
    if (!message.is_partial && random.one_in(3)) {
        return;
    }
    int part = 2;
    for (const mail_attachment &attachment : mail.attachments) {
        store.add_attachment_file(folder, row_id, QString::number(part++), attachment.file_name, attachment.content);
        ++summary.attachment_files;
    }
}

/// A folder of opened attachments for the first user, whose files carry what macOS notes of their mail where the file
/// system can hold it, and the two lists of the earlier store.
void writer::add_opened_attachments()
{
    const QString user = summary.users.first();
    const QVector<mail_attachment> opened = mails.attachments(3);
    const metadata_place place =
        holds_extended_attributes(tree.root()) ? metadata_place::extended_attributes : metadata_place::apple_double;
    QVariantList elements;
    for (const mail_attachment &attachment : opened) {
        const QString path =
            tree.add_download(user, uuid_of(random) + QLatin1Char('/') + attachment.file_name, attachment.content);
        const sample_person sender = person_of(random.below(people_count));
        const qint64 date = first_date + static_cast<qint64>(random.below(100000000));
        write_file_metadata(path,
                            {{"kMDItemOriginMessageID", QStringLiteral("<%1@example.com>").arg(date, 0, 16)},
                             {"kMDItemOriginSenderDisplayName", sender.name},
                             {"kMDItemOriginSenderHandle", sender.address},
                             {"kMDItemOriginSubject", subject_of(random)},
                             {"kMDItemLastUsedDate", QDateTime::fromSecsSinceEpoch(date, Qt::UTC)}},
                            place);
        macos_opened_attachment element;
        element.message_id = QStringLiteral("<%1@example.com>").arg(date, 0, 16);
        element.modified = QDateTime::fromSecsSinceEpoch(date, Qt::UTC);
        element.opened = QDateTime::fromSecsSinceEpoch(date + 60, Qt::UTC);
        element.part_number = QStringLiteral("2");
        element.path = QString(QLatin1Char('/') + path.mid(tree.root().size()));
        elements.append(element);
    }
    tree.write_opened_attachments(user, QStringLiteral("OpenedAttachmentsV2.plist"), elements);
    tree.write_opened_attachments(user, QStringLiteral("OpenedAttachments.plist"), elements.mid(0, 1),
                                  property_list_form::xml);
    summary.opened_attachments = 2 * opened.size() + 1;
}

/// What the users have set, with a choice of its own: the mails are the same with it and without it.
void writer::add_configuration()
{
    sample_random choices(options.seed + 1);
    QVector<macos_sample_account> accounts;
    for (const account_layout &account : account_layouts) {
        accounts.append({QString::fromUtf8(account.scheme), QString::fromUtf8(account.identifier),
                         QString::fromUtf8(account.user_name), QString::fromUtf8(account.description)});
    }
    for (const QString &user : summary.users) {
        macos_configuration configuration(tree, user, accounts, choices);
        for (const store_layout &layout : volume_stores) {
            if (QString::fromUtf8(layout.user) != user) {
                continue;
            }
            if (layout.generation > 2) {
                configuration.write_lists(layout.generation, macos_configuration_size());
            }
            configuration.write_accounts(layout.generation);
        }
        configuration.write_preferences();
    }
}

} // namespace

sample_macos_mail_tree_summary write_sample_macos_mail_tree(const QString &root,
                                                            const sample_macos_mail_tree_options &options)
{
    return writer(root, options).write();
}

} // namespace evidence
