// Table accounts: the accounts of V3 to V9 from the system's account database, found by the names of the folders in the
// mail folder, and those of V2 from Accounts.plist.
#include "core/joined_text.h"
#include "core/result_session.h"
#include "core/row_writer.h"
#include "core/source_session.h"
#include "macos/mail_macos.h"
#include "macos/row_text.h"
#include "services/plugin_helper_functions.h"

#include <algorithm>
#include <cstring>

namespace {

// --- The account database --------------------------------------------------------------------------------------------

constexpr operation_log database_log{"void mail_macos::extract_accounts_for_11_12(QString, QString, QString, int)"};

constexpr const char *imap_prefix = "IMAP-";
constexpr const char *pop_prefix = "POP-";

constexpr failure_text source_open_failure{"Source Db opening --------FAILED------- ", "Error :- "};
constexpr failure_text database_destination_failure{"destination_db Db opening --------FAILED------- ", "Error :- "};

constexpr failure_text select_named_failure{"query_source execution --------FAILED-------", "Error :- ", ""};
constexpr const char *select_named_account =
    "select Z_PK,ZIDENTIFIER,ZPARENTACCOUNT,ZUSERNAME,ZOWNINGBUNDLEID from ZACCOUNT where (ZIDENTIFIER = ? OR "
    "ZUSERNAME = ?)";

constexpr failure_text select_by_user_failure{"query_source 111 query execution --------FAILED-------", "Error :- ",
                                              "Query :- "};
constexpr const char *select_account_by_user =
    "select Z_PK,ZIDENTIFIER,ZPARENTACCOUNT,ZUSERNAME,ZOWNINGBUNDLEID,ZACCOUNTDESCRIPTION,ZDATE from ZACCOUNT where "
    "ZUSERNAME = ? ";

constexpr failure_text select_parent_failure{"query_source 222 query execution --------FAILED-------", "Error :- ", ""};
constexpr failure_text select_parent_of_unnamed_failure{"query_source 333  query execution --------FAILED-------",
                                                        "Error :- ", ""};
constexpr const char *select_parent_account =
    "select Z_PK,ZIDENTIFIER,ZPARENTACCOUNT,ZUSERNAME,ZOWNINGBUNDLEID,ZACCOUNTDESCRIPTION,ZDATE from ZACCOUNT where "
    "Z_PK = ?";

constexpr failure_text select_signatures_failure{"query_get_signature ----- FAILED ------", "Error :- ", ""};
constexpr const char *select_signatures =
    "select signature_name, signature, source_file from signature where related_account_id = ?";

constexpr failure_text insert_account_failure{"Execute dest_query --------FAILED--------", "Error :- ", "Query :- "};
constexpr const char *insert_account =
    "insert into accounts(bookmark, system_user, account_description, user_name,date_added, account_identifier, "
    "signature,source_file, artifacts_relation_source_file, source_count_name, os_scheme_display)values(?,?,?,?,?,?, "
    "?,?,?,?,?)";

// The account that a folder of the store is named by: "IMAP-anna@imap.example.org" and
// "POP-anna@example.org@pop.example.org" are anna@example.org, any other name is the account's identifier. Null for a
// prefix without a server.
QString account_name_of(QString folder_name)
{
    if (!folder_name.startsWith(QLatin1String(imap_prefix)) && !folder_name.startsWith(QLatin1String(pop_prefix))) {
        return folder_name;
    }
    for (const char *prefix : {imap_prefix, pop_prefix}) {
        if (folder_name.startsWith(QLatin1String(prefix))) {
            folder_name.remove(QLatin1String(prefix));
        }
    }
    QStringList parts = folder_name.split(QLatin1Char('@'));
    if (parts.size() < 2) {
        return QString();
    }
    if (parts.size() == 2) {
        return folder_name.remove(QLatin1String("imap.")).remove(QLatin1String("pop3."));
    }
    parts.removeAt(2);
    return parts.join(QLatin1Char('@'));
}

// The file among the sources of a signature; all of them where there is none.
QString signature_path_of(const QString &source_file)
{
    QString path = source_file;
    for (const QString &part : source_file.split(QLatin1Char(';'))) {
        if (part.endsWith(QLatin1String(".mailsignature"))) {
            path = part;
        }
    }
    return path;
}

// The signatures of an account as its row shows them.
QString signatures_of(source_query &signature_rows, const std::atomic<bool> &cancel_flag)
{
    joined_text signatures(database_log);
    while (!cancel_flag && !signatures.is_full() && signature_rows.next()) {
        QString text;
        append_part(text, "Signature: ", signature_rows.text("signature"));
        const QString path = signature_path_of(signature_rows.text("source_file"));
        if (!path.trimmed().isEmpty()) {
            append_part(text, "Signature File Path: ", path);
            text += QLatin1Char(';');
        }
        signatures.append(text, QString());
    }
    return without_ending(signatures.text(), ";;");
}

// --- Accounts.plist --------------------------------------------------------------------------------------------------

constexpr failure_text list_destination_failure{"[extract_xcode_accounts] destination db open ---------FAILED---------",
                                                "", nullptr, false, true};

constexpr failure_text insert_receiving_failure{
    "[extract_xcode_accounts_older_version]insert in account -----------FAILED--------", "Error :- ",
    "Executed Query :- ", false};
constexpr const char *insert_receiving_account =
    "insert into accounts(bookmark,system_user, mailaccountname, accountpath,accounttype, dateoflastsync, "
    "emailaddress, display_name,hostname,ispaccountid,portnumber,smtpidentifier,servername, vendor,user_name,uniqueid,"
    "archive_mailbox_name,drafts_mailbox_name,notes_mailbox_name,trash_mailbox_name,to_dos_mailbox_name,"
    "sent_mailbox_name,status,source_file,artifacts_relation_source_file,source_count_name,os_scheme_display)"
    "values(?,?,?,?,?,?,?, ?,?,?,?,?, ?,?,?,?,?, ?,?,?,?,?, ?,?,?,?,?)";

constexpr failure_text insert_delivery_failure{"insert in accounts --------FAILED------", "Error :- ", "Query :- "};
constexpr const char *insert_delivery_account =
    "insert into accounts(bookmark,system_user, mailaccountname, accounttype, hostname,portnumber,user_name,uniqueid,"
    "status,source_file,artifacts_relation_source_file,source_count_name,os_scheme_display) "
    "values(?,?,?,?,?,?,?,?,?,?,?,?,?)";

// The addresses as they stand, with ";" behind each but the last element of the list.
QString listed_addresses_of(const property_list_value &address_list)
{
    QString addresses;
    const std::vector<property_list_value> elements = address_list.elements();
    for (std::size_t i = 0; i < elements.size(); ++i) {
        if (elements[i].is_string()) {
            addresses += elements[i].text();
            addresses += i + 1 < elements.size() ? QLatin1String(";") : QLatin1String("");
        }
    }
    return addresses;
}

// In a time that grows with the texts' lengths, not with their product.
bool stands_in(const QByteArray &text, const QByteArray &part)
{
    return memmem(text.constData(), static_cast<std::size_t>(text.size()), part.constData(),
                  static_cast<std::size_t>(part.size())) != nullptr;
}

} // namespace

