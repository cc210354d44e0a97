/// The configuration of the mail application on a macOS volume: rules, smart mailboxes, VIPs, signatures, accounts and
/// preferences of a user, as they would be found.
#pragma once

#include "evidence/macos_mail_tree.h"
#include "evidence/sample_random.h"

namespace evidence {

/// An account as mailbox URLs and the account database name it.
struct macos_sample_account
{
    QString scheme;     ///< "imap", "ews" or "pop"
    QString identifier; ///< what stands behind "://" in the URLs of its mailboxes
    QString user_name;
    QString description;
};

/// How many entries the lists of a store have.
struct macos_configuration_size
{
    int rules = 12;
    int smart_mailboxes = 9;
    int vips = 15;
    int signatures = 5;
};

/// Out: an account of that number with a UUID; the same number, user and choices give the same account.
macos_sample_account sample_account(int number, sample_random &random);

/// Writes the configuration of one user. Failures throw evidence_error.
class macos_configuration
{
public:
    /// In: the tree, and where the choices come from; both outlive the object.
    macos_configuration(macos_mail_tree &tree, QString user, QVector<macos_sample_account> accounts,
                        sample_random &random);

    /// The lists of a store of V3 to V9: rules, smart mailboxes, VIPs in the layout of the generation, signatures.
    void write_lists(int generation, const macos_configuration_size &size);
    /// The accounts as the generation keeps them: V2 in Accounts.plist with its delivery accounts, V3 to V9 in the
    /// user's account database, with a folder in the store for each account that has none yet. Once a database.
    void write_accounts(int generation);
    /// The two lists of preferences. They select signatures of the lists written before.
    void write_preferences();

private:
    QString account_url(const macos_sample_account &account) const;
    QString list_path(int generation, const char *name) const;
    void write_rules(int generation, int count);
    void write_smart_mailboxes(int generation, int count);
    void write_vips(int generation, int count);
    void write_signatures(int generation, int count);
    void write_account_list();
    void write_account_database(int generation);
    void write_shared_preferences();

    macos_mail_tree &tree;
    QString user;
    QVector<macos_sample_account> accounts;
    sample_random &random;
    QStringList signature_uids; ///< of all lists so far
    QStringList smart_mailbox_ids;
};

} // namespace evidence
