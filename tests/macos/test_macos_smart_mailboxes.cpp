// The table smart_mailboxes: the vocabulary of the criteria, and whole rows.
#include "tests/macos/configuration_source.h"

#include <ctime>

using evidence::property_list_dictionary;

namespace {

const QString operation = text("mail_macos::xcode_extract_smartbox");
const QString dates_operation = text("mail_macos::get_dates_from_nsarray");

// A smart mailbox with one criterion.
QVariant mailbox(const QVariant &criterion)
{
    const QVariant compound =
        property_list_dictionary{{"Header", text("Compound")}, {"Criteria", QVariantList{criterion}}};
    return property_list_dictionary{{"MailboxName", text("")}, {"MailboxCriteria", QVariantList{compound}}};
}

QVariant criterion_of(const QString &stored)
{
    if (!stored.startsWith(QLatin1String("date "))) {
        return dictionary_of(stored);
    }
    const int colon = stored.indexOf(QLatin1Char(':'));
    QVariantList entries;
    for (const QString &entry : stored.mid(colon + 2).split(text(" + "))) {
        entries.append(dictionary_of(entry));
    }
    return property_list_dictionary{
        {"Header", text("Compound")}, {"Name", stored.mid(5, colon - 5)}, {"Criteria", entries}};
}

} // namespace

class test_macos_smart_mailboxes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("TZ", "Asia/Kolkata");
        tzset();
    }
    void init() { source = std::make_unique<configuration_source>("smart_mailboxes", "SyncedSmartMailboxes.plist"); }

    void criteria();
    void rows();

private:
    std::unique_ptr<configuration_source> source;
};

void test_macos_smart_mailboxes::criteria()
{
    QVariantList mailboxes;
    QStringList expected;
    for (const auto &[stored, shown] : cases_of("smart_mailbox_criteria.txt")) {
        mailboxes.append(mailbox(criterion_of(stored)));
        expected.append(shown);
    }
    source->write("anna", 9, mailboxes);

    const auto run = source->run();

    QCOMPARE(source->column(*run, "conditions"), expected);
}

void test_macos_smart_mailboxes::rows()
{
    source->write("anna", 9, json(R"([
        {"MailboxAllCriteriaMustBeSatisfied": true, "MailboxID": "A1", "MailboxName": " Reisen & Pläne ",
         "MailboxCriteria": [
             {"Header": "NotInTrashMailbox"}, {"Header": "To", "Expression": "anna"}, {"Header": "NotInASpecialMailbox"},
             {"Header": "Compound", "Criteria": [
                 {"Header": "From", "Expression": "ben"},
                 {"Header": "Compound", "Name": "today",
                  "Criteria": [{"Header": "DateReceived", "Qualifier": "IsGreaterThan"}]}]},
             {"Header": "Compound", "Criteria": [{"Header": "To", "Expression": "anna"}]}]},
        "no dictionary",
        {"MailboxName": "no criteria", "MailboxCriteria": "no array"},
        {"MailboxName": "only without trash", "MailboxCriteria": [{"Header": "NotInTrashMailbox"}]},
        {"MailboxName": "wrong kinds", "MailboxCriteria": [
            [],
            {"Header": "Compound"},
            {"Header": "Compound", "Criteria": [
                1,
                {"Header": "Compound", "Criteria": [{"Header": "To", "Expression": "anna"}, "no dictionary"]},
                {"Header": 5}]}]}])"));
    source->write("anna", 3, json(R"([{"MailboxAllCriteriaMustBeSatisfied": 2, "MailboxID": "", "MailboxName": "of V3",
                                       "MailboxCriteria": []}])"));
    const tree_snapshot before(source->folder.path());

    const auto run = source->run();

    QCOMPARE(before.changes(), QString());
    source->compare_rows_with("smart_mailboxes.txt", *run);
    const auto failure = [](const char *line) { return texts({line, "end with failure"}); };
    QCOMPARE(run->log_of(operation), texts({"starts", "ends", "starts"}) + failure("dictionary blank") +
                                         failure("array blank") + failure("dictionary blank") +
                                         failure("array2 blank") + failure("dictionary2 blank") + texts({"ends"}));
    QCOMPARE(run->log_of(dates_operation),
             texts({"[get_dates_from_nsarray] dictionary2 blank", "[get_dates_from_nsarray] end with failure"}));
    QCOMPARE(run->record_signals.last(), 4);
}

QTEST_MAIN(test_macos_smart_mailboxes)
#include "test_macos_smart_mailboxes.moc"
