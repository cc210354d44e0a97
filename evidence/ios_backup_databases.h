/// Writes the databases that an iOS device backup holds beside the account database (accounts_database.h): the
/// addresses used recently, the address book and the short messages. Failures throw evidence_error.
#pragma once

#include "evidence/sqlite_file.h"

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <optional>

namespace evidence {

/// A row of "recents". QVariant() and a null text are SQL NULL, and any column takes any type, as in a damaged file.
struct recent_row
{
    QVariant row_id; ///< NULL: assigned by the database
    QString display_name;
    QVariant bundle_identifier; ///< the application, such as "com.apple.mobilemail"
    QVariant sending_address;   ///< the user's own address
    QVariant original_source;
    QVariant dates;     ///< when it was used: milliseconds since 1970, joined by ":"
    QVariant last_date; ///< milliseconds since 1970
    QVariant record_hash;
    QVariant count; ///< how many addresses belong to it
};

/// A row of "contacts" in the same file: one who was addressed.
struct recent_contact_row
{
    QString display_name;
    QString kind; ///< such as "email"
    QString address;
};

/// The file Library/Mail/Recents. Neither side table has an index on recent_id.
class recents_database
{
public:
    explicit recents_database(const QString &path, sqlite_storage storage = sqlite_storage::plain);

    /// Out: ROWID of the row.
    qint64 add_recent(const recent_row &recent);
    qint64 add_contact(qint64 recent_id, const recent_contact_row &contact);
    /// In: a key such as "corerecents:subject" and the bytes of its value, which on a device are a property list
    /// (property_list_bytes).
    qint64 add_metadata(qint64 recent_id, const QString &key, const QByteArray &value);

    /// The database itself, for what no operation here writes.
    sqlite_file &database() { return file; }
    void finish();

private:
    sqlite_file file;
    std::optional<row_inserter> recents; // destroyed before the database they belong to
    std::optional<row_inserter> contacts;
    std::optional<row_inserter> metadata;
};

/// A person of the address book: a row of ABPerson, and the three columns of the full-text table that read from it.
struct address_book_person
{
    QVariant row_id; ///< NULL: assigned by the database
    QString first;
    QString last;
    QString middle;
    QString nickname;
    QString display_name;
    QString organization;
    QString image_uri;
    QString job_title;
    QVariant creation_date; ///< seconds since 2001, as the two below
    QVariant modification_date;
    QVariant birthday;
    QString prefix;
    QString suffix;
    QString note;
    QVariant alternate_birthday;
    QString first_phonetic;
    QString middle_phonetic;
    QString last_phonetic;
    QString phone; ///< c16Phone: all numbers in one text
    QString email; ///< c17Email: all addresses in one text; null for a person without one
    QString address;
};

/// The file Library/AddressBook/AddressBook.sqlitedb.
class address_book_database
{
public:
    explicit address_book_database(const QString &path, sqlite_storage storage = sqlite_storage::plain);

    /// Writes the person to both tables. Out: ROWID of the row, docid of the other.
    qint64 add_person(const address_book_person &person);

    /// The database itself, for what no operation here writes.
    sqlite_file &database() { return file; }
    void finish();

private:
    sqlite_file file;
    std::optional<row_inserter> persons;
    std::optional<row_inserter> search_contents;
};

/// The file Library/SMS/sms.db, as far as its messages go.
class sms_database
{
public:
    explicit sms_database(const QString &path, sqlite_storage storage = sqlite_storage::plain);

    /// A message; of a null text the device keeps only attachments. Out: ROWID of the row. A guid stands once.
    qint64 add_message(const QString &guid, const QString &text);

    /// The database itself, for what no operation here writes.
    sqlite_file &database() { return file; }
    void finish();

private:
    sqlite_file file;
    std::optional<row_inserter> messages;
};

} // namespace evidence
