// The table rules: the vocabulary of the criteria, whole rows, and a run that is cancelled.
#include "tests/macos/configuration_source.h"
#include "tests/support/tree_snapshot.h"

#include <thread>

using evidence::property_list_dictionary;
using evidence::property_list_form;

namespace {

const QString operation = QStringLiteral("mail_macos::xcode_extract_syncedrule");

QVariant rule_of(const QVariant &criteria)
{
    return property_list_dictionary{{"Criteria", criteria}};
}

// A rule with a value under each key.
property_list_dictionary whole_rule()
{
    return {{"AllCriteriaMustBeSatisfied", 1},
            {"CopyToMailbox", text(" ~/Kopien%20alt ")},
            {"CopyToMailboxURL", text("file:///Users/~/Kopien%C3%B6")},
            {"Deletes", text("YES")},
            {"FlagColor", 6},
            {"HighlightTextUsingColor", text("NO")},
            {"Mailbox", text("%7E/Notes~")},
            {"MailboxURL", text("~imap://anna%40example.org@imap.example.org/INBOX")},
            {"MarkFlagged", text("YES")},
            {"MarkRead", text("NO")},
            {"ResponseMessage", text("Bin%20im Urlaub, 100% sicher")},
            {"RuleId", text("F1D2")},
            {"RuleName", text("Von%20Öztürk%00 and no more")},
            {"SendNotification", text("YES")},
            {"ShouldCopyMessage", text("NO")},
            {"ShouldTransferMessage", text("YES")},
            {"Sound", text("~/Library/Sounds/Glas.aiff")},
            {"StopEvaluatingRules", text("NO")},
            {"ForwardRecipients", QStringList{text("Ben <ben@example.org>"), text(" cem%3Bdora@example.org ")}},
            {"RedirectRecipients", QStringList{text("%3Canna@example.org%3E")}},
            {"Criteria", QVariantList{dictionary_of(text("Header=From | Qualifier=EndsWith | Expression=example.org")),
                                      dictionary_of(text("Header=Body | Expression=<b>"))}},
            {"NotifyUser", text("YES")},
            {"Color", text("1 2 3")},
            {"TimeStamp", 1}};
}

// The same keys with values of kinds that none of them holds.
property_list_dictionary rule_of_wrong_kinds()
{
    property_list_dictionary rule;
    for (const evidence::property_list_entry &entry : whole_rule()) {
        rule.append({entry.key, property_list_dictionary{{"a", 1}}});
    }
    return rule;
}

} // namespace

class test_macos_rules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { source = std::make_unique<configuration_source>("rules", "SyncedRules.plist"); }

    void criteria();
    void rows();
    void home_folder();
    void a_rule_too_large_for_a_row();
    void cancelled_from_another_thread();

private:
    std::unique_ptr<configuration_source> source;
};

void test_macos_rules::criteria()
{
    QVariantList rules;
    QStringList expected;
    for (const auto &[stored, shown] : cases_of("rule_criteria.txt")) {
        rules.append(rule_of(QVariantList{dictionary_of(stored)}));
        expected.append(shown);
    }
    source->write("anna", 9, rules);

    const auto run = source->new_run();
    run->run();

    QCOMPARE(source->column(*run, "conditions"), expected);
}

void test_macos_rules::rows()
{
    const QVariant empty = property_list_dictionary{};
    const QVariant to = dictionary_of(text("Header=To"));
    source->write("anna", 3, QVariantList{whole_rule()}, property_list_form::xml);
    source->write(
        "anna", 9,
        QVariantList{text("no dictionary"), empty, QVariantList{empty},
                     property_list_dictionary{{"AllCriteriaMustBeSatisfied", text("YES")},
                                              {"FlagColor", 7},
                                              {"RuleName", text(" ")},
                                              {"ForwardRecipients", QVariantList{}},
                                              {"RedirectRecipients", QVariantList{1, text("a"), empty}},
                                              {"Criteria", QVariantList{}}},
                     property_list_dictionary{{"AllCriteriaMustBeSatisfied", false},
                                              {"FlagColor", -0.9},
                                              {"Criteria", QVariantList{empty, to, text("no dictionary"), empty, to}}},
                     rule_of_wrong_kinds()});
    source->write("ben", 4, QVariantList{rule_of(QVariantList{empty})});
    source->write("ben", 5, QVariantList{});
    const tree_snapshot before(source->folder.path());

    const auto run = source->new_run();
    run->run();

    QCOMPARE(before.changes(), QString());
    const QString difference = source->difference_to("rules.txt", *run);
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
    const QStringList lines{text("starts"), text("ends")};
    QCOMPARE(run->log_of(operation), lines + lines + lines + lines);
    QCOMPARE(run->record_signals.last(), 6);
}

void test_macos_rules::home_folder()
{
    source->write("anna", 6, QVariantList{rule_of(1)});

    const auto run = source->new_run();
    run->source_type = QStringLiteral("macOS_Home_Directory");
    run->run();

    QCOMPARE(source->column(*run, "source_file"), QStringList{text("/Library/Mail/V6/MailData/SyncedRules.plist")});
    QCOMPARE(source->column(*run, "artifacts_relation_source_file"),
             QStringList{text("/Users/anna/Library/Mail/V6/MailData/SyncedRules.plist")});
}

void test_macos_rules::a_rule_too_large_for_a_row()
{
    const QString longer_when_shown = text("Body").repeated(250000); // "Message Content" for each
    QVariantList criteria;
    for (int i = 0; i < 6; ++i) {
        criteria.append(property_list_dictionary{{"Header", longer_when_shown}});
    }
    source->write("anna", 9, QVariantList{rule_of(criteria), whole_rule()});

    const auto run = source->new_run();
    run->run();

    const QStringList conditions = source->column(*run, "conditions");
    QCOMPARE(conditions.size(), 2);
    QCOMPARE(conditions.first().size(), 4 * (8 + 250000 * 15 + 2) - 2);
    QVERIFY(run->log_of(operation).contains(
        text("list longer than 16 million characters -----FAILED-----, the rest is left out")));
}

void test_macos_rules::cancelled_from_another_thread()
{
    constexpr int rule_count = 20000;
    QVariantList rules;
    for (int i = 0; i < rule_count; ++i) {
        rules.append(whole_rule());
    }
    source->write("anna", 9, rules);

    const auto run = source->new_run();
    run->prepare();
    std::thread host([&run] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        run->plugin().pub_cancel_extraction();
    });
    run->extract();
    host.join();

    const int rows = run->row_count(source->table);
    QVERIFY2(rows < rule_count, qPrintable(QString::number(rows)));
    QCOMPARE(run->record_signals.last(), rows);
    QVERIFY(!run->log_of(operation).contains(text("ends")));
}

QTEST_MAIN(test_macos_rules)
#include "test_macos_rules.moc"
