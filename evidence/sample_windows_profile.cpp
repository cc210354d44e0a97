#include "evidence/sample_windows_profile.h"

#include "evidence/sample_random.h"
#include "evidence/sample_text.h"
#include "evidence/sample_windows_mail_store.h"
#include "evidence/windows_profile.h"

#include <algorithm>
#include <array>

namespace evidence {

namespace {

constexpr qint64 first_date = 1420070400; // seconds since 1970
constexpr qint64 seconds_between_mails = 487;
constexpr uint64_t people_per_mails = 20; // a person for each so many mails

constexpr std::array<const char *, 2> users{"anna", "jörg"};

/// What an attachment is: its name's end, and what its file begins with.
struct attachment_kind
{
    const char *suffix;
    const char *begin;
};
constexpr std::array<attachment_kind, 4> attachment_kinds{{
    {".pdf", "%PDF-1.4\n%"},
    {".jpg", "\xff\xd8\xff\xe0"},
    {".txt", "To whom it may concern\r\n"},
    {".docx", "PK\x03\x04"},
}};

class writer
{
public:
    writer(const QString &tree_root, const sample_windows_profile_options &tree_options)
        : root(tree_root), options(tree_options), random(tree_options.seed),
          people_count(std::max<uint64_t>(20, static_cast<uint64_t>(tree_options.message_count) / people_per_mails))
    {
    }

    sample_windows_profile_summary write()
    {
        const qint64 of_second = options.has_second_user ? options.message_count / 10 : 0;
        write_profile(QString::fromUtf8(users[0]), options.message_count - of_second);
        if (options.has_second_user) {
            write_profile(QString::fromUtf8(users[1]), of_second);
        }
        return summary;
    }

private:
    void write_profile(const QString &user, qint64 message_count);
    void write_mail_store(windows_profile &profile, qint64 message_count);
    void add_message(windows_profile &profile, qint64 number);
    void add_recipients(windows_profile &profile, qint64 key, filetime time, const sample_person &sender);
    void add_attachment(windows_profile &profile, qint64 key);
    void add_contact(windows_profile &profile, uint64_t number);
    void add_appointment(windows_profile &profile, const QString &user);
    void add_call(windows_profile &profile);
    sample_person pick_person() { return person_of(random.below(people_count)); }
    qint64 pick_time() { return filetime_of(first_date + static_cast<qint64>(random.below(200000000))); }

