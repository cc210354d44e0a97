#include "evidence/accounts_database.h"

namespace evidence {

namespace {

const auto schema = QStringLiteral(
    "CREATE TABLE ZACCOUNT (Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER, ZACTIVE INTEGER, "
    "ZAUTHENTICATED INTEGER, ZSUPPORTSAUTHENTICATION INTEGER, ZVISIBLE INTEGER, ZACCOUNTTYPE INTEGER, "
    "ZPARENTACCOUNT INTEGER, ZDATE TIMESTAMP, ZACCOUNTDESCRIPTION VARCHAR, ZAUTHENTICATIONTYPE VARCHAR, "
    "ZCREDENTIALTYPE VARCHAR, ZIDENTIFIER VARCHAR, ZOWNINGBUNDLEID VARCHAR, ZUSERNAME VARCHAR, "
    "ZDATACLASSPROPERTIES BLOB);"
    "CREATE INDEX ZACCOUNT_ZACCOUNTTYPE_INDEX ON ZACCOUNT (ZACCOUNTTYPE);"
    "CREATE INDEX ZACCOUNT_ZPARENTACCOUNT_INDEX ON ZACCOUNT (ZPARENTACCOUNT);"
    "CREATE TABLE ZACCOUNTTYPE (Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER, ZENCRYPTACCOUNTPROPERTIES "
    "INTEGER, ZOBSOLETE INTEGER, ZSUPPORTSAUTHENTICATION INTEGER, ZSUPPORTSMULTIPLEACCOUNTS INTEGER, ZVISIBILITY "
    "INTEGER, ZACCOUNTTYPEDESCRIPTION VARCHAR, ZCREDENTIALPROTECTIONPOLICY VARCHAR, ZCREDENTIALTYPE VARCHAR, "
    "ZIDENTIFIER VARCHAR, ZOWNINGBUNDLEID VARCHAR);");

constexpr const char *insert_account =
    "INSERT INTO ZACCOUNT (Z_PK, Z_ENT, Z_OPT, ZACTIVE, ZAUTHENTICATED, ZSUPPORTSAUTHENTICATION, ZVISIBLE, "
    "ZACCOUNTTYPE, ZPARENTACCOUNT, ZDATE, ZACCOUNTDESCRIPTION, ZIDENTIFIER, ZOWNINGBUNDLEID, ZUSERNAME) "
    "VALUES (?, 2, 1, 1, 1, 1, 1, ?, ?, ?, ?, ?, ?, ?)";

constexpr const char *insert_account_type =
    "INSERT INTO ZACCOUNTTYPE (Z_ENT, Z_OPT, ZSUPPORTSAUTHENTICATION, ZVISIBILITY, ZACCOUNTTYPEDESCRIPTION, "
    "ZIDENTIFIER) VALUES (4, 1, 1, 0, ?, ?)";

} // namespace

accounts_database::accounts_database(const QString &path, sqlite_storage storage) : file(path, storage)
{
    file.run(schema);
}

qint64 accounts_database::add_account(const account_row &account)
{
    return file.prepare_insert(insert_account)(account.key, account.type, account.parent, account.date,
                                               account.description, account.identifier, account.owning_bundle_id,
                                               account.user_name);
}

qint64 accounts_database::add_account_type(const QString &identifier, const QString &description)
{
    return file.prepare_insert(insert_account_type)(description, identifier);
}

} // namespace evidence
