// Names of mailboxes and accounts, for the table preferences. Fills no table itself.
#include "macos/mailbox_names.h"

#include "macos/row_text.h"

namespace {

constexpr failure_text no_match{"[xcode_extract_preferences] : no match found ", nullptr, nullptr, false};
constexpr failure_text no_vip_match{"[xcode_extract_preferences] :2 no match found", nullptr, nullptr, false};

constexpr const char *select_accounts = "select user_name, account_identifier from accounts";
constexpr const char *select_account = "select user_name from accounts where account_identifier LIKE ?";
constexpr const char *select_smart_mailboxes = "select mailbox_name, mailbox_id from smart_mailboxes";
constexpr const char *select_smart_mailbox = "select mailbox_name from smart_mailboxes where mailbox_id LIKE ?";
constexpr const char *select_vips = "select vip_name, mailbox_uid from vip_contacts";
constexpr const char *select_vip = "select vip_name from vip_contacts where mailbox_uid LIKE ?";

constexpr int name_column = 0;
constexpr int id_column = 1;

constexpr const char *mailbox_url_label = "Mailbox URL: ";
constexpr const char *account_url_label = "Account URL: ";

QString behind_scheme(const QString &url)
{
    const QLatin1String separator("://");
    const int begin = url.indexOf(separator);
    return begin < 0 ? QString() : url.mid(begin + separator.size());
}

// An account stands in its own URL with one character behind it, a slash.
QString account_id_of(const QString &account_url)
{
    QString id = behind_scheme(account_url);
    id.chop(1);
    return id;
}

bool is_local(const QString &url)
{
    return url.contains(QLatin1String("local://"));
}

QString local_entry(const char *url_label, const QString &url)
{
    return QLatin1String("Local Account: On My Mac;") + QLatin1String(url_label) + url + QLatin1String(";;");
}

QString with_ascii_letters_lowered(QString text)
{
    for (QChar &character : text) {
        if (character >= QLatin1Char('A') && character <= QLatin1Char('Z')) {
            character = QChar(character.unicode() + ('a' - 'A'));
        }
    }
    return text;
}

// Out: a text that is not null: the row is there, whatever name it has.
QString name_in_row(const source_query &row)
{
    const QString name = row.text_at(name_column);
    return name.isNull() ? QStringLiteral("") : name;
}

} // namespace

names_by_id::names_by_id(result_session &rows_so_far, const operation_log &log, const char *select_all,
                         const char *select_like, const failure_text &texts)
    : all(rows_so_far, log, select_all, texts), like(rows_so_far, log, select_like, texts)
{
}

bool names_by_id::find(const QString &id, QString &name)
{
    const bool is_pattern = id.contains(QLatin1Char('%')) || id.contains(QLatin1Char('_'));
    if (is_pattern) {
        if (!like.execute({id})) {
            return false;
        }
        name = like.next() ? name_in_row(like) : QString();
        return true;
    }
    if (!read_all()) {
        return false;
    }
    name = names.value(with_ascii_letters_lowered(id));
    return true;
}

bool names_by_id::read_all()
{
    if (is_read) {
        return true;
    }
    if (!all.execute()) {
        return false;
    }
    while (all.next()) {
        const QString id = with_ascii_letters_lowered(all.text_at(id_column));
        if (!id.isNull() && !names.contains(id)) {
            names.insert(id, name_in_row(all));
        }
    }
    is_read = true;
    return true;
}

mailbox_names::mailbox_names(result_session &rows_so_far, const operation_log &log)
    : accounts(rows_so_far, log, select_accounts, select_account, no_match),
      smart_mailboxes(rows_so_far, log, select_smart_mailboxes, select_smart_mailbox, no_match),
      vip_contacts(rows_so_far, log, select_vips, select_vip, no_vip_match)
{
}

QString mailbox_names::entry_of_mailbox(const QString &url)
{
    if (is_local(url)) {
        return local_entry(mailbox_url_label, url);
    }
    if (url.contains(QLatin1String("smartmailbox://"))) {
        return entry_of_smart_mailbox(url);
    }
    return entry_with_account(account_id_of(url).section(QLatin1Char('/'), 0, 0), mailbox_url_label, url);
}

QString mailbox_names::entry_of_account(const QString &url)
{
    return is_local(url) ? local_entry(account_url_label, url)
                         : entry_with_account(account_id_of(url), account_url_label, url);
}

QString mailbox_names::entry_of_smart_mailbox(const QString &url)
{
    const QString id = behind_scheme(url);
    QString name;
    if (!id.isEmpty()) {
        if (!smart_mailboxes.find(id, name)) {
            return QString();
        }
        if (name.trimmed().isEmpty() && !vip_contacts.find(id, name)) {
            return QString();
        }
    }
    QString entry;
    append_part(entry, "Mailbox Name: ", name);
    append_part(entry, mailbox_url_label, url);
    return entry + QLatin1Char(';');
}

// An empty id names no account, though there may be rows without one.
QString mailbox_names::entry_with_account(const QString &account_id, const char *url_label, const QString &url)
{
    QString name;
    if (account_id.isEmpty() || !accounts.find(account_id, name) || name.isNull()) {
        return QString();
    }
    return QLatin1String("Account Name: ") + name + QLatin1Char(';') + QLatin1String(url_label) + url +
           QLatin1String(";;");
}
