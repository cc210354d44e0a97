/// What the account database of a device tells of an account that a property list names by its identifier.
#pragma once

#include "core/source_session.h"

#include <QString>

#include <atomic>
#include <optional>

struct account_record
{
    QString date_added; ///< seconds since 1970
    QString owner_bundle_id;
    QString user_name;
    QString description; ///< of the parent account
};

struct account_look_up_failures
{
    failure_text open;
    failure_text account;
    failure_text parent;
};

class account_look_up
{
public:
    /// In: the working copy, and the path of the database in the backup, which failures name. All references outlive
    /// the object.
    account_look_up(const operation_log &log, const QString &copy_path, const QString &accounts_file,
                    const account_look_up_failures &failures, const std::atomic<bool> &cancel_flag);

    bool open();
    /// Out: the account of that identifier, of several the last one, with the last description that any of them has; an
    /// empty one when the database holds none, as it does of a null identifier. None when the look-up fails, which is
    /// logged, or the extraction is cancelled.
    std::optional<account_record> account_of(const QString &identifier);

private:
    source_session accounts;
    const account_look_up_failures &failures;
    source_query account_rows;
    source_query parent_rows;
    const std::atomic<bool> &is_cancelled;
    QString last_identifier;
    std::optional<account_record> last_account;
};
