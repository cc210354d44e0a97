// The table preferences: every setting of both lists, whole rows, the completion of the table signature, and what
// becomes of lists that are damaged.
#include "tests/macos/preference_source.h"
#include "tests/support/tree_snapshot.h"

#include <thread>

using evidence::property_list_dictionary;
using evidence::property_list_form;

namespace {

const QString application_operation = QStringLiteral("mail_macos::xcode_extract_preferences");
const QString shared_operation = QStringLiteral("mail_macos::xcode_extract_composing_addressing_prefs");
const QString anna = QStringLiteral("anna");

// Adds a signature with its account and its source file, as the tab of the signatures does.
void add_signature(const host_run &run, const char *uid, const char *account, const char *source_count_name)
{
    run_statement(run, QStringLiteral("insert into signature(signature_uid, related_account_id, is_selected, "
                                      "source_file, source_count_name) values('%1', '%2', 'NO', '/list', '%3')")
                           .arg(text(uid), text(account), text(source_count_name)));
}

} // namespace

class test_macos_preferences : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { source = std::make_unique<preference_source>(application_list); }

    void settings()
    {
        source->check_cases("preferences.txt", silent_defaults, [](const host_run &) {});
    }
    void shared_settings()
    {
        preference_source(shared_list).check_cases("preferences_shared.txt", {}, [](const host_run &) {});
    }
    void rows();
    void home_folder();
    void signatures();
    void failed_signatures();
    void no_list_data();
    void no_list();
    void huge_keys_and_wrong_kinds();
    void failures_of_the_result_database();
    void cancelled_from_another_thread();

private:
    void write_shared(const QVariant &root) const
    {
        evidence::write_property_list_file(source->tree.home_of(anna) + QLatin1String(shared_list), root,
                                           property_list_form::xml);
    }

    std::unique_ptr<preference_source> source;
};

// Both lists of one user: the rows of the one come first, in the order of the settings and not of the keys.
void test_macos_preferences::rows()
{
    source->write(
        anna,
        property_list_dictionary{{"NumberOfMessagesMarkedAsJunk", 3},
                                 {"OutboxViewerAttributes", property_list_dictionary{{"SortOrder", text("to")}}},
                                 {"FlagNames", property_list_dictionary{{"0", text("Rot")}}},
                                 {"PollTime", 5}},
        property_list_form::xml);
    write_shared(property_list_dictionary{{"DomainForMatching", QStringList{text("example.org")}}});
    const tree_snapshot before(source->folder.path());

    const auto run = source->new_run();
    run->run();

    QCOMPARE(before.changes(), QString());
    const QString difference = source->difference_to("preferences_rows.txt", *run);
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
    const QStringList lines{text("starts"), text("ends")};
    QCOMPARE(run->log_of(application_operation), lines);
    QCOMPARE(run->log_of(shared_operation), lines);
    QCOMPARE(run->record_signals.last(), 10);
}

void test_macos_preferences::home_folder()
{
    write_shared(property_list_dictionary{});

    const auto run = source->new_run();
    run->source_type = QStringLiteral("macOS_Home_Directory");
    run->run();

    QCOMPARE(source->column(*run, "source_file"), QStringList{text(shared_list)});
    QCOMPARE(source->column(*run, "artifacts_relation_source_file"),
             QStringList{text("/Users/anna") + text(shared_list)});
}

void test_macos_preferences::signatures()
{
    const property_list_dictionary selected{
        {"A1", text(" S1 ")}, {"A2", text("S1")}, {"A3", 1}, {"A4", text("unknown")}, {"A5", text("x' or '1'='1")}};
    const property_list_dictionary methods{{"A1", text("Randomize")},
                                           {"A2", text("Sequential")},
                                           {"A3", text("AlwaysTheSame")},
                                           {"x' or '1'='1", text("Randomize")}};
    source->write(anna,
                  property_list_dictionary{{"SignaturesSelected", selected}, {"SignatureSelectionMethods", methods}});

    const auto run = source->new_run();
    run->prepare();
    add_signature(*run, "S1", "A1", "Source1");
    add_signature(*run, "S2", "A2", "Source1");
    add_signature(*run, "S3", "A3", "Source1");
    add_signature(*run, "S4", "A4", "Source1");
    add_signature(*run, "S1", "A1", "Source2");
    add_signature(*run, "", "", "Source1");
    run->extract();

    const QString difference =
        difference_to_expected(run->rows(text("signature")), text(EXPECTED_FOLDER "/preferences_signatures.txt"));
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
}

void test_macos_preferences::failed_signatures()
{
    source->write(anna, property_list_dictionary{
                            {"SignaturesSelected", property_list_dictionary{{"A1", text("S1")}}},
                            {"SignatureSelectionMethods", property_list_dictionary{{"A1", text("Randomize")}}}});

    const auto refusing = source->new_run();
    refusing->prepare();
    add_signature(*refusing, "S1", "A1", "Source1");
    run_statement(*refusing, text("create trigger refuse before update on signature begin select raise(abort, 'no'); "
                                  "end"));
    refusing->extract();
    const QString update_failure = text("[xcode_extract_preferences] update query --------FAILED------");
    const QString update_method = text("update signature set signature_selection_method = ? where related_account_id = "
                                       "? AND source_count_name = ?");
    QCOMPARE(refusing->log_of(application_operation),
             (QStringList{text("starts"), update_failure,
                          text("update signature set is_selected = ?, source_file = ? where signature_uid = ? AND "
                               "source_count_name = ?"),
                          update_failure, update_method, text("ends")}));
    QCOMPARE(refusing->row_count(text("preferences")), 4);

    const auto missing = source->new_run();
    missing->prepare();
    run_statement(*missing, text("drop table signature"));
    missing->extract();
    QCOMPARE(missing->log_of(application_operation),
             (QStringList{text("starts"), text("[xcode_extract_preferences] select query --------FAILED------"),
                          text("select source_file from signature where signature_uid =  ? AND source_count_name = ?"),
                          update_failure, update_method, text("ends")}));
    QCOMPARE(missing->row_count(text("preferences")), 4);
}