    QString root;
    const sample_windows_profile_options &options;
    sample_random random;
    uint64_t people_count;
    sample_windows_profile_summary summary;
};

void writer::write_profile(const QString &user, qint64 message_count)
{
    windows_profile profile(root, user, options.store_format);
    profile.store();
    summary.users.append(user);
    for (qint64 number = 0; number < message_count; ++number) {
        add_message(profile, number);
    }
    for (qint64 number = 0; number < message_count / 5; ++number) {
        add_contact(profile, static_cast<uint64_t>(number));
    }
    for (qint64 number = 0; number < message_count / 50; ++number) {
        add_appointment(profile, user);
        add_call(profile);
    }
    profile.finish();
    if (options.has_mail_store) {
        write_mail_store(profile, std::max<qint64>(1, message_count / 10));
    }
}

void writer::write_mail_store(windows_profile &profile, qint64 message_count)
{
    sample_windows_mail_store_options store_options;
    store_options.message_count = message_count;
    store_options.seed = options.seed;
    store_options.store_format = options.store_format;
    const sample_windows_mail_store_summary written = write_sample_windows_mail_store(profile, store_options);
    summary.eml_files += written.eml_files;
    summary.attachment_files += written.attachment_files;
    write_sample_html_bodies(profile, message_count, options.seed);
    summary.html_bodies += message_count;
}

// Keys have gaps. One mail in forty bears the time of another, one in sixty has lost its recipients.
void writer::add_message(windows_profile &profile, qint64 number)
{
    const sample_person sender = pick_person();
    const qint64 key = 3 * number + 17;
    const qint64 moment = number > 0 && random.one_in(40) ? number - 1 : number;
    const filetime time = filetime_of(first_date + moment * seconds_between_mails) + 1234567;
    windows_message message;
    message.text = random.one_in(12) ? QString() : text_of(random, 200) + QLatin1String("\r\n");
    message.from = sender.address;
    message.sender_name = sender.name;
    message.subject_prefix = random.one_in(3) ? QStringLiteral("RE: ") : QString();
    message.subject = subject_of(random);
    message.time = time;
    message.date_sent = time - static_cast<qint64>(random.below(90)) * 10000000;
    profile.store().add(message);
    ++summary.messages;
    if (!random.one_in(60)) {
        add_recipients(profile, key, time, sender);
    }
    if (number % 2 == 0) {
        add_attachment(profile, key);
    }
}

void writer::add_recipients(windows_profile &profile, qint64 key, filetime time, const sample_person &sender)
{
    profile.store().add(windows_recipient{key, 0, time, sender.address});
    profile.store().add(windows_recipient{key, 1, time, pick_person().address});
    profile.store().add(windows_recipient{key, random.one_in(4) ? 3 : 2, time, pick_person().address});
    summary.recipients += 3;
}

void writer::add_attachment(windows_profile &profile, qint64 key)
{
    const attachment_kind &kind = random.pick(attachment_kinds);
    const QString suffix = QString::fromLatin1(kind.suffix);
    windows_attachment attachment;
    attachment.file_name =
        random.one_in(10) ? QStringLiteral("image001") + suffix : QStringLiteral("Übersicht %1").arg(key) + suffix;
    attachment.size = 1000 + static_cast<qint64>(random.below(3000000));
    attachment.suffix = suffix;
    attachment.is_received = !random.one_in(3);
    attachment.message_key = key;
    profile.store().add(attachment);
    ++summary.attachments;
    if (*attachment.is_received && random.one_in(5)) {
        const QString folder = QStringLiteral("7/%1/").arg(random.below(64), 2, 16, QLatin1Char('0'));
        profile.add_store_file(folder + QStringLiteral("%1%2").arg(key, 16, 16, QLatin1Char('0')).arg(suffix),
                               QByteArray(kind.begin) + text_of(random, 300).toUtf8());
        ++summary.attachment_files;
    }
}

// One record in eight is no contact of the list, but what the application has learned of a correspondent.
void writer::add_contact(windows_profile &profile, uint64_t number)
{
    const sample_person person = person_of(number);
    windows_contact contact;
    contact.display_name = person.name;
    contact.first_name = person.name.section(QLatin1Char(' '), 0, 0);
    contact.last_name = person.name.section(QLatin1Char(' '), 1);
    contact.email_first = person.address;
    contact.phone = QStringLiteral("+49 30 %1").arg(1000000 + random.below(9000000));
    if (random.one_in(3)) {
        contact.address_first = QStringLiteral("Lindenstraße %1").arg(1 + random.below(200));
        contact.address_second = QStringLiteral("10969");
        contact.address_third = QStringLiteral("Berlin");
        contact.work_phone = QStringLiteral("+49 40 %1").arg(1000000 + random.below(9000000));
        contact.work_info = QStringLiteral("Einkauf");
    }
    contact.is_listed = !random.one_in(8);
    contact.blob = QByteArray("\x01\x00\xfe\xff", 4);
    profile.store().add(contact);
    ++summary.contacts;
}

void writer::add_appointment(windows_profile &profile, const QString &user)
{
    windows_appointment appointment;
    appointment.name = subject_of(random);
    appointment.location = random.one_in(3) ? QString() : QStringLiteral("Raum %1").arg(random.below(40));
    appointment.timezone = QStringLiteral("W. Europe Standard Time");
    appointment.snooze = 15;
    appointment.time = pick_time();
    appointment.account = user + QLatin1String("@example.org");
    profile.store().add(appointment);
    ++summary.appointments;
}

void writer::add_call(windows_profile &profile)
{
    const sample_person person = pick_person();
    windows_call call;
    call.start = pick_time();
    call.end = *call.start + static_cast<qint64>(random.below(3600)) * 10000000;
    call.arrival = random.one_in(3) ? std::nullopt : call.start;
    call.application_install = filetime_of(first_date);
    call.caller_location = QStringLiteral("Berlin");
    call.resolved_name = person.name;
    call.resolved_number = QStringLiteral("+49 30 %1").arg(1000000 + random.below(9000000));
    profile.store().add(call);
    ++summary.calls;
}

} // namespace

sample_windows_profile_summary write_sample_windows_profile(const QString &root,
                                                            const sample_windows_profile_options &options)
{
    return writer(root, options).write();
}

} // namespace evidence
