/// Writes a store.vol, the database in which the Windows communications applications keep their items: a table a kind,
/// with columns named by property tags.
#pragma once

#include "evidence/ese_file.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace evidence {

// The records, in the order of the tables below. A null text or an empty number is absent from the record. Instants are
// FILETIMEs: units of 100 nanoseconds since 1601.
using filetime = qint64;

/// Out: the FILETIME of a count of seconds since 1970.
constexpr filetime filetime_of(qint64 seconds)
{
    return 116444736000000000 + seconds * 10000000;
}

struct windows_appointment
{
    QString name;
    QString location;
    QString timezone;
    std::optional<qint64> snooze; ///< minutes
    std::optional<filetime> time;
    QString account;
};

struct windows_attachment
{
    QString file_name;
    std::optional<qint64> size;
    QString suffix;
    std::optional<bool> is_received;
    std::optional<qint64> message_key;
};

struct windows_recipient
{
    std::optional<qint64> message_key; ///< shared by the recipients and attachments of a message
    std::optional<qint64> kind;        ///< 0: the sender; of received attachments 1
    std::optional<filetime> message_time;
    QString address;
};

struct windows_message
{
    QString text;
    QString from;
    QString sender_name;
    QString subject_prefix;
    QString subject;
    std::optional<filetime> time; ///< what its recipients are found by
    std::optional<filetime> date_sent;
};

struct windows_contact
{
    QString display_name; ///< in the column as readers of the store spell it, of seven characters
    QString first_name;
    QString last_name;
    QString work_info;
    QString email_first;
    QString email_second;
    QString work_phone;
    QString phone;
    QString address_first;
    QString address_second;
    QString address_third;
    std::optional<bool> is_listed;
    QByteArray blob; ///< null: absent
};

struct windows_call
{
    std::optional<filetime> start;
    std::optional<filetime> end;
    std::optional<filetime> arrival;
    std::optional<filetime> application_install;
    QString caller_location;
    QString resolved_name;
    QString resolved_number;
};

/// The tables of a store. One that is left out does not stand in the file.
struct windows_store_tables
{
    bool appointments = true;
    bool attachments = true;
    bool recipients = true;
    bool messages = true;
    bool contacts = true;
    bool calls = true;
};

class windows_store
{
public:
    /// Makes the folder with its parents and the database in it.
    explicit windows_store(const QString &path, const windows_store_tables &tables = {},
                           const ese_file_options &options = {});
    ~windows_store();

    /// Records stay in the order in which they are added. Throws when the table is left out.
    void add(const windows_appointment &appointment);
    void add(const windows_attachment &attachment);
    void add(const windows_recipient &recipient);
    void add(const windows_message &message);
    void add(const windows_contact &contact);
    void add(const windows_call &call);

    /// Only now the file is a database. Once.
    void finish();

private:
    struct tables;

    std::unique_ptr<ese_file> file;
    std::unique_ptr<tables> added; // destroyed before the file they belong to
};

} // namespace evidence
