#include "ios/account_look_up.h"

namespace {

constexpr const char *select_account =
    "SELECT ZPARENTACCOUNT,ZDATE,ZOWNINGBUNDLEID,ZUSERNAME FROM ZACCOUNT WHERE ZIDENTIFIER=?";
constexpr const char *select_parent = "SELECT ZACCOUNTDESCRIPTION FROM ZACCOUNT WHERE Z_PK=?";

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
    return accounts.open(failures.open);
}

std::optional<account_record> account_look_up::account_of(const QString &identifier)
{
    // An identifier that the list does not tell is compared as an empty one.
    if (!account_rows.execute({QLatin1String("") + identifier})) {
        return std::nullopt;
    }
    account_record account;
    while (account_rows.next()) {
        if (is_cancelled) {
            return std::nullopt;
        }
        account = account_record();
        account.date_added = plugin_static_function::convert_apple_time_to_epoch(account_rows.text("ZDATE"));
        account.owner_bundle_id = account_rows.text("ZOWNINGBUNDLEID");
        account.user_name = account_rows.text("ZUSERNAME");
        if (parent_rows.execute({account_rows.text("ZPARENTACCOUNT")}) && parent_rows.next()) {
            account.description = parent_rows.text("ZACCOUNTDESCRIPTION");
        }
    }
    const bool is_cut_off = account_rows.was_cancelled() || parent_rows.was_cancelled();
    return is_cut_off ? std::nullopt : std::make_optional(account);
}
