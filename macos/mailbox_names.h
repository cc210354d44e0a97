/// The names of the mailboxes and accounts that the preference list tells by their URLs: those that the tables
/// accounts, smart_mailboxes and vip_contacts hold so far.
#pragma once

#include "core/source_session.h"

#include <QHash>
#include <QString>

/// The names that a result table gives to ids, the first row of an id counting. An id is compared as SQLite's LIKE
/// does: letters of ASCII in either case, and "%" and "_" in the id that is looked for stand for any characters.
class names_by_id
{
public:
    /// In: statements that give ids with names: all, and those of the ids LIKE "?". Session and log outlive the object.
    names_by_id(result_session &rows_so_far, const operation_log &log, const char *select_all, const char *select_like,
                const failure_text &texts);

    /// Out: false when the look-up fails, which is logged. The name is null where no row has the id.
    bool find(const QString &id, QString &name);

private:
    bool read_all();

    source_query all;
    source_query like;
    QHash<QString, QString> names; // by id in lower case: a list can hold as many URLs as the table has rows
    bool is_read = false;
};

class mailbox_names
{
public:
    /// Both arguments outlive the object; failed look-ups are logged there.
    mailbox_names(result_session &rows_so_far, const operation_log &log);

    /// Out: the entry of a mailbox, "Account Name: …;Mailbox URL: …;;" or the like; empty when it is one of an account
    /// that is not known, and when a look-up fails.
    QString entry_of_mailbox(const QString &url);
    /// Out: the entry of an account, "Account Name: …;Account URL: …;;" or the like; empty as above.
    QString entry_of_account(const QString &url);

private:
    QString entry_of_smart_mailbox(const QString &url);
    QString entry_with_account(const QString &account_id, const char *url_label, const QString &url);

    names_by_id accounts;
    names_by_id smart_mailboxes;
    names_by_id vip_contacts;
};
