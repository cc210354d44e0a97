#include "evidence/ios_backup_databases.h"

namespace evidence {

namespace {

const auto recents_schema = QStringLiteral(
    "CREATE TABLE recents (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, display_name TEXT, bundle_identifier TEXT, "
    "sending_address TEXT, original_source TEXT, dates TEXT, last_date INTEGER, weight REAL, record_hash TEXT, count "
    "INTEGER, group_kind INTEGER);"
    "CREATE TABLE contacts (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, recent_id INTEGER, display_name TEXT, kind TEXT, "
    "address TEXT);"
    "CREATE TABLE metadata (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, recent_id INTEGER, key TEXT, value BLOB);");

const auto address_book_schema = QStringLiteral(
    "CREATE TABLE ABPerson (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, First TEXT, Last TEXT, Middle TEXT, FirstPhonetic "
    "TEXT, MiddlePhonetic TEXT, LastPhonetic TEXT, Organization TEXT, Department TEXT, Note TEXT, Kind INTEGER, "
    "Birthday TEXT, JobTitle TEXT, Nickname TEXT, Prefix TEXT, Suffix TEXT, FirstSort TEXT, LastSort TEXT, "
    "CreationDate INTEGER, ModificationDate INTEGER, CompositeNameFallback TEXT, ExternalIdentifier TEXT, StoreID "
    "INTEGER, DisplayName TEXT, ExternalRepresentation BLOB, PersonLink INTEGER DEFAULT -1, ImageURI TEXT, "
    "AlternateBirthday TEXT, guid TEXT);"
    "CREATE TABLE ABPersonFullTextSearch_content (docid INTEGER PRIMARY KEY, c0First, c1Last, c2Middle, "
    "c3FirstPhonetic, c4MiddlePhonetic, c5LastPhonetic, c6Organization, c7Department, c8Note, c9Birthday, c10JobTitle, "
    "c11Nickname, c12Prefix, c13Suffix, c14DisplayName, c15CompositeNameFallback, c16Phone, c17Email, c18Address);");

constexpr const char *insert_person =
    "INSERT INTO ABPerson (ROWID, First, Last, Middle, Nickname, DisplayName, Organization, ImageURI, JobTitle, "
    "CreationDate, ModificationDate, Prefix, Suffix, Note, Birthday, AlternateBirthday, FirstPhonetic, MiddlePhonetic, "
    "LastPhonetic, Kind, StoreID) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, 0, 0)";

constexpr const char *insert_search_content =
    "INSERT INTO ABPersonFullTextSearch_content (docid, c0First, c1Last, c16Phone, c17Email, c18Address) "
    "VALUES (?, ?, ?, ?, ?, ?)";

const auto sms_schema = QStringLiteral(
    "CREATE TABLE message (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, guid TEXT UNIQUE NOT NULL, text TEXT, replace "
    "INTEGER DEFAULT 0, service_center TEXT, handle_id INTEGER DEFAULT 0, subject TEXT, country TEXT, attributedBody "
    "BLOB, version INTEGER DEFAULT 0, type INTEGER DEFAULT 0, service TEXT, account TEXT, date INTEGER, date_read "
    "INTEGER, is_from_me INTEGER DEFAULT 0);");

} // namespace

recents_database::recents_database(const QString &path, sqlite_storage storage) : file(path, storage)
{
    file.run(recents_schema);
    recents = file.prepare_insert(
        "INSERT INTO recents (ROWID, display_name, bundle_identifier, sending_address, original_source, dates, "
        "last_date, record_hash, count, weight, group_kind) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, 0, 0)");
    contacts = file.prepare_insert("INSERT INTO contacts (recent_id, display_name, kind, address) VALUES (?, ?, ?, ?)");
    metadata = file.prepare_insert("INSERT INTO metadata (recent_id, key, value) VALUES (?, ?, ?)");
}

qint64 recents_database::add_recent(const recent_row &recent)
{
    return (*recents)(recent.row_id, recent.display_name, recent.bundle_identifier, recent.sending_address,
                      recent.original_source, recent.dates, recent.last_date, recent.record_hash, recent.count);
}

qint64 recents_database::add_contact(qint64 recent_id, const recent_contact_row &contact)
{
    return (*contacts)(recent_id, contact.display_name, contact.kind, contact.address);
}

qint64 recents_database::add_metadata(qint64 recent_id, const QString &key, const QByteArray &value)
{
    return (*metadata)(recent_id, key, value);
}

void recents_database::finish()
{
    recents.reset();
    contacts.reset();
    metadata.reset();
    file.finish();
}

address_book_database::address_book_database(const QString &path, sqlite_storage storage) : file(path, storage)
{
    file.run(address_book_schema);
    persons = file.prepare_insert(insert_person);
    search_contents = file.prepare_insert(insert_search_content);
}

qint64 address_book_database::add_person(const address_book_person &person)
{
    const qint64 row_id =
        (*persons)(person.row_id, person.first, person.last, person.middle, person.nickname, person.display_name,
                   person.organization, person.image_uri, person.job_title, person.creation_date,
                   person.modification_date, person.prefix, person.suffix, person.note, person.birthday,
                   person.alternate_birthday, person.first_phonetic, person.middle_phonetic, person.last_phonetic);
    return (*search_contents)(row_id, person.first, person.last, person.phone, person.email, person.address);
}

void address_book_database::finish()
{
    persons.reset();
    search_contents.reset();
    file.finish();
}

sms_database::sms_database(const QString &path, sqlite_storage storage) : file(path, storage)
{
    file.run(sms_schema);
    messages = file.prepare_insert("INSERT INTO message (guid, text) VALUES (?, ?)");
}

qint64 sms_database::add_message(const QString &guid, const QString &text)
{
    return (*messages)(guid, text);
}

void sms_database::finish()
{
    messages.reset();
    file.finish();
}

} // namespace evidence
