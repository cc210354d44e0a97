// The plug-in object: run state, dispatch, progress, cancelling, and the result database that it makes and clears.
#include "core/result_schema.h"
#include "evidence/ios_file_tree.h"
#include "tests/services/service_test.h"
#include "tests/support/host_run.h"

#include <QDir>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

namespace {

const QString ios_scheme = "iOS_Uniform"_s;
const QStringList both_tabs{"messages"_s, "accounts"_s};
const QString runner = "plugin_static_function::execute_db_command_by_dbpath"_s;
// What Qt puts behind the texts of the database.
const QString not_executed = " Unable to execute statement"_s;
const QString not_opened = "unable to open database file Error opening database"_s;

// A run over a tree with an account, and one message for each of the subjects.
class tree_run : private QTemporaryDir, public host_run
{
public:
    explicit tree_run(const QStringList &subjects = {"one"_s}, const QStringList &tabs = both_tabs)
        : host_run(ios_scheme, filePath("source"_s), tabs)
    {
        evidence::ios_file_tree tree(filePath("source"_s));
        for (const QString &subject : subjects) {
            evidence::ios_message message;
            message.subject = tree.add_subject(subject);
            tree.add_message(message);
        }
        tree.accounts();
        tree.write_mailbox_collections("an id"_s);
        tree.finish();
    }

    // Runs a statement on the result database from outside.
    bool change(const char *statement) const
    {
        return service::execute_db_command_by_dbpath(QString::fromLatin1(statement), database_path(), "test"_s);
    }
};

} // namespace

