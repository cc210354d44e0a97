// The plug-in object: run state, dispatch, progress, cancelling, and the result database that it makes and clears.
#include "core/plugin_static_function.h"
#include "core/result_schema.h"
#include "evidence/ios_file_tree.h"
#include "tests/support/host_run.h"

#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QString ios_scheme = QStringLiteral("iOS_Uniform");
const QStringList both_tabs{QStringLiteral("messages"), QStringLiteral("accounts")};

// A tree with an account, and one message for each of the subjects.
QString write_tree(const QTemporaryDir &folder, const QStringList &subjects)
{
    evidence::ios_file_tree tree(folder.filePath(QStringLiteral("source")));
    for (const QString &subject : subjects) {
        evidence::ios_message message;
        message.subject = tree.add_subject(subject);
        tree.add_message(message);
    }
    tree.accounts();
    tree.write_mailbox_collections(QStringLiteral("an id"));
    tree.finish();
    return tree.root();
}

// Runs a statement on the result database from outside.
bool run_on(const QString &database_path, const QString &statement)
{
    return plugin_static_function::execute_db_command_by_dbpath(statement, database_path, QStringLiteral("test"));
}

} // namespace

class test_plugin_object : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void schema_is_that_of_the_hosts();
    void every_table_is_documented();
    void tables_made_twice_keep_their_rows();
    void result_directory_with_and_without_slash_data();
    void result_directory_with_and_without_slash();
    void clearing_takes_the_selected_tabs_of_all_sources();
    void clearing_without_database_or_engine();
    void result_database_that_does_not_open();
    void runners_log_their_failures();
    void unmatched_scheme_is_logged_and_the_run_closes();
    void schemes_without_data_close_their_run_data();
    void schemes_without_data_close_their_run();
    void without_engine_no_tab_runs();
    void cancelled_before_the_run();
    void counts_go_on_until_essentials_are_set();
    void selected_tabs_are_taken_whole();
    void log_file_is_appended_to();
    void log_file_that_does_not_open();
    void insert_failure_is_logged_and_the_next_row_follows();
};

void test_plugin_object::schema_is_that_of_the_hosts()
{
    host_run run(ios_scheme, QString(), {});
    run.prepare();
    QStringList statements;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("schema"));
        database.setDatabaseName(run.database_path());
        QVERIFY(database.open());
        QSqlQuery query(QStringLiteral("select sql from sqlite_master order by rowid"), database);
        while (query.next()) {
            statements.append(query.value(0).toString());
        }
    }
    QSqlDatabase::removeDatabase(QStringLiteral("schema"));
    const QString difference = difference_to_expected(statements.join(QLatin1Char('\n')) + QLatin1Char('\n'),
                                                      QStringLiteral(EXPECTED_FOLDER "/schema.sql"));
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
}

void test_plugin_object::every_table_is_documented()
{
    QFile page(QStringLiteral(SOURCE_FOLDER "/docs/tables.md"));
    QVERIFY(page.open(QIODevice::ReadOnly));
    const QByteArray text = page.readAll();
    for (const result_table &table : result_tables) {
        QVERIFY2(text.contains(QByteArray("| `") + table.name + "` |"), table.name);
    }
}

void test_plugin_object::tables_made_twice_keep_their_rows()
{
    QTemporaryDir folder;
    host_run run(ios_scheme, write_tree(folder, {QStringLiteral("one")}), both_tabs);
    run.prepare();
    run.extract();
    run.plugin().pub_create_db_tables();
    QCOMPARE(run.row_count(QStringLiteral("messages")), 1);
    QVERIFY(!run.log().join(QLatin1Char('\n')).contains(QLatin1String("FAILED")));
}

void test_plugin_object::result_directory_with_and_without_slash_data()
{
    QTest::addColumn<QString>("behind");
    QTest::newRow("without") << QString();
    QTest::newRow("with") << QStringLiteral("/");
}

void test_plugin_object::result_directory_with_and_without_slash()
{
    QFETCH(QString, behind);
    QTemporaryDir folder;
    mail plugin;
    plugin.pub_set_result_directory(folder.path() + behind);
    plugin.pub_create_db_tables();
    QVERIFY(QFile::exists(folder.path() + QLatin1String("/Artifacts_Result/Mail/Mail.sqlite")));
    QVERIFY(QDir(folder.path() + QLatin1String("/Artifacts_Result/Mail/tmp")).exists());
    plugin.pub_remove_temporary_asthetics();
    QVERIFY(!QDir(folder.path() + QLatin1String("/Artifacts_Result/Mail/tmp")).exists());
}

