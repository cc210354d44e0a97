// The table recents of a device backup: times, receivers, and what stands in the metadata, converted in the process and
// by a tool of the platform.
#include "evidence/ios_backup_databases.h"
#include "evidence/property_list_file.h"
#include "tests/ios/plain_backup.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>
#include <QTimer>

#include <ctime>

using evidence::property_list_bytes;
using evidence::property_list_form;
using evidence::recent_row;

namespace {

const QString recents_tab = QStringLiteral("recents");
const QString operation = QStringLiteral("mail_ios_uid::extract_mail_recents");
const QString starts = QStringLiteral("[extract_mail_recents] -Start");
const QString ends = QStringLiteral("[extract_mail_recents] -End");
const QString subject_key = QStringLiteral("corerecents:subject");
const QString url_key = QStringLiteral("corerecents:reference-url");
const QString time_key = QStringLiteral("corerecents:event-time");

QByteArray list_of(const QVariant &value, property_list_form form = property_list_form::binary)
{
    return property_list_bytes(value, form);
}

QByteArray list_of(const char *text)
{
    return list_of(QString::fromUtf8(text));
}

recent_row recent_of(int row_id, const char *dates, const QVariant &count)
{
    recent_row recent;
    recent.row_id = row_id;
    recent.dates = QString::fromLatin1(dates);
    recent.count = count;
    return recent;
}

QString read_file(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QStringLiteral("missing");
}

// The values of a column, in the order of the rows.
QStringList values_of(const host_run &run, const char *column)
{
    const QString beginning = QLatin1String("  ") + QLatin1String(column) + QLatin1String(" = ");
    QStringList values;
    for (const QString &line : run.rows(recents_tab).split(QLatin1Char('\n'))) {
        if (line.startsWith(beginning)) {
            values.append(line.mid(beginning.size()));
        }
    }
    return values;
}

void write_recents(const plain_backup &backup)
{
    evidence::recents_database recents(backup.path_of(recents_path));
    recent_row first = recent_of(1, "1500000000123:1500000100456", 2);
    first.display_name = QStringLiteral("Ben Öztürk");
    first.bundle_identifier = QStringLiteral("com.apple.mobilemail");
    first.sending_address = QStringLiteral("anna@example.org");
    first.original_source = QStringLiteral("mail");
    first.last_date = Q_INT64_C(1500000100456);
    first.record_hash = QStringLiteral("H1");
    recents.add_recent(first);
    recents.add_contact(1, {QStringLiteral("Ben"), QStringLiteral("email"), QStringLiteral("ben@example.org")});
    recents.add_contact(1, {QString(), QStringLiteral("phone"), QStringLiteral("+49 30 1")});
    recents.add_contact(1, {QStringLiteral("one too many"), QString(), QString()});
    recents.add_metadata(1, time_key, list_of(QDateTime({2015, 3, 1}, {10, 20, 30}, Qt::UTC)));
    recents.add_metadata(1, subject_key, list_of(QStringLiteral("Lunch & more"), property_list_form::xml));
    recents.add_metadata(1, url_key, list_of("sms:/open?message-guid=x&message-guid=G-1"));
    recents.add_metadata(1, QStringLiteral("corerecents:other"), list_of("other"));

    recents.add_recent(recent_of(2, "1500000000123", 0));
    recents.add_contact(2, {QStringLiteral("not counted"), QString(), QString()});

    recents.add_recent(recent_of(3, "12345:1600000000999:abc:", QVariant()));
    recents.add_contact(3, {QStringLiteral("all of them"), QString(), QString()});
    recents.add_metadata(3, subject_key, list_of("first"));
    recents.add_metadata(3, subject_key, list_of("last"));
    recents.add_metadata(3, url_key, list_of("sms:/open?message-guid=G-1"));
    recents.add_metadata(3, url_key, list_of("message:%3C1@example.org%3E"));
    recents.add_metadata(3, time_key, list_of("no date"));
    recents.finish();

    evidence::sms_database messages(backup.path_of(sms_path));
    messages.add_message(QStringLiteral("G-0"), QStringLiteral("another"));
    messages.add_message(QStringLiteral("G-1"), QStringLiteral("Grüße"));
    messages.finish();
}

} // namespace

