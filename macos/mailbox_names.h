/// The names of the mailboxes and accounts that the preference list tells by their URLs: those that the tables
/// accounts, smart_mailboxes and vip_contacts hold so far.
#pragma once

#include "core/source_session.h"

#include <QString>

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

    source_query accounts;
    source_query smart_mailboxes;
    source_query vip_contacts;
};