QStringList mail_macos::sub_get_identifier_bundle_path(const QString &folder) const
{
    QStringList paths;
    if (!source.contains(folder)) {
        return paths;
    }
    folder_walk entries(folder, links::follow, companion_files::meet);
    while (!cancel_extraction_bool && entries.next()) {
        paths.append(folder + QLatin1Char('/') + QFile::decodeName(entries.relative_path()));
        entries.skip_folder();
    }
    std::sort(paths.begin(), paths.end()); // the same rows in the same order from every copy of the evidence
    return paths;
}

QStringList mail_macos::sub_get_identifier_bundle_name(const QStringList &paths) const
{
    QStringList names;
    for (const QString &path : paths) {
        if (cancel_extraction_bool) {
            break;
        }
        const QString name = account_name_of(path.mid(path.lastIndexOf(QLatin1Char('/')) + 1));
        if (!name.isNull()) {
            names.append(name);
        }
    }
    return names;
}

std::vector<mail_macos::struct_account_details>
mail_macos::sub_compare_identifier_with_db(const QStringList &names, const QString &database_path) const
{
    static constexpr operation_log log{
        "QList<struct_account_details> mail_macos::sub_compare_identifier_with_db(QStringList, QString)"};
    std::vector<struct_account_details> accounts;
    source_session database{log, database_path, cancel_extraction_bool};
    if (!database.open(source_open_failure)) {
        return accounts;
    }
    source_query account_rows{database, log, select_named_account, select_named_failure};
    for (const QString &name : names) {
        if (cancel_extraction_bool) {
            break;
        }
        if (!account_rows.execute({name, name}) || !account_rows.next()) {
            continue;
        }
        struct_account_details account{account_rows.text("Z_PK"), account_rows.text("ZIDENTIFIER"),
                                       account_rows.text("ZPARENTACCOUNT"), account_rows.text("ZUSERNAME"),
                                       account_rows.text("ZOWNINGBUNDLEID")};
        if (!account.parent_account.isEmpty() || !account.account_user_name.isEmpty()) {
            accounts.push_back(std::move(account));
        }
    }
    return accounts;
}

