#include "evidence/sample_ios_backup.h"

#include "evidence/accounts_database.h"
#include "evidence/ios_backup_databases.h"
#include "evidence/property_list_file.h"
#include "evidence/sample_random.h"
#include "evidence/sample_text.h"

#include <QDateTime>

#include <algorithm>

namespace evidence {

namespace {

constexpr qint64 first_date = 1577836800; // 2020-01-01 in Unix seconds
constexpr qint64 seconds_between_recents = 1300;
constexpr qint64 seconds_from_1970_to_2001 = 978307200;
constexpr int contacts_of_a_recent = 3;
constexpr int account_count = 3;
constexpr int vip_count = 6;

QString text_or_empty(const QString &text)
{
    return text.isNull() ? QStringLiteral("") : text;
}

QByteArray list_of(const QVariant &value)
{
    return property_list_bytes(value, property_list_form::binary);
}

QString message_guid(sample_random &random)
{
    return uuid_of(random);
}

/// The state of one backup while it is written. Databases are backed up at rest: their logs are not there.
class writer
{
public:
    writer(const QString &root, const sample_ios_backup_options &options)
        : options(options), random(options.seed), backup(root, options.backup)
    {
    }

    sample_ios_backup_summary write()
    {
        write_short_messages();
        write_recents();
        write_address_book();
        write_accounts();
        write_mail_settings();
        write_search_settings();
        backup.finish();
        return summary;
    }

private:
    void write_short_messages();
    void write_recents();
    void add_recent(recents_database &recents, qint64 number);
    QString reference_url();
    void write_address_book();
    void write_accounts();
    void write_mail_settings();
    void write_search_settings();