void test_plugin_object::clearing_takes_the_selected_tabs_of_all_sources()
{
    QTemporaryDir folder;
    host_run run(ios_scheme, write_tree(folder, {QStringLiteral("one")}),
                 {QStringLiteral("emlx_parser_data"), QStringLiteral("messages")});
    run.prepare();
    for (const char *statement :
         {"insert into messages(source_count_name) values('Source1')",
          "insert into messages(source_count_name) values('Source2')", "insert into accounts(bookmark) values(0)",
          "insert into emlx_list(bookmark) values(0)"}) {
        QVERIFY(run_on(run.database_path(), QString::fromLatin1(statement)));
    }
    run.plugin().pub_set_clear_db(false);
    QCOMPARE(run.row_count(QStringLiteral("messages")), 2);

    run.plugin().pub_set_clear_db(true);
    QCOMPARE(run.row_count(QStringLiteral("messages")), 0);
    QCOMPARE(run.row_count(QStringLiteral("accounts")), 1);
    QCOMPARE(run.row_count(QStringLiteral("emlx_list")), 1);
    // There is no table of the first name; the second is cleared all the same.
    const QStringList log = run.log_of(QStringLiteral("plugin_static_function::execute_db_command_by_dbpath"));
    QCOMPARE(log.size(), 4);
    QCOMPARE(log.at(1), QStringLiteral("CALLER FUNCTION -  void mail::clear_db_tables()"));
    QCOMPARE(log.at(2), QStringLiteral(" command -  delete from 'emlx_parser_data'"));
    QVERIFY2(log.at(3).startsWith(QLatin1String(" error -  no such table: emlx_parser_data")), qPrintable(log.at(3)));
}

void test_plugin_object::clearing_without_database_or_engine()
{
    QTemporaryDir folder;
    host_run run(ios_scheme, write_tree(folder, {QStringLiteral("one")}), both_tabs);
    run.prepare();
    run.extract();
    run.plugin().pub_set_engine_type(3);
    run.plugin().pub_set_clear_db(true);
    QCOMPARE(run.row_count(QStringLiteral("messages")), 1);

    run.plugin().pub_set_engine_type(0);
    QFile::remove(run.database_path());
    run.plugin().pub_set_clear_db(true);
    QCOMPARE(run.log_of(QStringLiteral("mail::clear_db_tables")),
             QStringList{QStringLiteral("DB not exists and so returning...")});
    QVERIFY(!QFile::exists(run.database_path()));
}

void test_plugin_object::result_database_that_does_not_open()
{
    QTemporaryDir folder;
    host_run run(ios_scheme, write_tree(folder, {QStringLiteral("one")}), both_tabs);
    run.prepare();
    QVERIFY(QFile::remove(run.database_path()));
    QVERIFY(QDir().mkdir(run.database_path()));
    run.plugin().pub_create_db_tables();
    run.extract();

    const QStringList creation = run.log_of(QStringLiteral("mail::create_db_tables"));
    QCOMPARE(creation.mid(0, 3),
             (QStringList{QStringLiteral("Starts"), QStringLiteral("Ends"), QStringLiteral("Starts")}));
    QCOMPARE(creation.at(3),
             QLatin1String("Destination Db opening  for table creation------FAILED-------- ") + run.database_path());
    QVERIFY2(creation.at(4).startsWith(QLatin1String("Error :- unable to open database file")),
             qPrintable(creation.at(4)));
    QCOMPARE(creation.size(), 5);

    const QStringList messages = run.log_of(QStringLiteral("mail_ios_uniform::extract_mail_messages"));
    QCOMPARE(messages, (QStringList{QStringLiteral("Starts"),
                                    QLatin1String("Destination Db opening -----FAILED-----") + run.database_path(),
                                    QStringLiteral("ERROR :- unable to open database file")}));
    const QStringList accounts = run.log_of(QStringLiteral("mail_ios_uniform::xcode_extract_mail_accounts"));
    QCOMPARE(accounts, (QStringList{QStringLiteral("Starts"),
                                    QLatin1String("Destination db opening----FAILED----") + run.database_path(),
                                    QStringLiteral("Error :- unable to open database file")}));
    QCOMPARE(run.tab_signals, (QList<int>{1, 2}));
}

