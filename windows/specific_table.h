/// The generic reader of one table of an ESE file: it walks the records and hands every value to a virtual operation.
/// Its subclasses know the columns of one table each; what they read ends in the lists here.
#pragma once

#include "windows/ese_handles.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <cstddef>
#include <functional>
#include <memory>

/// Not destroyed through its base type by `delete` but by its owner, who knows the type; the subclasses have no
/// members.
class specific_table
{
public:
    /// Records are texts: a field is null where the table has no such column.
    struct struct_data
    {
    };
    struct struct_attachments
    {
        QString file_name_QString;
        QString file_size_QString;
        QString suffix_QString;
        QString direction_flag_QString;
        QString message_key_QString;
    };
    struct struct_recipients
    {
        QString message_key_QString;
        QString recipient_kind_QString;
        QString message_time_QString;
        QString address_QString;
    };
    struct struct_messages
    {
        QString message_text_QString;
        QString from_str_QString;
        QString sender_name_QString;
        QString subject_prefix_QString;
        QString subject_QString;
        QString message_time_QString;
        QString date_sent_QString;
    };
    struct struct_appointments
    {
        QString name_QString;
        QString location_QString;
        QString timezone_QString;
        QString snooze_QString;
        QString timestamp_QString;
        QString account_QString;
    };
    struct struct_contacts
    {
        QString display_name_QString;
        QString first_name_QString;
        QString last_name_QString;
        QString work_info_QString;
        QString email_first_QString;
        QString email_second_QString;
        QString work_phone_QString;
        QString phone_no_QString;
        QString address_first_QString;
        QString address_second_QString;
        QString address_third_QString;
        QString row_flag_QString;
        QString blob_hex_QString;
    };
    struct struct_call_history
    {
        QString start_time_QString;
        QString end_time_QString;
        QString arrival_time_QString;
        QString application_install_time_QString;
        QString caller_location_QString;
        QString resolved_name_QString;
        QString resolved_number_QString;
    };

    specific_table();
    ~specific_table();
    specific_table(const specific_table &) = delete;
    specific_table &operator=(const specific_table &) = delete;

    /// Reads the table into the list of the class. Out: 0 when the file was opened and walked, also where it has no
    /// such table; -1 when it could not be opened. A value that cannot be read is logged with file, table, record and
    /// column, and reads as 0, "false" or an empty text.
    virtual int start_parsing(QString file_path, QString table_name);
    /// The same walk with a text and a list handed down to the last operation.
    virtual int start_parsing(QString file_path, QString table_name, QString text, QStringList list);
    virtual void get_desired_table(libesedb_file_t *file, libesedb_error_t *error, QString table_name);
    virtual void get_records(libesedb_table_t *table, libesedb_error_t *error);
    /// The hook of the subclasses: takes one value of the record in hand.
    virtual void get_record_values(libesedb_record_t *record, libesedb_error_t *error, QString column_name,
                                   int value_entry, unsigned int column_type);
    /// Walks the values of one record and appends what was taken of them to the list.
    virtual void get_column_name_and_type(libesedb_record_t *record, libesedb_error_t *error);
    /// Out: the column's name; empty when it cannot be read.
    virtual QString get_column_name(libesedb_record_t *record, int value_entry, libesedb_error_t *error);
    /// Out: the value in text form (UTF-8, decimal, lower-case hexadecimal, "true" and "false"), never null.
    virtual QByteArray record_type_case(libesedb_record_t *record, int value_entry, unsigned int column_type,
                                        libesedb_error_t *error);
    virtual void get_desired_table(libesedb_file_t *file, libesedb_error_t *error, QString table_name, QString text,
                                   QStringList list);
    virtual void get_records(libesedb_table_t *table, libesedb_error_t *error, QString text, QStringList list);
    virtual void get_column_name_and_type(libesedb_record_t *record, libesedb_error_t *error, QString text,
                                          QStringList list);
    virtual void get_record_values(libesedb_record_t *record, libesedb_error_t *error, QString column_name,
                                   int value_entry, unsigned int column_type, QString text, QStringList list);