void test_macos_preferences::no_list_data()
{
    QTest::addColumn<QVariant>("root");
    QTest::addColumn<int>("size");
    QTest::newRow("an array") << QVariant(QVariantList{1}) << -1;
    QTest::newRow("a text") << QVariant(text("text")) << -1;
    QTest::newRow("cut off") << QVariant(property_list_dictionary{{"PollTime", 5}}) << 20;
    QTest::newRow("empty") << QVariant(property_list_dictionary{{"PollTime", 5}}) << 0;
}

void test_macos_preferences::no_list()
{
    QFETCH(QVariant, root);
    QFETCH(int, size);
    const QString paths[] = {source->path_of(anna), source->tree.home_of(anna) + QLatin1String(shared_list)};
    for (const QString &path : paths) {
        evidence::write_property_list_file(path, root, property_list_form::binary);
        QVERIFY(size < 0 || QFile::resize(path, size));
    }

    const auto run = source->new_run();
    run->run();

    QCOMPARE(run->row_count(text("preferences")), 0);
    const QString failure = text("m_plist blank -------FAILED-------SOURCE/Users/anna");
    QCOMPARE(run->log_of(application_operation),
             (QStringList{text("starts"), failure + text(application_list), text("End with failure ")}));
    QCOMPARE(run->log_of(shared_operation),
             (QStringList{text("starts"), failure + text(shared_list), text("End with failure")}));
    QCOMPARE(run->tab_signals, QList<int>{1});
}

void test_macos_preferences::huge_keys_and_wrong_kinds()
{
    const QString huge(1 << 20, QLatin1Char('k'));
    const property_list_dictionary flags{{huge, text("Rot")}};
    source->write(anna, property_list_dictionary{{huge, 1},
                                                 {"FlagNames", flags},
                                                 {"SignaturesSelected", flags},
                                                 {"SignatureSelectionMethods", QVariantList{flags}},
                                                 {"AccountOrdering", QVariantList{flags, 1, QVariantList{}}},
                                                 {"Favorites", QVariantList{QVariantList{flags}, huge}},
                                                 {"CustomHeaders", flags}});

    const auto run = source->new_run();
    run->run();

    QCOMPARE(source->column(*run, "key"),
             (QStringList{text("Quote the text of original message"), text("Show most recent message at the top"),
                          text("Trust Junk mail headers in messages"),
                          text("Filter junk mail before applying my rules"), text("Flag Names")}));
    QCOMPARE(run->log_of(application_operation), (QStringList{text("starts"), text("ends")}));
}

void test_macos_preferences::failures_of_the_result_database()
{
    source->write(anna, with_silent_defaults({{"PollTime", 5}}));
    write_shared(property_list_dictionary{});

    const auto refusing = source->new_run();
    refusing->prepare();
    run_statement(*refusing, text("create trigger refuse before insert on preferences begin select raise(abort, 'no "
                                  "row'); end"));
    refusing->extract();
    const QString query = text("Executed Query :- INSERT into preferences(bookmark,system_user,key,value,source_file,"
                               "artifacts_relation_source_file,source_count_name, os_scheme_display)");
    QCOMPARE(refusing->log_of(application_operation),
             (QStringList{text("starts"), text("[xcode_extract_preferences] insert query --------FAILED------"),
                          text("Error :- no row"), query + text("values(?,?,?,?,?,?,?,?)"), text("ends")}));
    QCOMPARE(refusing->log_of(shared_operation),
             (QStringList{text("starts"), text("insert query --------FAILED------") + refusing->database_path(),
                          text("Error :- no row"), query + text(" values(?,?,?,?,?,?,?,?)"), text("ends")}));
    QCOMPARE(refusing->record_signals.last(), 0);

    const auto closed = source->new_run();
    closed->prepare();
    close_result_database(*closed);
    closed->extract();
    QCOMPARE(closed->log_of(application_operation),
             (QStringList{text("starts"), text("Destination_db open --------FAILED------") + closed->database_path(),
                          text("End with failure")}));
    QCOMPARE(closed->log_of(shared_operation),
             (QStringList{text("starts"), text("destination_db open --------FAILED------") + closed->database_path(),
                          text("Error :- unable to open database file")}));
}

// Cancelled while a list is gone through: nothing of its file is stored.
void test_macos_preferences::cancelled_from_another_thread()
{
    QVariantList accounts;
    for (int i = 0; i < 300000; ++i) {
        accounts.append(QStringLiteral("imap://%1/").arg(i));
    }
    source->write(anna, property_list_dictionary{{"AccountOrdering", accounts}, {"PollTime", 5}});

    const auto run = source->new_run();
    run->prepare();
    std::thread host([&run] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        run->plugin().pub_cancel_extraction();
    });
    run->extract();
    host.join();

    QCOMPARE(run->row_count(text("preferences")), 0);
    QCOMPARE(run->log_of(application_operation), QStringList{text("starts")});
}

QTEST_MAIN(test_macos_preferences)
#include "test_macos_preferences.moc"
