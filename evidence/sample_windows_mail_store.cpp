#include "evidence/sample_windows_mail_store.h"

#include "evidence/sample_text.h"
#include "evidence/windows_mail_store.h"

#include <algorithm>

namespace evidence {

namespace {

constexpr qint64 first_date = 1420070400; // seconds since 1970
constexpr qint64 seconds_between_mails = 487;
constexpr int files_per_folder = 500;
constexpr int text_pool_size = 1 << 17; // characters; the mails' bodies are cut out of it

QString folder_number(qint64 number)
{
    return QString::number(number / files_per_folder);
}

class writer
{
public:
    writer(windows_profile &windows_profile, const sample_windows_mail_store_options &store_options)
        : profile(windows_profile), options(store_options), random(store_options.seed),
          store(windows_profile.local_state_path() + QLatin1String("DBStore/store.edb"), store_options.store_format),
          text_pool(text_of(random, text_pool_size).toUtf8()),
          eml_count(store_options.eml_count < 0 ? store_options.message_count : store_options.eml_count)
    {
    }

    sample_windows_mail_store_summary write()
    {
        for (qint64 number = 0; number < options.message_count; ++number) {
            add_message(number);
            if (number % 3 == 0) {
                add_attachment(number);
                add_conversation(number);
            }
        }
        store.finish();
        return summary;
    }

private:
    void add_message(qint64 number);
    void add_attachment(qint64 number);
    void add_conversation(qint64 number);
    QByteArray mail_text(const windows_mail_message &message, const QString &date);
    sample_person pick_person() { return person_of(random.below(people_count())); }
    uint64_t people_count() const { return std::max<uint64_t>(20, static_cast<uint64_t>(options.message_count) / 20); }
    qint64 filetime_at(qint64 number) const { return filetime_of(first_date + number * seconds_between_mails); }

    windows_profile &profile;
    const sample_windows_mail_store_options &options;
    sample_random random;
    windows_mail_store store;
    QByteArray text_pool;
    qint64 eml_count;
    sample_windows_mail_store_summary summary;
};

// One mail in ten is without a preview, as those are of which only the header was fetched.
void writer::add_message(qint64 number)
{
    const sample_person sender = pick_person();
    windows_mail_message message;
    message.conversation_server_id = QString::number(number / 3);
    message.date_received = filetime_at(number);
    message.date_last_modified = filetime_at(number) + 600000000;
    message.eml_file = QStringLiteral("Files\\S0\\3\\%1\\%2.eml").arg(folder_number(number)).arg(number);
    message.from = sender.name + QLatin1String(" <") + sender.address + QLatin1Char('>');
    message.from_email = sender.address;
    message.from_name = sender.name;
    message.gmail_message_id = random.one_in(4) ? QString::number(random.bits()) : QString();
    message.imap_uid = number + 1;
    message.last_modified_body_type = 2;
    message.mime_message_id = QStringLiteral("<%1@mail.example.net>").arg(number);
    message.preview_text = random.one_in(10) ? QString() : text_of(random, 120).simplified();
    message.reply_to = random.one_in(5) ? sender.address : QString();
    message.subject = subject_of(random);
    message.to = pick_person().address;
    store.add(message);
    if (number < eml_count) {
        const QString date = QStringLiteral("Mon, 2 Mar 2015 10:20:%1 +0100").arg(number % 60, 2, 10, QLatin1Char('0'));
        profile.add_package_file(QString(message.eml_file).replace(QLatin1Char('\\'), QLatin1Char('/')),
                                 mail_text(message, date));
        ++summary.eml_files;
    }
}

// 2 to 30 KB, most of them short.
QByteArray writer::mail_text(const windows_mail_message &message, const QString &date)
{
    QByteArray text = "From: " + message.from.toUtf8() + "\r\nTo: <" + message.to.toUtf8() +
                      ">\r\nSubject: " + message.subject.toUtf8() + "\r\nDate: " + date.toUtf8() +
                      "\r\nMIME-Version: 1.0\r\nContent-Type: text/plain; charset=utf-8\r\n\r\n";
    const auto size = static_cast<int>(2048 + random.below(1 + random.below(27000)));
    int at = static_cast<int>(random.below(static_cast<uint64_t>(text_pool.size() - 30000)));
    while (text.size() < size) {
        const int length = std::min<int>(static_cast<int>(1 + random.below(120)), size - text.size());
        text += text_pool.mid(at, length).replace('\n', ' ') + "\r\n";
        at += length;
    }
    return text;
}

void writer::add_attachment(qint64 number)
{
    windows_mail_attachment attachment;
    attachment.size = 1000 + static_cast<qint64>(random.below(3000000));
    attachment.file_name = QStringLiteral("Übersicht %1.pdf").arg(number);
    attachment.content_type = QStringLiteral("application/pdf");
    attachment.body_file = QStringLiteral("Files\\S0\\4\\%1\\%2.dat").arg(folder_number(number)).arg(number);
    attachment.content_id = random.one_in(3) ? QStringLiteral("<part%1@example.org>").arg(number) : QString();
    attachment.instance_number = 0;
    store.add(attachment);
    if (!random.one_in(3) && number < eml_count) {
        profile.add_package_file(QString(attachment.body_file).replace(QLatin1Char('\\'), QLatin1Char('/')),
                                 "%PDF-1.4\n%" + text_pool.left(static_cast<int>(random.below(2000))));
        ++summary.attachment_files;
    }
}

void writer::add_conversation(qint64 number)
{
    const sample_person sender = pick_person();
    windows_mail_conversation conversation;
    conversation.latest_message_time = filetime_at(number);
    conversation.latest_received_time = filetime_at(number);
    conversation.latest_sender = sender.name;
    conversation.latest_sender_email = random.one_in(20) ? QString() : sender.address;
    conversation.latest_sender_name = sender.name;
    conversation.normalized_subject = subject_of(random);
    conversation.total_message_count = 1 + static_cast<qint64>(random.below(12));
    conversation.importance = 1;
    store.add(conversation);
}

} // namespace

sample_windows_mail_store_summary write_sample_windows_mail_store(windows_profile &profile,
                                                                  const sample_windows_mail_store_options &options)
{
    return writer(profile, options).write();
}

void write_sample_html_bodies(windows_profile &profile, qint64 count, uint64_t seed)
{
    sample_random random(seed);
    for (qint64 number = 0; number < count; ++number) {
        QString html = QStringLiteral("<html><head><title>%1</title><style>p { margin: 0 }</style></head><body>")
                           .arg(subject_of(random).toHtmlEscaped());
        const auto size = static_cast<int>(1000 + random.below(1 + random.below(19000)));
        while (html.size() < size) {
            html +=
                QStringLiteral("<table><tr><td><b>%1</b></td></tr></table><p>%2<br>\n<a href=\"http://x\">%3</a></p>")
                    .arg(subject_of(random).toHtmlEscaped(), text_of(random, 250).toHtmlEscaped(),
                         subject_of(random).toHtmlEscaped());
        }
        profile.add_store_file(QStringLiteral("3/%1/%2.html").arg(folder_number(number)).arg(number),
                               (html + QLatin1String("</body></html>\n")).toUtf8());
    }
}

} // namespace evidence
