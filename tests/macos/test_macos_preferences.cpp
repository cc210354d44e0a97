// The table preferences: every setting of both lists, whole rows, the completion of the table signature, and what
// becomes of lists that are damaged.
#include "tests/macos/preference_source.h"

using evidence::property_list_dictionary;

namespace {

const QString application_operation = text("mail_macos::xcode_extract_preferences");

// Adds a signature with its account and its source file, as the tab of the signatures does.
void add_signature(const host_run &run, const char *uid, const char *account, const char *source_count_name)
{
    run_statement(run, text("insert into signature(signature_uid, related_account_id, is_selected, "
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
        source->check_cases("preferences.txt", with_silent_defaults, [](const host_run &) {});
    }
    void shared_settings()
    {
        const auto as_it_is = [](const QVariant &list) { return list; };
        preference_source(shared_list).check_cases("preferences_shared.txt", as_it_is, [](const host_run &) {});
    }
    void rows();
    void signatures();
    void failed_signatures();
    void huge_keys_and_wrong_kinds();
    void cancelled_from_another_thread();

private:
    std::unique_ptr<preference_source> source;
};

// Both lists of one user: the rows of the one come first, in the order of the settings and not of the keys.
void test_macos_preferences::rows()
{
    source->write(json(R"({"NumberOfMessagesMarkedAsJunk": 3, "OutboxViewerAttributes": {"SortOrder": "to"},
                           "FlagNames": {"0": "Rot"}, "PollTime": 5})"));
    write_list(source->tree.home_of(text("anna")) + text(shared_list),
               json(R"({"DomainForMatching": ["example.org"]})"), evidence::property_list_form::xml);
    const tree_snapshot before(source->folder.path());

    const auto run = source->run();

    QCOMPARE(before.changes(), QString());
    source->compare_rows_with("preferences_rows.txt", *run);
    const QStringList lines = texts({"starts", "ends"});
    QCOMPARE(run->log_of(application_operation), lines);
    QCOMPARE(run->log_of(text("mail_macos::xcode_extract_composing_addressing_prefs")), lines);
    QCOMPARE(run->record_signals.last(), 10);
}

void test_macos_preferences::signatures()
{
    source->write(json(R"({
        "SignaturesSelected": {"A1": " S1 ", "A2": "S1", "A3": 1, "A4": "unknown", "A5": "x' or '1'='1"},
        "SignatureSelectionMethods": {"A1": "Randomize", "A2": "Sequential", "A3": "AlwaysTheSame",
                                      "x' or '1'='1": "Randomize"}})"));

    const auto run = source->new_run();
    run->prepare();
    add_signature(*run, "S1", "A1", "Source1");
    add_signature(*run, "S2", "A2", "Source1");
    add_signature(*run, "S3", "A3", "Source1");
    add_signature(*run, "S4", "A4", "Source1");
    add_signature(*run, "S1", "A1", "Source2");
    add_signature(*run, "", "", "Source1");
    run->extract();

    compare_with("preferences_signatures.txt", run->rows(text("signature")));
}

void test_macos_preferences::failed_signatures()
{
    source->write(json(R"({"SignaturesSelected": {"A1": "S1"}, "SignatureSelectionMethods": {"A1": "Randomize"}})"));

    const auto refusing = source->new_run();
    refusing->prepare();
    add_signature(*refusing, "S1", "A1", "Source1");
    run_statement(*refusing, text("create trigger refuse before update on signature begin select raise(abort, 'no'); "
                                  "end"));
    refusing->extract();
    constexpr const char *update_failure = "[xcode_extract_preferences] update query --------FAILED------";
    constexpr const char *update_method = "update signature set signature_selection_method = ? where "
                                          "related_account_id = ? AND source_count_name = ?";
    QCOMPARE(refusing->log_of(application_operation),
             texts({"starts", update_failure,
                    "update signature set is_selected = ?, source_file = ? where signature_uid = ? AND "
                    "source_count_name = ?",
                    update_failure, update_method, "ends"}));
    QCOMPARE(refusing->row_count(text("preferences")), 4);

    const auto missing = source->new_run();
    missing->prepare();
    run_statement(*missing, text("drop table signature"));
    missing->extract();
    QCOMPARE(missing->log_of(application_operation),
             texts({"starts", "[xcode_extract_preferences] select query --------FAILED------",
                    "select source_file from signature where signature_uid =  ? AND source_count_name = ?",
                    update_failure, update_method, "ends"}));
    QCOMPARE(missing->row_count(text("preferences")), 4);
}

void test_macos_preferences::huge_keys_and_wrong_kinds()
{
    const QString huge(1 << 20, QLatin1Char('k'));
    const property_list_dictionary flags{{huge, text("Rot")}};
    source->write(property_list_dictionary{{huge, 1},
                                           {"FlagNames", flags},
                                           {"SignaturesSelected", flags},
                                           {"SignatureSelectionMethods", QVariantList{flags}},
                                           {"AccountOrdering", QVariantList{flags, 1, QVariantList{}}},
                                           {"Favorites", QVariantList{QVariantList{flags}, huge}},
                                           {"CustomHeaders", flags}});

    const auto run = source->run();

    QCOMPARE(source->column(*run, "key"),
             texts({"Quote the text of original message", "Show most recent message at the top",
                    "Trust Junk mail headers in messages", "Filter junk mail before applying my rules", "Flag Names"}));
    QCOMPARE(run->log_of(application_operation), texts({"starts", "ends"}));
}

// Cancelled while a list is gone through: nothing of its file is stored.
void test_macos_preferences::cancelled_from_another_thread()
{
    QVariantList accounts;
    for (int i = 0; i < 300000; ++i) {
        accounts.append(text("imap://%1/").arg(i));
    }
    source->write(property_list_dictionary{{"AccountOrdering", accounts}, {"PollTime", 5}});

    const auto run = source->new_run();
    run->prepare();
    extract_and_cancel(*run, 20);

    QCOMPARE(run->row_count(text("preferences")), 0);
    QCOMPARE(run->log_of(application_operation), QStringList{text("starts")});
}

QTEST_MAIN(test_macos_preferences)
#include "test_macos_preferences.moc"