    const sample_ios_backup_options &options;
    sample_random random;
    ios_backup backup;
    QStringList message_guids;
    QStringList account_ids;
    sample_ios_backup_summary summary;
};

void writer::write_short_messages()
{
    sms_database messages(backup.add(ios_sms_path), sqlite_storage::wal_checkpointed);
    for (qint64 number = 0; number < 10 * options.recent_count; ++number) {
        message_guids.append(message_guid(random));
        messages.add_message(message_guids.last(), text_of(random, 60));
    }
    messages.finish();
    summary.short_messages = message_guids.size();
}

void writer::write_recents()
{
    recents_database recents(backup.add(ios_recents_path), sqlite_storage::wal_checkpointed);
    for (; summary.recents < options.recent_count; ++summary.recents) {
        add_recent(recents, summary.recents);
    }
    recents.finish();
}

/// Used once to three times, the last time at the last date.
void writer::add_recent(recents_database &recents, qint64 number)
{
    const qint64 date = first_date + number * seconds_between_recents;
    const sample_person first = person_of(static_cast<uint64_t>(number));
    recent_row recent;
    recent.display_name = text_or_empty(first.name);
    recent.bundle_identifier = QStringLiteral("com.apple.mobilemail");
    recent.sending_address = person_of(random.below(account_count)).address;
    recent.original_source = QStringLiteral("com.apple.mobilemail");
    recent.record_hash = uuid_of(random);
    recent.count = contacts_of_a_recent;
    recent.last_date = date * 1000 + 128;
    QStringList dates;
    for (uint64_t uses = random.below(3); uses > 0; --uses) {
        dates.append(QString::number((date - static_cast<qint64>(uses) * 100) * 1000 + 512));
    }
    recent.dates = (dates << recent.last_date.toString()).join(QLatin1Char(':'));
    const qint64 row_id = recents.add_recent(recent);

    for (int contact = 0; contact < contacts_of_a_recent; ++contact) {
        const sample_person person = person_of(static_cast<uint64_t>(number + 7 * contact));
        recents.add_contact(row_id, {text_or_empty(person.name), QStringLiteral("email"), person.address});
    }
    recents.add_metadata(row_id, QStringLiteral("corerecents:event-time"),
                         list_of(QDateTime::fromSecsSinceEpoch(date, Qt::UTC)));
    recents.add_metadata(row_id, QStringLiteral("corerecents:subject"), list_of(subject_of(random)));
    recents.add_metadata(row_id, QStringLiteral("corerecents:reference-url"), list_of(reference_url()));
}

QString writer::reference_url()
{
    return random.one_in(4)
               ? QStringLiteral("sms:/open?message-guid=") +
                     message_guids.at(static_cast<int>(random.below(static_cast<uint64_t>(message_guids.size()))))
               : QStringLiteral("message:%3C") + uuid_of(random) + QStringLiteral("@example.com%3E");
}

void writer::write_address_book()
{
    address_book_database book(backup.add(ios_address_book_path), sqlite_storage::wal_checkpointed);
    for (; summary.persons < options.recent_count * 5 / 2; ++summary.persons) {
        const sample_person known = person_of(static_cast<uint64_t>(summary.persons));
        const qint64 created = first_date - seconds_from_1970_to_2001 + summary.persons * 60;
        address_book_person person;
        person.first = known.name.section(QLatin1Char(' '), 0, -2);
        person.last = known.name.section(QLatin1Char(' '), -1);
        person.display_name = random.one_in(6) ? known.name : QString();
        person.organization = random.one_in(3) ? QStringLiteral("Müller & Söhne GmbH") : QString();
        person.job_title = random.one_in(8) ? QStringLiteral("Einkäuferin") : QString();
        person.note = random.one_in(10) ? text_of(random, 80) : QString();
        person.creation_date = created;
        person.modification_date = created + static_cast<qint64>(random.below(1000000));
        person.birthday = random.one_in(4) ? QVariant(-static_cast<qint64>(random.below(900000000))) : QVariant();
        person.phone = QStringLiteral("+49 30 %1").arg(1000000 + random.below(8999999));
        person.email = random.one_in(5) ? QString() : known.address;
        person.address = random.one_in(3) ? QStringLiteral("Lindenstraße 7 10969 Berlin") : QString();
        book.add_person(person);
    }
    book.finish();
}

/// Each account has a parent, whose description is the name that the user gave.
void writer::write_accounts()
{
    accounts_database accounts(backup.add(ios_accounts_path), sqlite_storage::wal_checkpointed);
    const qint64 type = accounts.add_account_type(QStringLiteral("com.apple.account.IMAP"), QStringLiteral("IMAP"));
    for (; summary.accounts < account_count; ++summary.accounts) {
        account_row parent;
        parent.type = type;
        parent.date = 600000000.25 + static_cast<double>(random.below(10000000));
        parent.description = QStringLiteral("Konto %1").arg(summary.accounts + 1);
        parent.identifier = uuid_of(random);
        parent.owning_bundle_id = QStringLiteral("com.apple.Preferences");
        parent.user_name = person_of(static_cast<uint64_t>(summary.accounts)).address;
        account_row account = parent;
        account.parent = accounts.add_account(parent);
        account.description = QString();
        account.identifier = uuid_of(random);
        account.owning_bundle_id = QStringLiteral("com.apple.accountsd");
        accounts.add_account(account);
        account_ids.append(account.identifier);
    }
    accounts.finish();
}

void writer::write_mail_settings()
{
    QVariantList accounts;
    for (const QString &id : qAsConst(account_ids)) {
        accounts.append(property_list_dictionary{{"name", QStringLiteral("Postfach %1").arg(accounts.size() + 1)},
                                                 {"uniqueID", id},
                                                 {"syncsReadState", accounts.size() != 1}});
    }
    property_list_dictionary senders;
    for (; summary.vips < vip_count; ++summary.vips) {
        const sample_person person = person_of(static_cast<uint64_t>(3 * summary.vips));
        senders.append({uuid_of(random), property_list_dictionary{{"n", text_or_empty(person.name)},
                                                                  {"a", QStringList{person.address}}}});
    }
    backup.add(ios_mail_settings_path,
               list_of(property_list_dictionary{{"AppTimeInterval", 630000000.5},
                                                {"DefaultSendingAccount", account_ids.first()},
                                                {"FlaggedMailboxControllerBadgeCount", 2},
                                                {"HasAttachmentsMailboxControllerBadgeCount", 17},
                                                {"IncludesMeMailboxControllerBadgeCount", 5},
                                                {"LastDataProviderSubsections", accounts},
                                                {"MobileMailVersion", 3445},
                                                {"ShowMessageDeleteConfirmation", true},
                                                {"ShowToCCIndicators", false},
                                                {"UnreadMailboxControllerBadgeCount", 11},
                                                {"VIP-senders", senders},
                                                {"VIPMailboxControllerBadgeCount", 1}}));
}

void writer::write_search_settings()
{
    QVariantList vips;
    for (int number = 0; number < vip_count; ++number) {
        const sample_person person = person_of(static_cast<uint64_t>(3 * number));
        vips.append(property_list_dictionary{
            {"displayName", text_or_empty(person.name)},
            {"uniqueIdentifier", uuid_of(random)},
            {"emailAddresses", QStringList{person.address, person_of(static_cast<uint64_t>(3 * number + 1)).address}},
            {"priv_totalMessageCount", 10 * number},
            {"priv_recentInteractionDate", QDateTime::fromSecsSinceEpoch(first_date + number, Qt::UTC)}});
    }
    backup.add(ios_search_settings_path, list_of(property_list_dictionary{{"mailVips", vips}}));
}

} // namespace

sample_ios_backup_summary write_sample_ios_backup(const QString &root, const sample_ios_backup_options &options)
{
    return writer(root, options).write();
}

} // namespace evidence
