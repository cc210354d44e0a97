#include "ios/account_look_up.h"

#include "core/look_up_table.h"

namespace {

constexpr const char *select_account =
    "SELECT ZPARENTACCOUNT,ZDATE,ZOWNINGBUNDLEID,ZUSERNAME FROM ZACCOUNT WHERE ZIDENTIFIER=?";
constexpr const char *select_parent = "SELECT ZACCOUNTDESCRIPTION FROM ZACCOUNT WHERE Z_PK=?";
constexpr look_up_table looked_up_accounts{
    "ZACCOUNT", "ZPARENTACCOUNT,ZDATE,ZOWNINGBUNDLEID,ZUSERNAME,ZACCOUNTDESCRIPTION,ZIDENTIFIER,Z_PK",
    "ZIDENTIFIER,Z_PK"};

} // namespace

account_look_up::account_look_up(const operation_log &log, const QString &copy_path, const QString &accounts_file,
                                 const account_look_up_failures &failure_texts, const std::atomic<bool> &cancel_flag)
    : accounts{log, copy_path, cancel_flag},
      failures(failure_texts), account_rows{accounts, log, select_account, failures.account, accounts_file},
      parent_rows{accounts, log, select_parent, failures.parent}, is_cancelled(cancel_flag)
{
}

bool account_look_up::open()
{
    if (!accounts.open(failures.open)) {
        return false;
    }
    make_look_up_fast(accounts, looked_up_accounts);
    account_rows.leave_out_large_values("ROWID");
    parent_rows.leave_out_large_values("ROWID");
    return true;
}

std::optional<account_record> account_look_up::account_of(const QString &identifier)
{
    // A list can name one account a million times over.
    if (last_account && last_identifier == identifier && last_identifier.isNull() == identifier.isNull()) {
        return last_account;
    }
    last_account.reset();
    if (!account_rows.execute({identifier})) {
        return std::nullopt;
    }
    account_record account;
    bool is_whole = true;
    while (account_rows.next()) {
        if (is_cancelled) {
            return std::nullopt;
        }
        account.date_added = plugin_static_function::convert_apple_time_to_epoch(account_rows.text("ZDATE"));
        account.owner_bundle_id = account_rows.text("ZOWNINGBUNDLEID");
        account.user_name = account_rows.text("ZUSERNAME");
        if (!parent_rows.execute({account_rows.text("ZPARENTACCOUNT")})) {
            is_whole = false;
        } else if (parent_rows.next()) { // a row whose parent is missing leaves the description of the one in front
            account.description = parent_rows.text("ZACCOUNTDESCRIPTION");
        }
    }
    if (account_rows.was_cancelled() || parent_rows.was_cancelled()) {
        return std::nullopt;
    }
    if (is_whole) { // a failing look-up is logged each time
        last_identifier = identifier;
        last_account = account;
    }
    return account;
}
