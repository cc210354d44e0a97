// The lists whose entries are rows of vip_contacts, rules and smart_mailboxes: what becomes of lists that are damaged,
// and what is logged where the result database takes no rows.
#include "tests/macos/configuration_source.h"

using evidence::property_list_dictionary;

namespace {

const QVariant any_array = QVariantList{property_list_dictionary{{"Name", QStringLiteral("a")}}};
const QVariant any_dictionary = property_list_dictionary{{"a", property_list_dictionary{}}};

} // namespace

class test_macos_listed_rows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { source.reset(); }

    void no_list_data() { add_lists(); }
    void no_list();
    void failures_of_the_result_database_data() { add_lists(); }
    void failures_of_the_result_database();

private:
    static void add_lists();

    std::unique_ptr<configuration_source> source;
    QString operation;
};

void test_macos_listed_rows::add_lists()
{
    QTest::addColumn<QString>("table");
    QTest::addColumn<QString>("list_name");
    QTest::addColumn<int>("generation");
    QTest::addColumn<QString>("operation_name");
    QTest::addColumn<QVariant>("good_root");
    QTest::addColumn<QVariant>("other_root");
    QTest::addColumn<QString>("list_failure");
    QTest::addColumn<QString>("line_behind");
    QTest::addColumn<QString>("open_failure");
    QTest::addColumn<QString>("insert_failure");
    QTest::addColumn<QString>("statement");

    const QString open_failure = text("destination_db open --------FAILED------");
    const QString insert_failure = text("insert query --------FAILED------");
    QTest::newRow("VIPs of V3") << text("vip_contacts") << text("VIPs.plist") << 3 << text("xcode_extract_vip_list")
                                << QVariant(property_list_dictionary{{"Senders", any_dictionary}}) << any_array
                                << text("m_plist blank ------FAILED------") << text("End with failure") << open_failure
                                << insert_failure << text("Execute Query :- INSERT into vip_contacts(");
    QTest::newRow("VIPs of V9") << text("vip_contacts") << text("VIPs.plist") << 9 << text("xcode_extract_vip_list_15")
                                << any_dictionary << any_array << text("m_plist blank ------FAILED------")
                                << text("end with failure") << open_failure << insert_failure
                                << text("INSERT into vip_contacts(");
    QTest::newRow("rules") << text("rules") << text("SyncedRules.plist") << 9 << text("xcode_extract_syncedrule")
                           << any_array << any_dictionary << text("m_plist blank -------FAILED-------")
                           << text("end with failure") << open_failure << insert_failure << text("INSERT into rules(");
    QTest::newRow("smart mailboxes") << text("smart_mailboxes") << text("SyncedSmartMailboxes.plist") << 9
                                     << text("xcode_extract_smartbox")
                                     << QVariant(
                                            QVariantList{property_list_dictionary{{"MailboxCriteria", QVariantList{}}}})
                                     << any_dictionary << text(" m_plist blank -------FAILED-------")
                                     << text("end with failure") << open_failure + QLatin1Char(' ')
                                     << text(" insert query -----FAILED-----")
                                     << text("Executed Query :- insert into smart_mailboxes(");
}

void test_macos_listed_rows::init()
{
    QFETCH(QString, table);
    QFETCH(QString, list_name);
    QFETCH(QString, operation_name);
    source = std::make_unique<configuration_source>(table.toLatin1().constData(), list_name.toLatin1().constData());
    operation = QLatin1String("mail_macos::") + operation_name;
}

// The next user's list gives its row all the same.
void test_macos_listed_rows::no_list()
{
    QFETCH(int, generation);
    QFETCH(QVariant, good_root);
    QFETCH(QVariant, other_root);
    QFETCH(QString, list_failure);
    QFETCH(QString, line_behind);
    source->write("ben", generation, good_root);
    for (const auto &[root, size] :
         {std::pair{other_root, -1}, {QVariant(text("text")), -1}, {good_root, 20}, {good_root, 0}}) {
        source->write("anna", generation, root);
        if (size >= 0) {
            QVERIFY(QFile::resize(source->list_path("anna", generation), size));
        }

        const auto run = source->new_run();
        run->run();

        QCOMPARE(run->row_count(source->table), 1);
        const QString list = text("SOURCE/Users/anna/Library/Mail/V%1/MailData/").arg(generation) + source->list_name;
        QCOMPARE(run->log_of(operation).mid(0, 3), (QStringList{text("starts"), list_failure + list, line_behind}));
        QCOMPARE(run->tab_signals, QList<int>{1});
    }
}

void test_macos_listed_rows::failures_of_the_result_database()
{
    QFETCH(int, generation);
    QFETCH(QVariant, good_root);
    QFETCH(QString, open_failure);
    QFETCH(QString, insert_failure);
    QFETCH(QString, statement);
    source->write("anna", generation, good_root);

    const auto refusing = source->new_run();
    refusing->prepare();
    run_statement(
        *refusing,
        text("create trigger refuse before insert on %1 begin select raise(abort, 'no row'); end").arg(source->table));
    refusing->extract();
    const QStringList lines = refusing->log_of(operation);
    QCOMPARE(lines.size(), 5);
    QCOMPARE(lines.mid(1, 2), (QStringList{insert_failure + refusing->database_path(), text("Error :- no row")}));
    QVERIFY(lines.at(3).startsWith(statement));
    QCOMPARE(refusing->record_signals.last(), 0);

    const auto closed = source->new_run();
    closed->prepare();
    close_result_database(*closed);
    closed->extract();
    QCOMPARE(closed->log_of(operation), (QStringList{text("starts"), open_failure + closed->database_path(),
                                                     text("Error :- unable to open database file")}));
}

QTEST_MAIN(test_macos_listed_rows)
#include "test_macos_listed_rows.moc"