void test_plugin_object::runners_log_their_failures()
{
    host_run run(ios_scheme, QString(), {});
    run.prepare();
    const QString function = QStringLiteral("plugin_static_function::execute_db_command_by_dbpath");
    const QString caller = QStringLiteral("void test::caller()");
    const QString command = QStringLiteral("delete from missing");

    for (int call = 0; call < 2; ++call) { // the second takes the name of the first one's connection over
        QVERIFY(!plugin_static_function::execute_db_command_by_dbpath(command, run.database_path(), caller));
    }
    QStringList log = run.log_of(function);
    QCOMPARE(log.size(), 8);
    QCOMPARE(log.mid(0, 3), (QStringList{QLatin1String(" query  --------FAILED------ db file - ") + run.database_path(),
                                         QStringLiteral("CALLER FUNCTION -  void test::caller()"),
                                         QStringLiteral(" command -  delete from missing")}));
    QVERIFY(log.at(3).startsWith(QLatin1String(" error -  no such table: missing")));

    QVERIFY(
        !plugin_static_function::execute_db_command_by_dbpath(command, QStringLiteral("/no/such/folder/a"), caller));
    log = run.log_of(function).mid(8);
    QCOMPARE(log.size(), 3);
    QCOMPARE(log.mid(0, 2),
             (QStringList{QStringLiteral(" Destination Db opening --------FAILED------ /no/such/folder/a"),
                          QStringLiteral("CALLER FUNCTION -  void test::caller()")}));
    QVERIFY(log.at(2).startsWith(QLatin1String(" error -  unable to open database file")));

    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("held open"));
        database.setDatabaseName(run.database_path());
        QVERIFY(database.open());
        QVERIFY(database.transaction());
        const QString insert = QStringLiteral("insert into rules(bookmark) values(0)");
        QVERIFY(plugin_static_function::execute_db_command_by_dbreference(insert, database, caller));
        QVERIFY(!plugin_static_function::execute_db_command_by_dbreference(command, database, caller));
        QVERIFY(database.isOpen());
        QVERIFY(database.rollback()); // the caller's transaction is still the caller's
    }
    QSqlDatabase::removeDatabase(QStringLiteral("held open"));
    QCOMPARE(run.row_count(QStringLiteral("rules")), 0);
    log = run.log_of(QStringLiteral("plugin_static_function::execute_db_command_by_dbreference"));
    QCOMPARE(log.mid(0, 3), (QStringList{QLatin1String(" query  --------FAILED------ db file - ") + run.database_path(),
                                         QStringLiteral(" CALLER FUNCTION -  -  void test::caller()"),
                                         QStringLiteral(" command -  delete from missing")}));
    QVERIFY(log.at(3).startsWith(QLatin1String(" error -  no such table: missing")));
    QCOMPARE(log.size(), 4);
}

void test_plugin_object::unmatched_scheme_is_logged_and_the_run_closes()
{
    host_run run(QStringLiteral("macos"), QString(), both_tabs); // another case
    run.prepare();
    run.extract();
    const QString line =
        QStringLiteral("------FAILED------- supported os scheme internal not matched, received os scheme "
                       "internal =  macos, plugin name is Mail");
    QCOMPARE(run.log_of(QStringLiteral("mail::pub_find_source_file")), QStringList{line});
    QCOMPARE(run.log_of(QStringLiteral("mail::pub_extract_artifacts")),
             (QStringList{QStringLiteral("START"), line, QStringLiteral("END")}));
    QCOMPARE(run.record_signals, (QList<qint64>{0, 0}));
    QCOMPARE(run.tab_signals, QList<int>());
}

void test_plugin_object::schemes_without_data_close_their_run_data()
{
    QTest::addColumn<QString>("scheme");
    for (const char *scheme : {"macOS", "iOS_UID", "winOS"}) {
        QTest::newRow(scheme) << QString::fromLatin1(scheme);
    }
}

void test_plugin_object::schemes_without_data_close_their_run()
{
    QFETCH(QString, scheme);
    QTemporaryDir empty_source;
    host_run run(scheme, empty_source.path(), both_tabs);
    run.run();
    QVERIFY(run.record_signals.size() >= 3); // at the start, of the extractor, at the end
    QCOMPARE(run.record_signals.count(0), run.record_signals.size());
    QCOMPARE(run.row_count(QStringLiteral("messages")), 0);
    QVERIFY(!run.log().join(QLatin1Char('\n')).contains(QLatin1String("FAILED")));
}

void test_plugin_object::without_engine_no_tab_runs()
{
    QTemporaryDir folder;
    host_run run(ios_scheme, write_tree(folder, {QStringLiteral("one")}), both_tabs);
    run.engine_type = 3;
    run.prepare();
    run.extract();
    QCOMPARE(run.row_count(QStringLiteral("messages")), 0);
    QCOMPARE(run.tab_signals, QList<int>());
    QCOMPARE(run.record_signals, (QList<qint64>{0, 0, 0}));
}

