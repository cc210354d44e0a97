// The table recents of a device backup: times, receivers, and what stands in the metadata, converted in the process and
// by a tool of the platform.
#include "evidence/ios_backup_databases.h"
#include "tests/ios/plain_backup.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTimer>

using evidence::property_list_bytes;
using evidence::property_list_form;
using evidence::recent_row;

namespace {

const QString recents_tab = "recents"_s;
const char *operation = "extract_mail_recents";
const QString starts = "[extract_mail_recents] -Start"_s;
const QString ends = "[extract_mail_recents] -End"_s;
const QString subject_key = "corerecents:subject"_s;
const QString url_key = "corerecents:reference-url"_s;
const QString time_key = "corerecents:event-time"_s;

QByteArray list_of(const QVariant &value, property_list_form form = property_list_form::binary)
{
    return property_list_bytes(value, form);
}

recent_row recent_of(int row_id, const char *dates, const QVariant &count)
{
    recent_row recent;
    recent.row_id = row_id;
    recent.dates = QString::fromLatin1(dates);
    recent.count = count;
    return recent;
}

// The values of a column, in the order of the rows.
QString values_of(const host_run &run, const char *column)
{
    const QString beginning = "  "_s + QString::fromLatin1(column) + " = "_s;
    QStringList values;
    for (const QString &line : run.rows(recents_tab).split(QLatin1Char('\n'))) {
        if (line.startsWith(beginning)) {
            values.append(line.mid(beginning.size()).remove(QLatin1Char('"')));
        }
    }
    return values.join(QLatin1Char('|'));
}

void write_recents(const plain_backup &backup)
{
    evidence::recents_database recents(backup.path_of(recents_path));
    recent_row first = recent_of(1, "1500000000123:1500000100456", 2);
    first.display_name = "Ben Öztürk"_s;
    first.bundle_identifier = "com.apple.mobilemail"_s;
    first.sending_address = "anna@example.org"_s;
    first.original_source = "mail"_s;
    first.last_date = Q_INT64_C(1500000100456);
    first.record_hash = "H1"_s;
    recents.add_recent(first);
    recents.add_contact(1, {"Ben"_s, "email"_s, "ben@example.org"_s});
    recents.add_contact(1, {QString(), "phone"_s, "+49 30 1"_s});
    recents.add_contact(1, {"one too many"_s, QString(), QString()});
    recents.add_metadata(1, time_key, list_of(QDateTime({2015, 3, 1}, {10, 20, 30}, Qt::UTC)));
    recents.add_metadata(1, subject_key, list_of("Lunch & more"_s, property_list_form::xml));
    recents.add_metadata(1, url_key, list_of("sms:/open?message-guid=x&message-guid=G-1"_s));
    recents.add_metadata(1, "corerecents:other"_s, list_of("other"_s));

    recents.add_recent(recent_of(2, "1500000000123", 0));
    recents.add_contact(2, {"not counted"_s, QString(), QString()});

    recents.add_recent(recent_of(3, "12345:1600000000999:abc:", QVariant()));
    recents.add_contact(3, {"all of them"_s, QString(), QString()});
    recents.add_metadata(3, subject_key, list_of("first"_s));
    recents.add_metadata(3, subject_key, list_of("last"_s));
    recents.add_metadata(3, url_key, list_of("sms:/open?message-guid=G-1"_s));
    recents.add_metadata(3, url_key, list_of("message:%3C1@example.org%3E"_s));
    recents.add_metadata(3, time_key, list_of("no date"_s));
    recents.finish();

    evidence::sms_database messages(backup.path_of(sms_path));
    messages.add_message("G-0"_s, "another"_s);
    messages.add_message("G-1"_s, "Grüße"_s);
    messages.finish();
}

} // namespace