class test_ios_uid_recents : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void rows();
    void hostile_metadata();
    void large_values();
    void look_ups_without_index_data();
    void look_ups_without_index();
    void failing_side_queries();
    void cancel_between_conversions();
    void platform_tool_data();
    void platform_tool();
    void cancel_while_tool_hangs();
    void untrusted_tools();

private:
    void write_tool(const QByteArray &script);

    QByteArray system_path;
    std::unique_ptr<QTemporaryDir> tool_folder;
};

void test_ios_uid_recents::initTestCase()
{
    qputenv("TZ", "CET-1"); // event times are taken as local ones
    ::tzset();
    system_path = qgetenv("PATH");
}

void test_ios_uid_recents::init()
{
    tool_folder = std::make_unique<QTemporaryDir>();
    qputenv("PATH", tool_folder->path().toLocal8Bit()); // no tool
}

void test_ios_uid_recents::write_tool(const QByteArray &script)
{
    const QString path = tool_folder->filePath(QStringLiteral("plutil"));
    evidence::write_file(path, script);
    QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    qputenv("PATH", tool_folder->path().toLocal8Bit() + ':' + system_path);
}

void test_ios_uid_recents::rows()
{
    plain_backup backup;
    write_recents(backup);
    backup_run run(backup, {recents_tab});
    run.prepare();
    run.extract();
    const QString copies = run.result_directory() + QLatin1String("/Artifacts_Result/Mail/tmp/");
    QVERIFY(read_file(copies + QLatin1String("corerecents:other1.xml")).contains(QLatin1String("<string>other</str")));
    QVERIFY(read_file(copies + QLatin1String("corerecents:other1.plist")).startsWith(QLatin1String("bplist00")));
    QCOMPARE(QDir(copies).entryList({QStringLiteral("*sms.db")}), QStringList{QStringLiteral("sms.db")});
    run.finish();
    QString rows = run.rows(recents_tab); // the path of sms.db keeps its root
    rows.replace(backup.root(), QLatin1String("SOURCE/"));
    QCOMPARE(difference_to_expected(rows, QStringLiteral(EXPECTED_FOLDER "/uid_recents.txt")), QString());
    QCOMPARE(run.tab_signals, QList<int>{1});
    const QStringList conversion{QStringLiteral(" : running"), QStringLiteral(" : infinite loop cross")};
    QStringList log{starts};
    for (int i = 0; i < 9; ++i) {
        log += conversion;
    }
    QCOMPARE(run.log_of(operation), log << ends);
}