void test_plugin_object::cancelled_before_the_run()
{
    QTemporaryDir folder;
    host_run run(ios_scheme, write_tree(folder, {QStringLiteral("one")}), both_tabs);
    run.prepare();
    run.plugin().pub_cancel_extraction();
    for (int attempt = 0; attempt < 2; ++attempt) {
        run.extract();
    }
    QCOMPARE(run.log_of(QStringLiteral("mail::pub_extract_artifacts")),
             (QStringList{QStringLiteral("START"), QStringLiteral("START")}));
    QCOMPARE(run.record_signals, (QList<qint64>{0, 0}));

    run.prepare(); // sets the essentials, which takes the cancelling back
    run.extract();
    QCOMPARE(run.row_count(QStringLiteral("messages")), 1);
}

void test_plugin_object::counts_go_on_until_essentials_are_set()
{
    QTemporaryDir folder;
    host_run run(ios_scheme, write_tree(folder, {QStringLiteral("one"), QStringLiteral("two")}), both_tabs);
    run.prepare();
    run.extract();
    run.extract();
    QCOMPARE(run.record_signals.last(), 6); // two messages and an account, twice
    QCOMPARE(run.tab_signals, (QList<int>{1, 2, 3, 4}));
    run.prepare();
    run.extract();
    QCOMPARE(run.record_signals.last(), 3);
    QCOMPARE(run.tab_signals.last(), 2);
}

void test_plugin_object::selected_tabs_are_taken_whole()
{
    QTemporaryDir folder;
    host_run run(ios_scheme, write_tree(folder, {QStringLiteral("one")}),
                 {QStringLiteral("Messages"), QStringLiteral("messages2"), QStringLiteral("rules")});
    run.prepare();
    run.extract();
    QCOMPARE(run.tab_signals, QList<int>());
    QCOMPARE(run.row_count(QStringLiteral("messages")), 0);
}

void test_plugin_object::log_file_is_appended_to()
{
    host_run run(ios_scheme, QString(), {});
    run.run();
    const QStringList first = run.log();
    run.run();
    QCOMPARE(run.log().mid(0, first.size()), first);
    QCOMPARE(run.log().size(), 2 * first.size());
}

void test_plugin_object::log_file_that_does_not_open()
{
    QTemporaryDir folder;
    host_run run(ios_scheme, write_tree(folder, {QStringLiteral("one"), QStringLiteral("two")}), both_tabs);
    QVERIFY(QDir(run.result_directory()).mkdir(QStringLiteral("run.log"))); // a folder in its place
    run.run();
    QCOMPARE(run.row_count(QStringLiteral("messages")), 2);
}

void test_plugin_object::insert_failure_is_logged_and_the_next_row_follows()
{
    QTemporaryDir folder;
    const QString source = write_tree(folder, {QStringLiteral("one"), QStringLiteral("two"), QStringLiteral("three")});
    host_run run(ios_scheme, source, both_tabs);
    run.prepare();
    QVERIFY(run_on(run.database_path(), QStringLiteral("create trigger refuse before insert on messages when "
                                                       "NEW.subject='two' begin select raise(abort,'refused'); end")));
    QVERIFY(run_on(run.database_path(), QStringLiteral("create trigger refuse_all before insert on accounts begin "
                                                       "select raise(abort,'refused'); end")));
    run.extract();
    QCOMPARE(run.row_count(QStringLiteral("messages")), 2);
    QCOMPARE(run.record_signals.last(), 3); // the account's row counts though it was refused
    const QStringList log = run.log_of(QStringLiteral("mail_ios_uniform::extract_mail_messages"));
    QCOMPARE(log.mid(0, 3), (QStringList{QStringLiteral("Starts"),
                                         QLatin1String("Insert query_insert -----FAILED-----") + run.database_path(),
                                         QStringLiteral("ERROR :- refused")}));
    QVERIFY(log.at(3).startsWith(QLatin1String("Query :- insert into messages(bookmark,message_id,")));
    QCOMPARE(log.mid(4), QStringList{QStringLiteral("Ends")});
    QCOMPARE(run.log_of(QStringLiteral("mail_ios_uniform::xcode_extract_mail_accounts")).mid(1, 2),
             (QStringList{QLatin1String("Insert query_insert ------FAILED-----") + run.database_path(),
                          QStringLiteral("ERROR :- refused")}));
}

QTEST_MAIN(test_plugin_object)
#include "test_plugin_object.moc"
