#include "bench/macos_configuration_floor.h"

#include "bench/floor_database.h"
#include "bench/floor_tables.h"
#include "bench/macos_floor.h"
#include "evidence/files.h"

#include <plist/plist.h>

#include <QFile>

#include <cstdlib>
#include <map>
#include <memory>
#include <string>

namespace bench {

namespace {

const auto library_folder = QStringLiteral("/Users/anna/Library/");
const auto lists_folder = library_folder + QStringLiteral("Mail/V%1/MailData/").arg(macos_configuration_generation);

// In each, ?1 to ?4 are the same in all rows: the user, the path of the list, number and display text of the source.
constexpr const char *insert_vip =
    "INSERT INTO vip_contacts(bookmark,system_user,source_file,source_count_name,os_scheme_display,vip_name,address,"
    "unread_count,mailbox_uid,sort_order,sort_descending) VALUES(0,?1,?2,?3,?4,?5,?6,?7,?8,?9,?10)";
constexpr const char *insert_rule =
    "INSERT INTO rules(bookmark,system_user,source_file,source_count_name,os_scheme_display,rule_id,rule_name,"
    "conditions,delete_message,highlight_text_using_color,mark_as_flaged,mark_as_read,send_notification,"
    "should_copy_message,should_transfer_message,stop_evaluating_rules,move_to_mailbox,move_to_mailbox_url,"
    "reply_to_message) VALUES(0,?1,?2,?3,?4,?5,?6,?7,?8,?9,?10,?11,?12,?13,?14,?15,?16,?17,?18)";
constexpr const char *insert_smart_mailbox =
    "INSERT INTO smart_mailboxes(bookmark,system_user,source_file,source_count_name,os_scheme_display,mailbox_id,"
    "mailbox_name,conditions) VALUES(0,?1,?2,?3,?4,?5,?6,?7)";
constexpr const char *insert_signature =
    "INSERT INTO signature(bookmark,system_user,source_file,source_count_name,os_scheme_display,signature_uid,"
    "signature_name,signature,related_account_id,is_selected) VALUES(0,?1,?2,?3,?4,?5,?6,?7,?8,'NO')";
constexpr const char *insert_accounts =
    "INSERT INTO accounts(bookmark,system_user,source_file,source_count_name,os_scheme_display,account_identifier,"
    "account_description,user_name,date_added) SELECT 0,?1,?2,?3,?4,ZIDENTIFIER,ZACCOUNTDESCRIPTION,ZUSERNAME,"
    "CAST(ZDATE AS INTEGER) + 978307200 FROM a.ZACCOUNT WHERE ZUSERNAME != ''";

struct list_deleter
{
    void operator()(void *node) const { plist_free(node); }
};
using list_owner = std::unique_ptr<void, list_deleter>;

QByteArray content_of(const QString &path)
{
    QFile file(path);
    if (!file.open(QFile::ReadOnly)) {
        throw evidence::evidence_error(QStringLiteral("%1 cannot be read.").arg(path));
    }
    return file.readAll();
}

list_owner list_of(const QString &path)
{
    const QByteArray content = content_of(path);
    plist_t root = nullptr;
    plist_from_memory(content.constData(), static_cast<uint32_t>(content.size()), &root);
    return list_owner(root);
}

std::string text_of(plist_t node)
{
    if (node == nullptr || plist_get_node_type(node) != PLIST_STRING) {
        return {};
    }
    uint64_t length = 0;
    const char *characters = plist_get_string_ptr(node, &length);
    return {characters, length};
}

std::string text_of(plist_t dictionary, const char *key)
{
    return text_of(plist_dict_get_item(dictionary, key));
}

void append_texts_of_array(plist_t array, std::string &text)
{
    for (uint32_t index = 0; index < plist_array_get_size(array); ++index) {
        text += (index == 0 ? "" : ";") + text_of(plist_array_get_item(array, index));
    }
}

/// The stored words of the criteria, one behind the other, with those below them.
void append_criteria(plist_t criteria, std::string &text)
{
    if (criteria == nullptr) {
        return;
    }
    for (uint32_t index = 0; index < plist_array_get_size(criteria); ++index) {
        plist_t criterion = plist_array_get_item(criteria, index);
        for (const char *key : {"Header", "Qualifier", "Expression"}) {
            text += text_of(criterion, key) + ";";
        }
        append_criteria(plist_dict_get_item(criterion, "Criteria"), text);
    }
}

template <typename visitor>
void for_each_entry(plist_t dictionary, visitor visit)
{
    plist_dict_iter entries = nullptr;
    plist_dict_new_iter(dictionary, &entries);
    const std::unique_ptr<void, decltype(&std::free)> owner(entries, &std::free);
    for (;;) {
        char *key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(dictionary, entries, &key, &value);
        const std::unique_ptr<char, decltype(&std::free)> key_owner(key, &std::free);
        if (value == nullptr) {
            return;
        }
        visit(key, value);
    }
}

/// One prepared INSERT with the values that all rows have.
class floor_rows
{
public:
    floor_rows(sqlite3 *connection, const char *insert, const QString &source_file)
        : statement(prepare(connection, insert)), common{macos_user, source_file.toStdString(), source_count_name,
                                                         scheme_display}
    {
        int position = 0;
        for (const std::string &value : common) {
            bind(++position, value);
        }
    }

    template <typename... texts>
    void insert(const texts &...values)
    {
        int position = static_cast<int>(common.size());
        (bind(++position, values), ...);
        sqlite3_step(statement.get());
        sqlite3_reset(statement.get());
    }

private:
    void bind(int position, const std::string &value)
    {
        sqlite3_bind_text(statement.get(), position, value.data(), static_cast<int>(value.size()), SQLITE_STATIC);
    }

