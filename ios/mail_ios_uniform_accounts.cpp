// Table accounts: the account that was selected last on the device, from MailboxCollections.plist and Accounts3.sqlite.
#include "ios/mail_ios_uniform.h"

#include "core/result_session.h"
#include "core/row_writer.h"
#include "core/source_session.h"
#include "services/plugin_helper_functions.h"
#include "services/property_list.h"

namespace {

constexpr failure_text destination_open_failure{"Destination db opening----FAILED----", "Error :- "};
constexpr failure_text property_list_failure{"m_plist open---FAILED---"};
constexpr failure_text source_open_failure{"Source Db open -----FAILED-----", "Error :- "};

constexpr const char *select_account =
    "SELECT ZPARENTACCOUNT,ZDATE,ZOWNINGBUNDLEID,ZUSERNAME FROM ZACCOUNT WHERE ZIDENTIFIER = ?";
constexpr failure_text select_account_failure{"Select query -----FAILED----- ", "ERROR :- ", "Query :- "};

constexpr const char *select_parent = "SELECT ZACCOUNTDESCRIPTION FROM ZACCOUNT WHERE Z_PK=?";
constexpr failure_text select_parent_failure{"select query_select_mail_data -----FAILED----- ", "ERROR :- ",
                                             "QUERY :- "};

constexpr const char *insert_account =
    "insert into accounts(bookmark,unique_id,date_added,account_description,owner_bundle_id,"
    "user_name,source_file,source_count_name, os_scheme_display) values(0,?,?,?,?, ?,?,?,?)";
constexpr failure_text insert_account_failure{"Insert query_insert ------FAILED-----", "ERROR :- ", "QUERY :- "};

struct account_record
{
    QString date_added;
    QString owner_bundle_id;
    QString user_name;
    QString description;
};

// Empty, but not null, where the list tells none: it is compared with the stored identifiers all the same.
QString last_selected_account_of(const property_list &mailbox_collections)
{
    return QLatin1String("") + mailbox_collections.root()
                                   .object_for_key(QStringLiteral("lastSelectedItem"))
                                   .object_for_key(QStringLiteral("uniqueID"))
                                   .text();
}

} // namespace

void mail_ios_uniform::xcode_extract_mail_accounts()
{
    static constexpr operation_log log{"void mail_ios_uniform::xcode_extract_mail_accounts()"};
    log("Starts");
    if (source_file_mailbox_collections_QString.trimmed().isEmpty()) {
        return;
    }
    result_session destination{log, destination_db_path_QString};
    if (!destination.open(destination_open_failure)) {
        return;
    }
    const property_list mailbox_collections = property_list::from_file(source_file_mailbox_collections_QString);
    if (!mailbox_collections.root().is_dictionary()) {
        log.failure(property_list_failure, source_file_mailbox_collections_QString);
        return;
    }
    const QString account_id = last_selected_account_of(mailbox_collections);

    const QString accounts_copy = plugin_helper_obj->get_adhoc_path_for_database(source_file_accounts_QString);
    if (accounts_copy.isEmpty()) {
        return;
    }
    source_session accounts{log, accounts_copy, cancel_extraction_bool};
    if (!accounts.open(source_open_failure)) {
        return;
    }
    source_query account_rows{accounts, log, select_account, select_account_failure};
    if (!account_rows.execute({account_id})) {
        return;
    }
    source_query parent_rows{accounts, log, select_parent, select_parent_failure};
    account_record account; // of the last row; without one the account's id stands alone
    while (account_rows.next()) {
        if (cancel_extraction_bool) {
            return;
        }
        account = account_record();
        account.date_added = plugin_static_function::convert_apple_time_to_epoch(account_rows.text("ZDATE"));
        account.owner_bundle_id = account_rows.text("ZOWNINGBUNDLEID");
        account.user_name = account_rows.text("ZUSERNAME");
        if (parent_rows.execute({account_rows.text("ZPARENTACCOUNT")}) && parent_rows.next()) {
            account.description = parent_rows.text("ZACCOUNTDESCRIPTION");
        }
    }

    if (account_rows.was_cancelled() || parent_rows.was_cancelled()) {
        return; // the look-up was cut off: a row would say that the account is unknown
    }
    row_writer rows{*this, destination, log, insert_account, insert_account_failure, row_count::attempted};
    rows.insert({
        {"unique_id", account_id},
        {"date_added", account.date_added},
        {"account_description", account.description},
        {"owner_bundle_id", account.owner_bundle_id},
        {"user_name", account.user_name},
        {"source_file", relative_path(source_file_mailbox_collections_QString) + QLatin1Char(';') +
                            relative_path(source_file_accounts_QString)},
        {"source_count_name", plugin_static_function::get_source_count_name()},
        {"os_scheme_display", os_scheme_display_QString},
    });
    destination.finish();
    log("Ends");
}
