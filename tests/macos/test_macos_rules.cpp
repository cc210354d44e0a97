// The table rules: the vocabulary of the criteria, whole rows, and a run that is cancelled.
#include "tests/macos/configuration_source.h"

using evidence::property_list_dictionary;
using evidence::property_list_form;

namespace {

const QString operation = text("mail_macos::xcode_extract_syncedrule");

QVariant rule_of(const QVariant &criteria)
{
    return property_list_dictionary{{"Criteria", criteria}};
}

} // namespace

class test_macos_rules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { source = std::make_unique<configuration_source>("rules", "SyncedRules.plist"); }

    void criteria();
    void rows();
    void a_rule_too_large_for_a_row();
    void cancelled_from_another_thread();

private:
    static property_list_dictionary whole_rule();
    static property_list_dictionary rule_of_wrong_kinds();

    std::unique_ptr<configuration_source> source;
};

// A rule with a value under each key.
property_list_dictionary test_macos_rules::whole_rule()
{
    return json(R"({
        "AllCriteriaMustBeSatisfied": 1, "CopyToMailbox": " ~/Kopien%20alt ",
        "CopyToMailboxURL": "file:///Users/~/Kopien%C3%B6", "Deletes": "YES", "FlagColor": 6,
        "HighlightTextUsingColor": "NO", "Mailbox": "%7E/Notes~",
        "MailboxURL": "~imap://anna%40example.org@imap.example.org/INBOX", "MarkFlagged": "YES", "MarkRead": "NO",
        "ResponseMessage": "Bin%20im Urlaub, 100% sicher", "RuleId": "F1D2",
        "RuleName": "Von%20Öztürk%00 and no more", "SendNotification": "YES", "ShouldCopyMessage": "NO",
        "ShouldTransferMessage": "YES", "Sound": "~/Library/Sounds/Glas.aiff", "StopEvaluatingRules": "NO",
        "ForwardRecipients": ["Ben <ben@example.org>", " cem%3Bdora@example.org "],
        "RedirectRecipients": ["%3Canna@example.org%3E"],
        "Criteria": [{"Header": "From", "Qualifier": "EndsWith", "Expression": "example.org"},
                     {"Header": "Body", "Expression": "<b>"}],
        "NotifyUser": "YES", "Color": "1 2 3", "TimeStamp": 1})")
        .value<property_list_dictionary>();
}

// The same keys with values of kinds that none of them holds.
property_list_dictionary test_macos_rules::rule_of_wrong_kinds()
{
    property_list_dictionary rule;
    for (const evidence::property_list_entry &entry : whole_rule()) {
        rule.append({entry.key, property_list_dictionary{{"a", 1}}});
    }
    return rule;
}

void test_macos_rules::criteria()
{
    QVariantList rules;
    QStringList expected;
    for (const auto &[stored, shown] : cases_of("rule_criteria.txt")) {
        rules.append(rule_of(QVariantList{dictionary_of(stored)}));
        expected.append(shown);
    }
    source->write("anna", 9, rules);

    const auto run = source->run();

    QCOMPARE(source->column(*run, "conditions"), expected);
}

void test_macos_rules::rows()
{
    source->write("anna", 3, QVariantList{whole_rule()}, property_list_form::xml);
    QVariantList odd_rules = json(R"(["no dictionary", {}, [{}],
        {"AllCriteriaMustBeSatisfied": "YES", "FlagColor": 7, "RuleName": " ", "ForwardRecipients": [],
         "RedirectRecipients": [1, "a", {}], "Criteria": []},
        {"AllCriteriaMustBeSatisfied": false, "FlagColor": -0.9,
         "Criteria": [{}, {"Header": "To"}, "no dictionary", {}, {"Header": "To"}]}])")
                                 .toList();
    odd_rules.append(rule_of_wrong_kinds());
    source->write("anna", 9, odd_rules);
    source->write("ben", 4, json(R"([{"Criteria": [{}]}])"));
    source->write("ben", 5, QVariantList{});
    const tree_snapshot before(source->folder.path());

    const auto run = source->run();

    QCOMPARE(before.changes(), QString());
    source->compare_rows_with("rules.txt", *run);
    const QStringList lines = texts({"starts", "ends"});
    QCOMPARE(run->log_of(operation), lines + lines + lines + lines);
    QCOMPARE(run->record_signals.last(), 6);
}

void test_macos_rules::a_rule_too_large_for_a_row()
{
    const QString longer_when_shown = text("Body").repeated(250000); // "Message Content" for each
    QVariantList criteria;
    for (int i = 0; i < 6; ++i) {
        criteria.append(property_list_dictionary{{"Header", longer_when_shown}});
    }
    source->write("anna", 9, QVariantList{rule_of(criteria), whole_rule()});

    const auto run = source->run();

    const QStringList conditions = source->column(*run, "conditions");
    QCOMPARE(conditions.size(), 2);
    QCOMPARE(conditions.first().size(), 4 * (8 + 250000 * 15 + 2) - 2);
    QVERIFY(run->log_of(operation).contains(
        text("list longer than 16 million characters -----FAILED-----, the rest is left out")));
}

void test_macos_rules::cancelled_from_another_thread()
{
    constexpr int rule_count = 20000;
    source->write("anna", 9, QVector<QVariant>(rule_count, whole_rule()).toList());

    const auto run = source->new_run();
    run->prepare();
    extract_and_cancel(*run, 100);

    const int rows = run->row_count(source->table);
    QVERIFY2(rows < rule_count, qPrintable(QString::number(rows)));
    QCOMPARE(run->record_signals.last(), rows);
    QVERIFY(!run->log_of(operation).contains(text("ends")));
}

QTEST_MAIN(test_macos_rules)
#include "test_macos_rules.moc"