    evidence::sqlite_statement statement;
    const std::array<std::string, 4> common;
};

void insert_vips(const QString &root, sqlite3 *connection)
{
    const list_owner list = list_of(root + lists_folder + QLatin1String("VIPs.plist"));
    floor_rows rows(connection, insert_vip, lists_folder + QLatin1String("VIPs.plist"));
    for_each_entry(plist_dict_get_item(list.get(), "Senders"), [&](const char *key, plist_t vip) {
        std::string addresses;
        append_texts_of_array(plist_dict_get_item(vip, "Addresses"), addresses);
        uint64_t unread = 0;
        plist_get_uint_val(plist_dict_get_item(vip, "MailboxUnreadCount"), &unread);
        plist_t mailbox = plist_dict_get_item(vip, "UserInfo");
        const std::string uid = mailbox == nullptr ? std::string(key) : text_of(mailbox, "MailboxID");
        rows.insert(text_of(vip, "Name"), addresses, std::to_string(unread), uid,
                    mailbox == nullptr ? std::string() : text_of(mailbox, "SortOrder"),
                    mailbox == nullptr ? std::string() : text_of(mailbox, "SortedDescending"));
    });
}

void insert_rules(const QString &root, sqlite3 *connection)
{
    const list_owner list = list_of(root + lists_folder + QLatin1String("SyncedRules.plist"));
    floor_rows rows(connection, insert_rule, lists_folder + QLatin1String("SyncedRules.plist"));
    for (uint32_t index = 0; index < plist_array_get_size(list.get()); ++index) {
        plist_t rule = plist_array_get_item(list.get(), index);
        std::string criteria;
        append_criteria(plist_dict_get_item(rule, "Criteria"), criteria);
        rows.insert(text_of(rule, "RuleId"), text_of(rule, "RuleName"), criteria, text_of(rule, "Deletes"),
                    text_of(rule, "HighlightTextUsingColor"), text_of(rule, "MarkFlagged"), text_of(rule, "MarkRead"),
                    text_of(rule, "SendNotification"), text_of(rule, "ShouldCopyMessage"),
                    text_of(rule, "ShouldTransferMessage"), text_of(rule, "StopEvaluatingRules"),
                    text_of(rule, "Mailbox"), text_of(rule, "MailboxURL"), text_of(rule, "ResponseMessage"));
    }
}

void insert_smart_mailboxes(const QString &root, sqlite3 *connection)
{
    const list_owner list = list_of(root + lists_folder + QLatin1String("SyncedSmartMailboxes.plist"));
    floor_rows rows(connection, insert_smart_mailbox, lists_folder + QLatin1String("SyncedSmartMailboxes.plist"));
    for (uint32_t index = 0; index < plist_array_get_size(list.get()); ++index) {
        plist_t mailbox = plist_array_get_item(list.get(), index);
        std::string criteria;
        append_criteria(plist_dict_get_item(mailbox, "MailboxCriteria"), criteria);
        rows.insert(text_of(mailbox, "MailboxID"), text_of(mailbox, "MailboxName"), criteria);
    }
}

/// With the account that each belongs to, which a list of its own tells.
void insert_signatures(const QString &root, sqlite3 *connection)
{
    const QString folder = lists_folder + QLatin1String("Signatures/");
    const list_owner map = list_of(root + folder + QLatin1String("AccountsMap.plist"));
    std::map<std::string, std::string> account_of_uid;
    for_each_entry(map.get(), [&](const char *key, plist_t account) {
        plist_t uids = plist_dict_get_item(account, "Signatures");
        for (uint32_t index = 0; index < plist_array_get_size(uids); ++index) {
            account_of_uid[text_of(plist_array_get_item(uids, index))] = key;
        }
    });
    const list_owner list = list_of(root + folder + QLatin1String("AllSignatures.plist"));
    floor_rows rows(connection, insert_signature, folder + QLatin1String("AllSignatures.plist"));
    for (uint32_t index = 0; index < plist_array_get_size(list.get()); ++index) {
        plist_t signature = plist_array_get_item(list.get(), index);
        const std::string uid = text_of(signature, "SignatureUniqueId");
        const QString path = root + folder + QString::fromStdString(uid) + QLatin1String(".mailsignature");
        rows.insert(uid, text_of(signature, "SignatureName"), content_of(path).toStdString(), account_of_uid[uid]);
    }
}

} // namespace

void run_macos_configuration_floor(const QString &root_with_slash, const QString &database_path, stopwatch &watch)
{
    const QString root = root_with_slash.chopped(1);
    const QString folder = evidence::folder_of(database_path) + QLatin1Char('/');
    evidence::make_folder(folder);
    const QString accounts = library_folder + QLatin1String("Accounts/Accounts4.sqlite");
    const QString accounts_copy = copy_database(root + accounts, folder);
    watch.lap("copy");

    evidence::sqlite_connection connection = open_database(database_path);
    for (const char *table : {"signature", "accounts", "vip_contacts", "rules", "smart_mailboxes"}) {
        run(connection.get(), create_statement_of(table));
    }
    run(connection.get(), "ATTACH ? AS a", {accounts_copy});
    run(connection.get(), "BEGIN");
    insert_signatures(root, connection.get());
    run(connection.get(), insert_accounts,
        {QLatin1String(macos_user), accounts, QLatin1String(source_count_name), QLatin1String(scheme_display)});
    insert_vips(root, connection.get());
    insert_rules(root, connection.get());
    insert_smart_mailboxes(root, connection.get());
    watch.lap("rows");
    run(connection.get(), "COMMIT");
    connection.reset();
    watch.lap("commit");
    remove_database(accounts_copy);
    watch.lap("remove");
}

} // namespace bench