class test_plugin_object : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void schema_is_that_of_the_hosts()
    {
        host_run run(ios_scheme, QString(), {});
        run.prepare();
        QString statements;
        {
            QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE"_s, "schema"_s);
            database.setDatabaseName(run.database_path());
            QVERIFY(database.open());
            QSqlQuery query("select sql from sqlite_master order by rowid"_s, database);
            while (query.next()) {
                statements += query.value(0).toString() + "\n"_s;
            }
        }
        QSqlDatabase::removeDatabase("schema"_s);
        QCOMPARE(difference_to_expected(statements, EXPECTED_FOLDER "/schema.sql"_s), QString());
    }

    void every_table_is_documented()
    {
        const QByteArray page = content_of(SOURCE_FOLDER "/docs/tables.md"_s);
        for (const result_table &table : result_tables) {
            QVERIFY2(page.contains(QByteArray("| `") + table.name + "` |"), table.name);
        }
    }

    void clearing_takes_the_selected_tabs_of_all_sources()
    {
        tree_run run({}, {"emlx_parser_data"_s, "messages"_s});
        run.prepare();
        for (const char *statement :
             {"insert into messages(source_count_name) values('Source1'), ('Source2')",
              "insert into accounts(bookmark) values(0)", "insert into emlx_list(bookmark) values(0)"}) {
            QVERIFY(run.change(statement));
        }
        run.plugin().pub_set_clear_db(false);
        run.plugin().pub_set_engine_type(3); // no engine: nothing is cleared
        run.plugin().pub_set_clear_db(true);
        QCOMPARE(run.row_count("messages"_s), 2);

        run.plugin().pub_set_engine_type(0);
        run.plugin().pub_set_clear_db(true);
        QCOMPARE(run.row_count("messages"_s), 0);
        QCOMPARE(run.row_count("accounts"_s), 1);
        QCOMPARE(run.row_count("emlx_list"_s), 1);
        // There is no table of the first name; the second is cleared all the same.
        QCOMPARE(run.log_of(runner).mid(1),
                 (QStringList{"CALLER FUNCTION -  void mail::clear_db_tables()"_s,
                              " command -  delete from 'emlx_parser_data'"_s,
                              " error -  no such table: emlx_parser_data"_s + not_executed}));

        QFile::remove(run.database_path());
        run.plugin().pub_set_clear_db(true);
        QCOMPARE(run.log_of("mail::clear_db_tables"_s), QStringList{"DB not exists and so returning..."_s});
        QVERIFY(!QFile::exists(run.database_path()));
    }

    void result_database_that_does_not_open()
    {
        tree_run run;
        run.prepare();
        QVERIFY(QFile::remove(run.database_path()));
        QVERIFY(QDir().mkdir(run.database_path()));
        run.plugin().pub_create_db_tables();
        run.extract();
        QCOMPARE(run.log_of("mail::create_db_tables"_s),
                 (QStringList{"Starts"_s, "Ends"_s, "Starts"_s,
                              "Destination Db opening  for table creation------FAILED-------- "_s + run.database_path(),
                              "Error :- "_s + not_opened}));
        QCOMPARE(run.log_of("mail_ios_uniform::extract_mail_messages"_s),
                 (QStringList{"Starts"_s, "Destination Db opening -----FAILED-----"_s + run.database_path(),
                              "ERROR :- unable to open database file"_s}));
        QCOMPARE(run.log_of("mail_ios_uniform::xcode_extract_mail_accounts"_s),
                 (QStringList{"Starts"_s, "Destination db opening----FAILED----"_s + run.database_path(),
                              "Error :- unable to open database file"_s}));
        QCOMPARE(run.tab_signals, (QList<int>{1, 2}));
    }

    void runners_log_their_failures()
    {
        host_run run(ios_scheme, QString(), {});
        run.prepare();
        const QString caller = "void test::caller()"_s;
        const QString command = "delete from missing"_s;
        const QString failed = " query  --------FAILED------ db file - "_s + run.database_path();
        const QStringList reason{" command -  delete from missing"_s,
                                 " error -  no such table: missing"_s + not_executed};
        for (int call = 0; call < 2; ++call) { // the second takes the name of the first one's connection over
            QVERIFY(!service::execute_db_command_by_dbpath(command, run.database_path(), caller));
        }
        QVERIFY(!service::execute_db_command_by_dbpath(command, "/no/such/folder/a"_s, caller));
        const QStringList by_path = QStringList{failed, "CALLER FUNCTION -  "_s + caller} + reason;
        const QStringList not_there{" Destination Db opening --------FAILED------ /no/such/folder/a"_s,
                                    "CALLER FUNCTION -  "_s + caller, " error -  "_s + not_opened};
        QCOMPARE(run.log_of(runner), by_path + by_path + not_there);
        {
            QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE"_s, "held open"_s);
            database.setDatabaseName(run.database_path());
            QVERIFY(database.open() && database.transaction());
            const char *insert = "insert into rules(bookmark) values(0)";
            QVERIFY(service::execute_db_command_by_dbreference(QString::fromLatin1(insert), database, caller));
            QVERIFY(!service::execute_db_command_by_dbreference(command, database, caller));
            QVERIFY(database.isOpen());
            QVERIFY(database.rollback()); // the caller's transaction is still the caller's
        }
        QSqlDatabase::removeDatabase("held open"_s);
        QCOMPARE(run.row_count("rules"_s), 0);
        QCOMPARE(run.log_of("plugin_static_function::execute_db_command_by_dbreference"_s),
                 (QStringList{failed, " CALLER FUNCTION -  -  "_s + caller} + reason));
    }

    void unmatched_scheme_is_logged_and_the_run_closes()
    {
        host_run run("macos"_s, QString(), both_tabs); // another case
        run.prepare();
        run.extract();
        const QString line = "------FAILED------- supported os scheme internal not matched, received os scheme "
                             "internal =  macos, plugin name is Mail"_s;
        QCOMPARE(run.log_of("mail::pub_find_source_file"_s), QStringList{line});
        QCOMPARE(run.log_of("mail::pub_extract_artifacts"_s), (QStringList{"START"_s, line, "END"_s}));
        QCOMPARE(run.record_signals, (QList<qint64>{0, 0}));
        QCOMPARE(run.tab_signals, QList<int>());
    }

    void schemes_without_data_close_their_run()
    {
        for (const QString &scheme : {"macOS"_s, "iOS_UID"_s, "winOS"_s}) {
            QTemporaryDir empty_source;
            host_run run(scheme, empty_source.path(), both_tabs);
            run.run();
            QVERIFY(run.record_signals.size() >= 3); // at the start, of the extractor, at the end
            QCOMPARE(run.record_signals.count(0), run.record_signals.size());
            QCOMPARE(run.row_count("messages"_s), 0);
            QCOMPARE(run.log().filter("FAILED"_s), QStringList());
        }
    }

    void without_engine_or_tab_nothing_runs()
    {
        for (const int engine_type : {3, 0}) { // with an engine there is no such tab
            tree_run run({"one"_s}, engine_type == 3 ? both_tabs : QStringList{"Messages"_s, "messages2"_s, "rules"_s});
            run.engine_type = engine_type;
            run.prepare();
            run.extract();
            QCOMPARE(run.row_count("messages"_s), 0);
            QCOMPARE(run.tab_signals, QList<int>());
            QCOMPARE(run.record_signals, (QList<qint64>{0, 0, 0}));
        }
    }

    void cancelled_before_the_run()
    {
        tree_run run;
        run.prepare();
        run.plugin().pub_cancel_extraction();
        for (int attempt = 0; attempt < 2; ++attempt) {
            run.extract();
        }
        QCOMPARE(run.log_of("mail::pub_extract_artifacts"_s), (QStringList{"START"_s, "START"_s}));
        QCOMPARE(run.record_signals, (QList<qint64>{0, 0}));

        run.prepare(); // sets the essentials, which takes the cancelling back
        run.extract();
        QCOMPARE(run.row_count("messages"_s), 1);
    }

    void counts_go_on_until_essentials_are_set()
    {
        tree_run run({"one"_s, "two"_s});
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

    void insert_failure_is_logged_and_the_next_row_follows()
    {
        tree_run run({"one"_s, "two"_s, "three"_s});
        run.prepare();
        QVERIFY(run.change("create trigger refuse before insert on messages when NEW.subject='two' "
                           "begin select raise(abort,'refused'); end"));
        QVERIFY(run.change("create trigger refuse_all before insert on accounts "
                           "begin select raise(abort,'refused'); end"));
        run.extract();
        QCOMPARE(run.row_count("messages"_s), 2);
        QCOMPARE(run.record_signals.last(), 3); // the account's row counts though it was refused
        const QStringList log = run.log_of("mail_ios_uniform::extract_mail_messages"_s);
        QCOMPARE(log.mid(0, 3), (QStringList{"Starts"_s, "Insert query_insert -----FAILED-----"_s + run.database_path(),
                                             "ERROR :- refused"_s}));
        QVERIFY(log.at(3).startsWith("Query :- insert into messages(bookmark,message_id,"_s));
        QCOMPARE(log.mid(4), QStringList{"Ends"_s});
        QCOMPARE(run.log_of("mail_ios_uniform::xcode_extract_mail_accounts"_s).mid(1, 2),
                 (QStringList{"Insert query_insert ------FAILED-----"_s + run.database_path(), "ERROR :- refused"_s}));
    }
};

QTEST_MAIN(test_plugin_object)
#include "test_plugin_object.moc"