void mail_macos::extract_accounts_for_11_12(const QString &mail_folder, const QString &account_database,
                                            const QString &user, int)
{
    const operation_log &log = database_log;
    log("Starts");
    const QStringList names = sub_get_identifier_bundle_name(sub_get_identifier_bundle_path(mail_folder));
    const QString database_copy = plugin_helper_obj->get_adhoc_path_for_database(account_database);
    if (database_copy.isEmpty()) {
        return;
    }
    const std::vector<struct_account_details> accounts = sub_compare_identifier_with_db(names, database_copy);

    source_session database{log, database_copy, cancel_extraction_bool};
    result_session destination{log, destination_db_path_QString};
    if (!database.open(source_open_failure) || !destination.open(database_destination_failure)) {
        return;
    }
    source_query by_user{database, log, select_account_by_user, select_by_user_failure};
    source_query parent{database, log, select_parent_account, select_parent_failure};
    source_query parent_of_unnamed{database, log, select_parent_account, select_parent_of_unnamed_failure};
    source_query signature_rows{destination, log, select_signatures, select_signatures_failure};
    row_writer rows{*this, destination, log, insert_account, insert_account_failure};
    const artifact_source_file shown_sources =
        joined_source_files(shown_source_of(mail_folder, user), shown_source_of(account_database, user));
    for (const struct_account_details &account : accounts) {
        if (cancel_extraction_bool) {
            return;
        }
        const bool is_named = !account.account_user_name.isEmpty();
        const bool has_parent = !account.parent_account.isEmpty();
        source_query &query = !is_named ? parent_of_unnamed : has_parent ? parent : by_user;
        if (!query.execute({has_parent ? account.parent_account : account.account_user_name})) {
            continue;
        }
        query.next(); // an account that it does not find is a row all the same
        const std::optional<row_values> row = row_of_account(query, signature_rows, user, shown_sources);
        if (cancel_extraction_bool) { // it may have been filled in part only
            return;
        }
        if (row) {
            rows.insert(*row);
        }
    }
    destination.finish();
    log("Ends");
}

std::optional<row_values> mail_macos::row_of_account(source_query &account, source_query &signature_rows,
                                                     const QString &user,
                                                     const artifact_source_file &shown_sources) const
{
    const QString identifier = account.text("ZIDENTIFIER");
    QString signatures;
    if (!identifier.trimmed().isEmpty()) {
        if (!signature_rows.execute({identifier})) {
            return std::nullopt;
        }
        signatures = signatures_of(signature_rows, cancel_extraction_bool);
    }
    row_values row{
        {"bookmark", QStringLiteral("0")},
        {"system_user", user},
        {"account_description", account.text("ZACCOUNTDESCRIPTION")},
        {"user_name", account.text("ZUSERNAME")},
        {"date_added", plugin_static_function::convert_apple_time_to_epoch(account.text("ZDATE"))},
        {"account_identifier", identifier},
        {"signature", signatures},
    };
    append_source_columns(row, shown_sources);
    return row;
}

void mail_macos::extract_xcode_accounts(const QString &, const QString &file, const QString &user,
                                        const QString &destination_db)
{
    static constexpr operation_log log{"void mail_macos::extract_xcode_accounts(QString, QString, QString, QString)"};
    log("Start");
    if (file.isEmpty()) {
        return;
    }
    result_session destination{log, destination_db};
    if (!destination.open(list_destination_failure)) {
        log("[extract_xcode_accounts] end with failure");
        return;
    }
    const property_list list = property_list::from_file(file);
    if (!list.root().is_dictionary()) {
        log("[extract_xcode_accounts] mplist nil---------FAILED--------");
        log("[extract_xcode_accounts] end with failure ");
        return;
    }
    const artifact_source_file shown_list = shown_source_of(file.trimmed(), user);
    QByteArray all_addresses; // of the receiving accounts

    row_writer receiving_rows{*this, destination, log, insert_receiving_account, insert_receiving_failure};
    for (const property_list_value &account : list.root().object_for_key(QStringLiteral("MailAccounts")).elements()) {
        if (cancel_extraction_bool) {
            return;
        }
        const std::optional<row_values> row = row_of_receiving_account(account, user, shown_list, all_addresses);
        if (row) {
            receiving_rows.insert(*row);
        }
    }
    row_writer delivery_rows{*this, destination, log, insert_delivery_account, insert_delivery_failure};
    for (const property_list_value &account :
         list.root().object_for_key(QStringLiteral("DeliveryAccounts")).elements()) {
        if (cancel_extraction_bool) {
            return;
        }
        const QString name = stored_text("Username", account);
        if (!name.isEmpty() &&
            !stands_in(all_addresses, name.toUtf8())) { // else it belongs to a receiving account that is there
            delivery_rows.insert(row_of_delivery_account(account, user, shown_list));
        }
    }
    destination.finish();
    log("[extract_xcode_accounts] ends ");
}

