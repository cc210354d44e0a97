// Names of mailboxes and accounts, for the table preferences. Fills no table itself.
#include "macos/mailbox_names.h"

#include "macos/row_text.h"

namespace {

constexpr failure_text no_match{"[xcode_extract_preferences] : no match found ", nullptr, nullptr, false};
constexpr failure_text no_vip_match{"[xcode_extract_preferences] :2 no match found", nullptr, nullptr, false};

constexpr const char *select_account = "select user_name from accounts where account_identifier LIKE ?";
constexpr const char *select_smart_mailbox = "select mailbox_name from smart_mailboxes where mailbox_id LIKE ?";
constexpr const char *select_vip = "select vip_name from vip_contacts where mailbox_uid LIKE ?";

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

} // namespace

mailbox_names::mailbox_names(result_session &rows_so_far, const operation_log &log)
    : accounts(rows_so_far, log, select_account, no_match),
      smart_mailboxes(rows_so_far, log, select_smart_mailbox, no_match),
      vip_contacts(rows_so_far, log, select_vip, no_vip_match)
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
        if (!smart_mailboxes.execute({id})) {
            return QString();
        }
        name = smart_mailboxes.next() ? smart_mailboxes.text("mailbox_name") : QString();
        if (name.trimmed().isEmpty()) {
            if (!vip_contacts.execute({id})) {
                return QString();
            }
            name = vip_contacts.next() ? vip_contacts.text("vip_name") : QString();
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
    if (account_id.isEmpty() || !accounts.execute({account_id}) || !accounts.next()) {
        return QString();
    }
    return QLatin1String("Account Name: ") + accounts.text("user_name") + QLatin1Char(';') + QLatin1String(url_label) +
           url + QLatin1String(";;");
}