void test_ios_uid_recents::hostile_metadata()
{
    plain_backup backup;
    evidence::recents_database recents(backup.path_of(recents_path));
    const QString long_key(300, QLatin1Char('k'));
    const QByteArray nested = "<?xml version=\"1.0\"?><plist version=\"1.0\">" +
                              QByteArray("<array>").repeated(100000) + QByteArray("</array>").repeated(100000) +
                              "</plist>";
    // 8,000 references to one text of 200 characters: 1.6 MB as XML
    const QByteArray unfolding = list_of(QVariant(QVector<QVariant>(8000, QString(200, QLatin1Char('x'))).toList()));
    recents.add_recent(recent_of(2, "", 0));
    recents.add_metadata(2, QStringLiteral("../evil"), list_of("evil"));
    recents.add_metadata(2, long_key, list_of("long"));
    recents.add_metadata(2, QStringLiteral("corerecents:subject1"), list_of("the subject of another recent"));
    recents.add_recent(recent_of(12, "1:2:", 0)); // its subject bears the name of the file above
    recents.add_metadata(12, subject_key, "no property list");
    recents.add_metadata(12, url_key, nested);
    recents.add_metadata(12, QStringLiteral("bomb"), unfolding);
    recents.add_metadata(12, time_key, QByteArray());
    recents.add_recent(recent_of(13, "1", 0));
    recents.add_metadata(13, subject_key, list_of("behind a link"));
    recents.finish();

    QTemporaryDir elsewhere;
    const QString examiners = elsewhere.filePath(QStringLiteral("file"));
    evidence::write_file(examiners, "the examiner's");
    backup_run run(backup, {recents_tab});
    run.prepare();
    const QString folder = run.result_directory() + QLatin1String("/Artifacts_Result/Mail/");
    QVERIFY(QFile::link(examiners, folder + QLatin1String("tmp/corerecents:subject13.xml")));
    run.extract();
    QCOMPARE(read_file(examiners), QStringLiteral("the examiner's"));
    QVERIFY(!QFile::exists(folder + QLatin1String("evil2.plist")));
    QCOMPARE(run.row_count(recents_tab), 3);
    QCOMPARE(values_of(run, "subject"), QStringList());
    QCOMPARE(values_of(run, "mailed_timestamp"),
             (QStringList{QStringLiteral("\"\""), QStringLiteral("\"12\""), QStringLiteral("\"1\"")}));
    QStringList log = run.log_of(operation);
    log.removeAll(QStringLiteral(" : running"));
    log.removeAll(QStringLiteral(" : infinite loop cross"));
    const QString missing = QStringLiteral("No such file or directory");
    const QString xml_failure = QStringLiteral("[extract_mail_recents] file open -------FAILED-----TMP//");
    QCOMPARE(log,
             (QStringList{
                 starts, QStringLiteral("[extract_mail_recents]File Open Error: TMP//../evil2.plist"), missing,
                 QLatin1String("[extract_mail_recents]File Open Error: TMP//") + long_key + QLatin1String("2.plist"),
                 QStringLiteral("File name too long"), xml_failure + QLatin1String("corerecents:subject12.xml"),
                 missing, xml_failure + QLatin1String("corerecents:reference-url12.xml"), missing,
                 xml_failure + QLatin1String("bomb12.xml"), missing,
                 xml_failure + QLatin1String("corerecents:event-time12.xml"), missing,
                 xml_failure + QLatin1String("corerecents:subject13.xml"),
                 QStringLiteral("Too many levels of symbolic links"), ends}));
}

// A value of 17 MB costs itself, in whichever table it stands, and neither its row nor the rows behind.
void test_ios_uid_recents::large_values()
{
    const QString large(17 << 20, QLatin1Char('x'));
    plain_backup backup;
    evidence::recents_database recents(backup.path_of(recents_path));
    recents.add_recent(recent_of(1, "1", 1));
    recent_row spoilt = recent_of(5, "5", 3);
    spoilt.display_name = large;
    recents.add_recent(spoilt);
    recents.add_contact(5, {QStringLiteral("a"), QStringLiteral("k"), QStringLiteral("x")});
    recents.add_contact(5, {large, QStringLiteral("l"), QStringLiteral("y")});
    recents.add_contact(5, {QStringLiteral("c"), QString(), QStringLiteral("z")});
    recents.add_metadata(5, time_key, large.toLatin1());
    recents.add_metadata(5, subject_key, list_of("behind it"));
    recents.add_recent(recent_of(6, "6", 1));
    recents.finish();
    backup_run run(backup, {QStringLiteral("contacts"), recents_tab});
    run.run();
    QCOMPARE(values_of(run, "mailed_timestamp"),
             (QStringList{QStringLiteral("\"1\""), QStringLiteral("\"5\""), QStringLiteral("\"6\"")}));
    QCOMPARE(values_of(run, "subject"), QStringList{QStringLiteral("\"behind it\"")});
    QCOMPARE(values_of(run, "receiver_details").value(0),
             QStringLiteral("\"Display Name: a;Kind: k;Address: x;;Display Name: ;Kind: l;Address: y;;Display Name: c;"
                            "Kind: ;Address: z\""));
    QCOMPARE(run.row_count(QStringLiteral("contacts")), 3);
    const QString left_out = QStringLiteral("value larger than 16 MiB -----FAILED-----, left out: ");
    QCOMPARE(run.log_of(operation).filter(left_out),
             (QStringList{left_out + QLatin1String("display_name"), left_out + QLatin1String("display_name"),
                          left_out + QLatin1String("value")}));
    QVERIFY(run.log_of(operation).contains(ends));
}

