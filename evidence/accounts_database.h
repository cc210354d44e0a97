/// Writes the account database of a device or computer (Accounts3.sqlite, Accounts4.sqlite).
#pragma once

#include "evidence/sqlite_file.h"

namespace evidence {

/// A row of ZACCOUNT. A field left as it is becomes SQL NULL, key included: the database then assigns it.
struct account_row
{
    QVariant key;        ///< Z_PK
    QVariant type;       ///< ZACCOUNTTYPE, a Z_PK of the table of that name
    QVariant parent;     ///< ZPARENTACCOUNT, a Z_PK of this table
    QVariant date;       ///< ZDATE, seconds since 2001-01-01 with a fraction
    QString description; ///< ZACCOUNTDESCRIPTION, what the settings show as the account's name
    QString identifier;  ///< ZIDENTIFIER, the UUID that stands in mailbox URLs
    QString owning_bundle_id;
    QString user_name;
};

class accounts_database
{
public:
    explicit accounts_database(const QString &path, sqlite_storage storage = sqlite_storage::plain);

    /// Out: Z_PK of the row.
    qint64 add_account(const account_row &account);
    /// A kind of account, such as "com.apple.account.IMAP" with the description "IMAP". Out: Z_PK of the row.
    qint64 add_account_type(const QString &identifier, const QString &description);

    /// The database itself, for what no operation here writes.
    sqlite_file &database() { return file; }
    void finish() { file.finish(); }

private:
    sqlite_file file;
};

} // namespace evidence