std::optional<row_values> mail_macos::row_of_receiving_account(const property_list_value &account, const QString &user,
                                                               const artifact_source_file &shown_list,
                                                               QByteArray &all_addresses) const
{
    const property_list_value address_list = account.object_for_key(QStringLiteral("EmailAddresses"));
    const QString addresses = listed_addresses_of(address_list);
    if (stored_text("AccountName", account).isEmpty() || (address_list.is_array() && addresses.trimmed().isEmpty())) {
        return std::nullopt;
    }
    if (address_list.is_array()) {
        all_addresses += addresses.toUtf8() + ';';
    }
    const property_list_value server = account.object_for_key(QStringLiteral("ServerID"));
    const property_list_value last_sync = account.object_for_key(QStringLiteral("DateOfLastSync"));
    const bool is_told_inactive = account.object_for_key(QStringLiteral("IsActive")).is_string(); // whatever it says
    row_values row{
        {"bookmark", QStringLiteral("0")},
        {"system_user", user},
        {"mailaccountname", stored_text("AccountName", account)},
        {"accountpath", shown_account_path_of(stored_text("AccountPath", account), user)},
        {"accounttype", stored_text("AccountType", account)},
        {"dateoflastsync", text_of_instant(last_sync.time_interval_since_1970())},
        {"emailaddress", addresses},
        {"display_name", stored_text("FullUserName", account)},
        {"hostname", stored_text("Hostname", account)},
        {"ispaccountid", stored_text("ISPAccountID", account)},
        {"portnumber", stored_text("PortNumber", account)},
        {"smtpidentifier", stored_text("SMTPIdentifier", account)},
        {"servername", stored_text("name", server)},
        {"vendor", stored_text("vendor", server)},
        {"user_name", stored_text("Username", account)},
        {"uniqueid", stored_text("uniqueId", account)},
        {"archive_mailbox_name", stored_text("ArchiveMailboxName", account)},
        {"drafts_mailbox_name", stored_text("DraftsMailboxName", account)},
        {"notes_mailbox_name", stored_text("NotesMailboxName", account)},
        {"trash_mailbox_name", stored_text("TrashMailboxName", account)},
        {"to_dos_mailbox_name", stored_text("ToDosMailboxName", account)},
        {"sent_mailbox_name", stored_text("SentMessagesMailboxName", account)},
        {"status", is_told_inactive ? QObject::tr("Not Active") : QObject::tr("Active")},
    };
    append_source_columns(row, shown_list);
    return row;
}

// The stored path is a path of the volume, or of the home folder that "~" stands for.
QString mail_macos::shown_account_path_of(const QString &stored_path, const QString &user) const
{
    const bool is_below_home = stored_path.startsWith(QLatin1Char('~'));
    const QString path = is_below_home ? with_home_expanded(stored_path, user) : behind_source_root(stored_path);
    if (leads_out(path)) {
        return QString();
    }
    return plugin_static_function::get_relative_file_path(
        plugin_static_function::get_complete_file_path(path, user, source_type_internal_QString), user,
        source_type_internal_QString);
}

row_values mail_macos::row_of_delivery_account(const property_list_value &account, const QString &user,
                                               const artifact_source_file &shown_list) const
{
    const property_list_value port = account.object_for_key(QStringLiteral("PortNumber"));
    row_values row{
        {"bookmark", QStringLiteral("0")},
        {"system_user", user},
        {"mailaccountname", stored_text("AccountName", account)},
        {"accounttype", stored_text("AccountType", account)},
        {"hostname", stored_text("Hostname", account)},
        {"portnumber", port.is_number() ? port.string_value() : stored_text("PortNumber", account)},
        {"user_name", stored_text("Username", account)},
        {"uniqueid", stored_text("uniqueId", account)},
        {"status", QObject::tr("Deleted")},
    };
    append_source_columns(row, shown_list);
    return row;
}