void test_ios_uid_recents::look_ups_without_index_data()
{
    QTest::addColumn<QString>("schema");
    QTest::addColumn<QString>("guid");
    QTest::newRow("plain") << QStringLiteral("guid TEXT, text TEXT") << QStringLiteral("G");
    QTest::newRow("compared in a way of its own")
        << QStringLiteral("guid TEXT COLLATE NOCASE, text TEXT") << QStringLiteral("g");
    QTest::newRow("row numbers hidden") << QStringLiteral("guid TEXT, text TEXT, _rowid_ INTEGER DEFAULT 1")
                                        << QStringLiteral("G");
}

void test_ios_uid_recents::look_ups_without_index()
{
    QFETCH(QString, schema);
    QFETCH(QString, guid);
    plain_backup backup;
    evidence::recents_database recents(backup.path_of(recents_path));
    recents.add_recent(recent_of(1, "1", 1));
    recents.add_metadata(1, url_key, list_of(QLatin1String("sms:/open?message-guid=") + guid));
    recents.finish();
    evidence::sms_database messages(backup.path_of(sms_path));
    messages.database().run(QStringLiteral("DROP TABLE message; CREATE TABLE message (%1);"
                                           "INSERT INTO message (guid, text) VALUES ('G', 'first'), ('H', 'x'), "
                                           "('G', 'last'), ('I', 'y');")
                                .arg(schema));
    messages.finish();
    backup_run run(backup, {recents_tab});
    run.run();
    QCOMPARE(values_of(run, "text"), QStringList{QStringLiteral("\"last\"")});
}

void test_ios_uid_recents::failing_side_queries()
{
    plain_backup backup;
    evidence::recents_database recents(backup.path_of(recents_path));
    recents.add_recent(recent_of(1, "1", 1));
    recents.add_recent(recent_of(2, "1", 1));
    recents.database().run(QStringLiteral("DROP TABLE contacts"));
    recents.finish();
    backup_run without_contacts(backup, {recents_tab});
    without_contacts.run();
    QCOMPARE(without_contacts.row_count(recents_tab), 0);
    const QStringList failure{QStringLiteral("[extract_mail_recents]query_select account ---FAILED--- "),
                              QStringLiteral("no such table: contacts"),
                              QStringLiteral("SELECT display_name,kind,address FROM contacts WHERE recent_id=?")};
    QCOMPARE(without_contacts.log_of(operation), QStringList{starts} + failure + failure + QStringList{ends});

    // A failing look-up of the short message costs its text alone.
    plain_backup damaged;
    write_recents(damaged);
    damaged.add_file(sms_path, QByteArray(200, 'x'));
    backup_run without_messages(damaged, {recents_tab});
    without_messages.run();
    QCOMPARE(without_messages.row_count(recents_tab), 3);
    QCOMPARE(values_of(without_messages, "text"), QStringList());
    const QStringList sms_failure{QStringLiteral("[mail_message_sms_text]query_select ---FAILED--- "),
                                  QStringLiteral("file is not a database"),
                                  QStringLiteral("SELECT text FROM message WHERE guid=?")};
    QCOMPARE(without_messages.log_of(QStringLiteral("mail_ios_uid::mail_message_sms_text")), sms_failure + sms_failure);
}

void test_ios_uid_recents::cancel_between_conversions()
{
    plain_backup backup;
    write_recents(backup);
    backup_run run(backup, {recents_tab});
    run.prepare();
    QTimer::singleShot(0, [&run] { run.plugin().pub_cancel_extraction(); });
    run.extract();
    QCOMPARE(run.row_count(recents_tab), 0);
    QCOMPARE(run.log_of(operation), (QStringList{starts, QStringLiteral(" : running")}));
}