class test_ios_uid_recents : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        set_time_zone("CET-1"); // event times are taken as local ones
        system_path = qgetenv("PATH");
    }

    void init()
    {
        tool_folder = std::make_unique<QTemporaryDir>();
        qputenv("PATH", tool_folder->path().toLocal8Bit()); // no tool
    }

    void rows()
    {
        plain_backup backup;
        write_recents(backup);
        backup_run run(backup, {recents_tab});
        run.prepare();
        run.extract();
        const QString copies = run.result_directory() + "/Artifacts_Result/Mail/tmp/"_s;
        QVERIFY(content_of(copies + "corerecents:other1.xml"_s).contains("<string>other</str"));
        QVERIFY(content_of(copies + "corerecents:other1.plist"_s).startsWith("bplist00"));
        QCOMPARE(QDir(copies).entryList({"*sms.db"_s}), QStringList{"sms.db"_s});
        run.finish();
        QString rows = run.rows(recents_tab); // the path of sms.db keeps its root
        rows.replace(backup.root(), "SOURCE/"_s);
        QCOMPARE(difference_to_expected(rows, EXPECTED_FOLDER "/uid_recents.txt"_s), QString());
        QCOMPARE(run.tab_signals, QList<int>{1});
        const QString conversions = " : running| : infinite loop cross|"_s.repeated(9);
        QCOMPARE(run.log_of_operation(operation).join(QLatin1Char('|')), starts + "|"_s + conversions + ends);
    }

    void hostile_metadata()
    {
        plain_backup backup;
        evidence::recents_database recents(backup.path_of(recents_path));
        const QString long_key(300, QLatin1Char('k'));
        const QByteArray nested = "<plist version=\"1.0\">" + QByteArray("<array>").repeated(100000) +
                                  QByteArray("</array>").repeated(100000) + "</plist>";
        // 8,000 references to one text of 200 characters: 1.6 MB as XML
        const QByteArray unfolding =
            list_of(QVariant(QVector<QVariant>(8000, QString(200, QLatin1Char('x'))).toList()));
        recents.add_recent(recent_of(2, "", 0));
        recents.add_metadata(2, "../evil"_s, list_of("evil"_s));
        recents.add_metadata(2, long_key, list_of("long"_s));
        recents.add_metadata(2, "corerecents:subject1"_s, list_of("the subject of another recent"_s));
        recents.add_recent(recent_of(12, "1:2:", 0)); // its subject bears the name of the file above
        recents.add_metadata(12, subject_key, "no property list");
        recents.add_metadata(12, url_key, nested);
        recents.add_metadata(12, "corerecents:bomb"_s, unfolding);
        recents.add_metadata(12, time_key, QByteArray());
        recents.add_recent(recent_of(13, "1", 0));
        recents.add_metadata(13, subject_key, list_of("behind a link"_s));
        recents.finish();

        QTemporaryDir elsewhere;
        const QString examiners = elsewhere.filePath("file"_s);
        evidence::write_file(examiners, "the examiner's");
        backup_run run(backup, {recents_tab});
        run.prepare();
        const QString folder = run.result_directory() + "/Artifacts_Result/Mail/"_s;
        QVERIFY(QFile::link(examiners, folder + "tmp/corerecents:subject13.xml"_s));
        run.extract();
        QCOMPARE(content_of(examiners), QByteArray("the examiner's"));
        QVERIFY(!QFile::exists(folder + "evil2.plist"_s));
        QCOMPARE(run.row_count(recents_tab), 3);
        QCOMPARE(values_of(run, "subject"), QString());
        QCOMPARE(values_of(run, "mailed_timestamp"), "|12|1"_s);
        const QString missing = "No such file or directory"_s;
        const QString list_failure = "[extract_mail_recents]File Open Error: TMP//"_s;
        const QString xml_failure = "[extract_mail_recents] file open -------FAILED-----TMP//corerecents:"_s;
        const QStringList log = run.log_of_operation(operation);
        QCOMPARE(log.filter(QRegularExpression("^[^ ]"_s)),
                 (QStringList{starts, list_failure + "../evil2.plist"_s, missing, list_failure + long_key + "2.plist"_s,
                              "File name too long"_s, xml_failure + "subject12.xml"_s, missing,
                              xml_failure + "reference-url12.xml"_s, missing, xml_failure + "bomb12.xml"_s, missing,
                              xml_failure + "event-time12.xml"_s, missing, xml_failure + "subject13.xml"_s,
                              "Too many levels of symbolic links"_s, ends}));
    }

    // A value of 17 MB costs itself, in whichever table it stands, and neither its row nor the rows behind.
    void large_values()
    {
        const QString large(17 << 20, QLatin1Char('x'));
        plain_backup backup;
        evidence::recents_database recents(backup.path_of(recents_path));
        recents.add_recent(recent_of(1, "1", 1));
        recent_row spoilt = recent_of(5, "5", 3);
        spoilt.display_name = large;
        recents.add_recent(spoilt);
        recents.add_contact(5, {"a"_s, "k"_s, "x"_s});
        recents.add_contact(5, {large, "l"_s, "y"_s});
        recents.add_contact(5, {"c"_s, QString(), "z"_s});
        recents.add_metadata(5, time_key, large.toLatin1());
        recents.add_metadata(5, subject_key, list_of("behind it"_s));
        recents.add_recent(recent_of(6, "6", 1));
        recents.finish();
        backup_run run(backup, {"contacts"_s, recents_tab});
        run.run();
        QCOMPARE(values_of(run, "mailed_timestamp"), "1|5|6"_s);
        QCOMPARE(values_of(run, "subject"), "behind it"_s);
        QCOMPARE(values_of(run, "receiver_details"),
                 "Display Name: a;Kind: k;Address: x;;Display Name: ;Kind: l;Address: y;;"
                 "Display Name: c;Kind: ;Address: z"_s);
        QCOMPARE(run.row_count("contacts"_s), 3);
        const QString left_out = "value larger than 16 MiB -----FAILED-----, left out: "_s;
        QCOMPARE(run.log_of_operation(operation).filter(left_out),
                 (QStringList{left_out + "display_name"_s, left_out + "display_name"_s, left_out + "value"_s}));
        QVERIFY(run.log_of_operation(operation).contains(ends));
    }

    void look_ups_without_index()
    {
        for (const auto &[schema, guid] : {std::pair("guid TEXT, text TEXT", "G"),
                                           {"guid TEXT COLLATE NOCASE, text TEXT", "g"},
                                           {"guid TEXT, text TEXT, _rowid_ INTEGER DEFAULT 1", "G"}}) {
            plain_backup backup;
            evidence::recents_database recents(backup.path_of(recents_path));
            recents.add_recent(recent_of(1, "1", 1));
            recents.add_metadata(1, url_key, list_of("sms:/open?message-guid="_s + QString::fromLatin1(guid)));
            recents.finish();
            evidence::sms_database messages(backup.path_of(sms_path));
            messages.database().run("DROP TABLE message; CREATE TABLE message (%1);"
                                    "INSERT INTO message (guid, text) VALUES ('G', 'first'), ('H', 'x'), "
                                    "('G', 'last'), ('I', 'y');"_s.arg(QString::fromLatin1(schema)));
            messages.finish();
            backup_run run(backup, {recents_tab});
            run.run();
            QCOMPARE(values_of(run, "text"), "last"_s);
        }
    }

    void failing_side_queries()
    {
        plain_backup backup;
        evidence::recents_database recents(backup.path_of(recents_path));
        recents.add_recent(recent_of(1, "1", 1));
        recents.add_recent(recent_of(2, "1", 1));
        recents.database().run("DROP TABLE contacts"_s);
        recents.finish();
        backup_run without_contacts(backup, {recents_tab});
        without_contacts.run();
        QCOMPARE(without_contacts.row_count(recents_tab), 0);
        const QStringList failure{"[extract_mail_recents]query_select account ---FAILED--- "_s,
                                  "no such table: contacts"_s,
                                  "SELECT display_name,kind,address FROM contacts WHERE recent_id=?"_s};
        QCOMPARE(without_contacts.log_of_operation(operation),
                 QStringList{starts} + failure + failure + QStringList{ends});

        // A failing look-up of the short message costs its text alone.
        plain_backup damaged;
        write_recents(damaged);
        damaged.add_file(sms_path, QByteArray(200, 'x'));
        backup_run without_messages(damaged, {recents_tab});
        without_messages.run();
        QCOMPARE(without_messages.row_count(recents_tab), 3);
        QCOMPARE(values_of(without_messages, "text"), QString());
        const QStringList sms_failure{"[mail_message_sms_text]query_select ---FAILED--- "_s, "file is not a database"_s,
                                      "SELECT text FROM message WHERE guid=?"_s};
        QCOMPARE(without_messages.log_of_operation("mail_message_sms_text"), sms_failure + sms_failure);
    }

    void cancel_between_conversions()
    {
        plain_backup backup;
        write_recents(backup);
        backup_run run(backup, {recents_tab});
        run.prepare();
        QTimer::singleShot(0, [&run] { run.plugin().pub_cancel_extraction(); });
        run.extract();
        QCOMPARE(run.row_count(recents_tab), 0);
        QCOMPARE(run.log_of_operation(operation), (QStringList{starts, " : running"_s}));
    }

    void platform_tool_data()
    {
        text_columns("script", "subject"); // none: the conversion fails
        text_row("works",
                 "#!/bin/sh\n[ \"$1 $2 $4\" = \"-convert xml1 -o\" ] || exit 1\n"
                 "{ echo '<plist>'; echo \"<string>$(cat \"$3\")</string>\"; } > \"$5\"\n",
                 "given to the tool");
        text_row("fails", "#!/bin/sh\nexit 3\n", "");
        text_row("ends its process group", "#!/bin/sh\nkill -INT 0\n", "");
        text_row("cannot be started", "#!/no/such/interpreter\n", "");
    }

    void platform_tool()
    {
        QFETCH(QString, script);
        QFETCH(QString, subject);
        plain_backup backup;
        evidence::recents_database recents(backup.path_of(recents_path));
        recents.add_recent(recent_of(1, "1", 1));
        recents.add_metadata(1, subject_key, "given to the tool");
        recents.finish();
        write_tool(script.toUtf8());
        backup_run run(backup, {recents_tab});
        run.run();
        QCOMPARE(run.row_count(recents_tab), 1);
        QCOMPARE(values_of(run, "subject"), subject);
        QStringList log{starts, " : running"_s, " : infinite loop cross"_s};
        if (subject.isEmpty()) {
            log << "[extract_mail_recents] file open -------FAILED-----TMP//corerecents:subject1.xml"_s
                << "No such file or directory"_s;
        }
        QCOMPARE(run.log_of_operation(operation), log << ends);
    }

    void cancel_while_tool_hangs()
    {
        plain_backup backup;
        write_recents(backup);
        const QString child_file = tool_folder->filePath("child"_s);
        write_tool("#!/bin/sh\nsleep 600 &\necho $! > " + child_file.toLocal8Bit() + "\nwait\n");
        backup_run run(backup, {recents_tab});
        run.prepare();
        QTimer cancel;
        QObject::connect(&cancel, &QTimer::timeout, [&] {
            if (content_of(child_file).endsWith('\n')) {
                run.plugin().pub_cancel_extraction();
            }
        });
        cancel.start(50);
        QElapsedTimer clock;
        clock.start();
        run.extract();
        QVERIFY(clock.elapsed() < 30000);
        QCOMPARE(run.row_count(recents_tab), 0);
        QCOMPARE(run.log_of_operation(operation), (QStringList{starts, " : running"_s}));
        const QString child = "/proc/"_s + QString::fromLatin1(content_of(child_file).trimmed()) + "/cmdline"_s;
        QTRY_VERIFY(!content_of(child).startsWith("sleep")); // it has ended with the tool
    }

    // A tool in a relative folder, or below the root of the source, is none of the examiner's.
    void untrusted_tools()
    {
        plain_backup backup;
        write_recents(backup);
        backup.add_file("bin/plutil"_s, "#!/bin/sh\nexit 0\n");
        QVERIFY(QFile::setPermissions(backup.path_of("bin/plutil"_s), QFile::ReadOwner | QFile::ExeOwner));
        write_tool("#!/bin/sh\nexit 0\n");
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(tool_folder->path()));
        qputenv("PATH", ".:" + backup.root().toLocal8Bit() + "bin");
        backup_run run(backup, {recents_tab});
        run.run();
        QVERIFY(QDir::setCurrent(before));
        QVERIFY(values_of(run, "subject").startsWith("Lunch &amp; more|"_s)); // converted in the process
    }

private:
    void write_tool(const QByteArray &script)
    {
        const QString path = tool_folder->filePath("plutil"_s);
        evidence::write_file(path, script);
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        qputenv("PATH", tool_folder->path().toLocal8Bit() + ':' + system_path);
    }

    QByteArray system_path;
    std::unique_ptr<QTemporaryDir> tool_folder;
};

QTEST_MAIN(test_ios_uid_recents)
#include "test_ios_uid_recents.moc"