    /// What was read; whoever reads clears it before each file. A pointer is valid while its record is being read.
    QList<struct_data> struct_data_QList;
    struct_data *current_struct_data = nullptr;
    QList<struct_attachments> struct_attachments_QList;
    struct_attachments *current_struct_attachments = nullptr;
    QList<struct_recipients> struct_recipients_QList;
    struct_recipients *current_struct_recipients = nullptr;
    QList<struct_messages> struct_messages_QList;
    struct_messages *current_struct_messages = nullptr;
    QList<struct_appointments> struct_appointments_QList;
    struct_appointments *current_struct_appointments = nullptr;
    QList<struct_contacts> struct_contacts_QList;
    struct_contacts *current_struct_contacts = nullptr;
    QList<struct_call_history> struct_call_history_QList;
    struct_call_history *current_struct_call_history = nullptr;

protected:
    /// A column that a subclass takes, and the field that its text goes to.
    template <typename Record>
    struct column_field
    {
        const char *column;
        QString Record::*field;
    };

    /// What get_column_name_and_type() is in a subclass: a record with all fields null, made the current one, filled
    /// from its values and appended to the list; nothing is appended where the record cannot be read.
    template <typename Record, std::size_t count>
    void read_record(libesedb_record_t *record, libesedb_error_t *error, const column_field<Record> (&fields)[count],
                     Record *&current, QList<Record> &list)
    {
        Record values;
        current = &values;
        const bool is_read = each_value(
            record, error, [&](const QString &name) { return field_of(name, fields) != nullptr; },
            [&](const QString &name, int entry, unsigned int type) {
                get_record_values(record, error, name, entry, type);
            });
        if (is_read) {
            if (!list.isEmpty()) {
                share_equal_texts(values, list.last(), fields);
            }
            list.append(values);
        }
        current = nullptr;
    }

    /// What get_record_values() is in a subclass: the value goes to the field of its column, if there is one.
    template <typename Record, std::size_t count>
    void take_value(libesedb_record_t *record, libesedb_error_t *error, const QString &column_name, int value_entry,
                    unsigned int column_type, const column_field<Record> (&fields)[count], Record *current)
    {
        const column_field<Record> *taken = field_of(column_name, fields);
        if (!taken || !current) {
            return;
        }
        const QByteArray text = record_type_case(record, value_entry, column_type, error);
        // Up to the first zero byte.
        current->*(taken->field) = text.isNull() ? QString() : QString::fromUtf8(text.constData());
    }

private:
    struct table_walk;
    using column_question = std::function<bool(const QString &column_name)>;
    using value_hook = std::function<void(const QString &column_name, int value_entry, unsigned int column_type)>;

    template <typename Record, std::size_t count>
    static const column_field<Record> *field_of(const QString &column_name, const column_field<Record> (&fields)[count])
    {
        for (const column_field<Record> &field : fields) {
            if (column_name == QLatin1String(field.column)) {
                return &field;
            }
        }
        return nullptr;
    }

    // Neighbours differ in little, as the recipients of one message do: what is equal is held once.
    template <typename Record, std::size_t count>
    static void share_equal_texts(Record &values, const Record &before, const column_field<Record> (&fields)[count])
    {
        for (const column_field<Record> &field : fields) {
            QString &text = values.*(field.field);
            const QString &text_before = before.*(field.field);
            if (text == text_before && text.isNull() == text_before.isNull()) {
                text = text_before;
            }
        }
    }

    template <typename Parse>
    int parse_file(const QString &file_path, const QString &table_name, Parse parse);
    template <typename Read>
    void with_table(libesedb_file_t *file, libesedb_error_t *error, const QString &table_name, Read read);
    template <typename Read>
    void each_record(libesedb_table_t *table, libesedb_error_t *error, Read read);
    // Out: false when the record cannot be read; whatever was taken of it is dropped then.
    bool each_value(libesedb_record_t *record, libesedb_error_t *error, const column_question &is_wanted,
                    const value_hook &take);

    std::unique_ptr<table_walk> walk; // while start_parsing runs, and only then
};