void test_ios_uid_recents::platform_tool_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<QStringList>("subjects");
    QTest::addColumn<QStringList>("failure");
    const QStringList failure{QStringLiteral("[extract_mail_recents] file open -------FAILED-----TMP//"
                                             "corerecents:subject1.xml"),
                              QStringLiteral("No such file or directory")};
    QTest::newRow("works") << QByteArray("#!/bin/sh\n[ \"$1 $2 $4\" = \"-convert xml1 -o\" ] || exit 1\n"
                                         "{ echo '<plist>'; echo \"<string>$(cat \"$3\")</string>\"; } > \"$5\"\n")
                           << QStringList{QStringLiteral("\"given to the tool\"")} << QStringList();
    QTest::newRow("fails") << QByteArray("#!/bin/sh\nexit 3\n") << QStringList() << failure;
    QTest::newRow("ends its process group") << QByteArray("#!/bin/sh\nkill -INT 0\n") << QStringList() << failure;
    QTest::newRow("cannot be started") << QByteArray("#!/no/such/interpreter\n") << QStringList() << failure;
}

void test_ios_uid_recents::platform_tool()
{
    QFETCH(QByteArray, script);
    QFETCH(QStringList, subjects);
    QFETCH(QStringList, failure);
    plain_backup backup;
    evidence::recents_database recents(backup.path_of(recents_path));
    recents.add_recent(recent_of(1, "1", 1));
    recents.add_metadata(1, subject_key, "given to the tool");
    recents.finish();
    write_tool(script);
    backup_run run(backup, {recents_tab});
    run.run();
    QCOMPARE(run.row_count(recents_tab), 1);
    QCOMPARE(values_of(run, "subject"), subjects);
    QCOMPARE(run.log_of(operation),
             (QStringList{starts, QStringLiteral(" : running"), QStringLiteral(" : infinite loop cross")} + failure +
              QStringList{ends}));
}

void test_ios_uid_recents::cancel_while_tool_hangs()
{
    plain_backup backup;
    write_recents(backup);
    const QString child_file = tool_folder->filePath(QStringLiteral("child"));
    write_tool("#!/bin/sh\nsleep 600 &\necho $! > " + child_file.toLocal8Bit() + "\nwait\n");
    backup_run run(backup, {recents_tab});
    run.prepare();
    QTimer cancel;
    QObject::connect(&cancel, &QTimer::timeout, [&] {
        if (read_file(child_file).endsWith(QLatin1Char('\n'))) {
            run.plugin().pub_cancel_extraction();
        }
    });
    cancel.start(50);
    QElapsedTimer clock;
    clock.start();
    run.extract();
    QVERIFY(clock.elapsed() < 30000);
    QCOMPARE(run.row_count(recents_tab), 0);
    QCOMPARE(run.log_of(operation), (QStringList{starts, QStringLiteral(" : running")}));
    const QString child = QStringLiteral("/proc/%1/cmdline").arg(read_file(child_file).trimmed());
    QTRY_VERIFY(!read_file(child).startsWith(QLatin1String("sleep"))); // it has ended with the tool
}

// A tool in a relative folder, or below the root of the source, is none of the examiner's.
void test_ios_uid_recents::untrusted_tools()
{
    plain_backup backup;
    write_recents(backup);
    backup.add_file(QStringLiteral("bin/plutil"), "#!/bin/sh\nexit 0\n");
    QVERIFY(QFile::setPermissions(backup.path_of(QStringLiteral("bin/plutil")), QFile::ReadOwner | QFile::ExeOwner));
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(backup.root()));
    qputenv("PATH", "bin:" + backup.root().toLocal8Bit() + "bin");
    backup_run run(backup, {recents_tab});
    run.run();
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(values_of(run, "subject").value(0), QStringLiteral("\"Lunch &amp; more\"")); // converted in the process
}

QTEST_MAIN(test_ios_uid_recents)
#include "test_ios_uid_recents.moc"
