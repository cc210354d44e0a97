// The readers of the communications store: which column goes to which field, and what stands in no field.
#include "evidence/ese_file.h"
#include "windows/specific_table_readers.h"

#include <QTemporaryDir>
#include <QTest>

#include <vector>

using evidence::ese_column;
using evidence::ese_type;
using evidence::ese_value;

namespace {

// A table whose columns all hold their own name, with one before, between and behind them that nobody asks for. Names
// in other letters are such ones too. A second record has values in none of the columns.
void add_table(evidence::ese_file &file, const QByteArray &name, const QByteArrayList &names)
{
    std::vector<ese_column> columns{{"Id", ese_type::unsigned32}};
    std::vector<ese_value> values{ese_value::number(qint64{1})};
    for (const QByteArray &column : names) {
        columns.push_back({column, ese_type::long_text});
        values.push_back(ese_value::text(QString::fromLatin1(column)));
        const QByteArray other = column.toUpper() == column ? column.toLower() : column.toUpper();
        if (other != column) {
            columns.push_back({other, ese_type::long_text});
            values.push_back(ese_value::text(QStringLiteral("another column")));
        }
    }
    evidence::ese_table table = file.add_table(name, columns);
    table.add_record(values);
    table.add_record({ese_value::number(qint64{2})});
}

template <typename Reader, typename Record>
void compare(const QString &path, const char *table, QList<Record> specific_table::*list,
             const QList<QString Record::*> &fields, const QByteArrayList &columns)
{
    Reader reader;
    QCOMPARE(reader.start_parsing(path, QString::fromLatin1(table)), 0);
    QCOMPARE((reader.*list).size(), 2);
    QCOMPARE(fields.size(), columns.size());
    for (int i = 0; i < fields.size(); ++i) {
        QCOMPARE((reader.*list).at(0).*fields.at(i), QString::fromLatin1(columns.at(i)));
        const QString absent = (reader.*list).at(1).*fields.at(i);
        QVERIFY(absent.isEmpty() && !absent.isNull());
    }
    // The tables of the others hold none of these columns, so each record is there, with all fields null.
    (reader.*list).clear();
    QCOMPARE(reader.start_parsing(path, QStringLiteral("Other")), 0);
    QCOMPARE((reader.*list).size(), 2);
    for (QString Record::*field : fields) {
        QVERIFY(((reader.*list).at(0).*field).isNull());
    }
    (reader.*list).clear();
    QCOMPARE(reader.start_parsing(path, QStringLiteral("Absent")), 0);
    QCOMPARE(reader.start_parsing(path + QStringLiteral(".absent"), QString::fromLatin1(table)), -1);
    QVERIFY((reader.*list).isEmpty());
}

const QByteArrayList appointment_columns{"0020001f", "0041001f", "004a001f", "00460013", "10420040", "0055001f"};
const QByteArrayList attachment_columns{"3704001f", "0e200013", "370e001f", "3701000b", "20040013"};
const QByteArrayList recipient_columns{"20040013", "0c150013", "0e060040", "3003001f"};
const QByteArrayList message_columns{"3fda001f", "8279001f", "0c1a001f", "003d001f",
                                     "0037001f", "0e060040", "82a50040"};
const QByteArrayList contact_columns{"008001f",  "0082001f", "0084001f", "008a001f", "0091001f", "0090001f", "0099001f",
                                     "0096001f", "00d1001f", "00d2001f", "00d3001f", "01bf000b", "010a0041"};
const QByteArrayList call_columns{"StartTime",      "EndTime",      "ArrivalTime",   "ApplicationInstallTime",
                                  "CallerLocation", "ResolvedName", "ResolvedNumber"};

} // namespace

class test_specific_tables : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void fills_each_field_from_its_column();

private:
    QTemporaryDir folder;
    QString path = folder.filePath(QStringLiteral("store.vol"));
};

void test_specific_tables::initTestCase()
{
    evidence::ese_file file(path);
    add_table(file, "Appointment", appointment_columns);
    add_table(file, "Attachment", attachment_columns);
    add_table(file, "Recipient", recipient_columns);
    add_table(file, "Message", message_columns);
    add_table(file, "Contact", contact_columns);
    add_table(file, "CallHistory", call_columns);
    add_table(file, "Other", {"0080001f", "starttime"}); // the tag of the display name has seven digits
    file.finish();
}

void test_specific_tables::fills_each_field_from_its_column()
{
    using table = specific_table;
    compare<appointments, table::struct_appointments>(
        path, "Appointment", &table::struct_appointments_QList,
        {&table::struct_appointments::name_QString, &table::struct_appointments::location_QString,
         &table::struct_appointments::timezone_QString, &table::struct_appointments::snooze_QString,
         &table::struct_appointments::timestamp_QString, &table::struct_appointments::account_QString},
        appointment_columns);
    compare<attachments, table::struct_attachments>(
        path, "Attachment", &table::struct_attachments_QList,
        {&table::struct_attachments::file_name_QString, &table::struct_attachments::file_size_QString,
         &table::struct_attachments::suffix_QString, &table::struct_attachments::direction_flag_QString,
         &table::struct_attachments::message_key_QString},
        attachment_columns);
    compare<recipients, table::struct_recipients>(
        path, "Recipient", &table::struct_recipients_QList,
        {&table::struct_recipients::message_key_QString, &table::struct_recipients::recipient_kind_QString,
         &table::struct_recipients::message_time_QString, &table::struct_recipients::address_QString},
        recipient_columns);
    compare<messages, table::struct_messages>(
        path, "Message", &table::struct_messages_QList,
        {&table::struct_messages::message_text_QString, &table::struct_messages::from_str_QString,
         &table::struct_messages::sender_name_QString, &table::struct_messages::subject_prefix_QString,
         &table::struct_messages::subject_QString, &table::struct_messages::message_time_QString,
         &table::struct_messages::date_sent_QString},
        message_columns);
    compare<contacts, table::struct_contacts>(
        path, "Contact", &table::struct_contacts_QList,
        {&table::struct_contacts::display_name_QString, &table::struct_contacts::first_name_QString,
         &table::struct_contacts::last_name_QString, &table::struct_contacts::work_info_QString,
         &table::struct_contacts::email_first_QString, &table::struct_contacts::email_second_QString,
         &table::struct_contacts::work_phone_QString, &table::struct_contacts::phone_no_QString,
         &table::struct_contacts::address_first_QString, &table::struct_contacts::address_second_QString,
         &table::struct_contacts::address_third_QString, &table::struct_contacts::row_flag_QString,
         &table::struct_contacts::blob_hex_QString},
        contact_columns);
    compare<call_history, table::struct_call_history>(
        path, "CallHistory", &table::struct_call_history_QList,
        {&table::struct_call_history::start_time_QString, &table::struct_call_history::end_time_QString,
         &table::struct_call_history::arrival_time_QString,
         &table::struct_call_history::application_install_time_QString,
         &table::struct_call_history::caller_location_QString, &table::struct_call_history::resolved_name_QString,
         &table::struct_call_history::resolved_number_QString},
        call_columns);
}

QTEST_GUILESS_MAIN(test_specific_tables)
#include "test_specific_tables.moc"
