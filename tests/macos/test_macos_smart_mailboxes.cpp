// The table smart_mailboxes: the vocabulary of the criteria, and whole rows.
#include "tests/macos/configuration_source.h"
#include "tests/support/tree_snapshot.h"

#include <ctime>

using evidence::property_list_dictionary;

namespace {

const QString operation = QStringLiteral("mail_macos::xcode_extract_smartbox");
const QString dates_operation = QStringLiteral("mail_macos::get_dates_from_nsarray");

QVariant compound(const QVariantList &criteria)
{
    return property_list_dictionary{{"Header", text("Compound")}, {"Criteria", criteria}};
}

QVariant mailbox(const char *name, const QVariant &criteria)
{
    return property_list_dictionary{{"MailboxName", text(name)}, {"MailboxCriteria", criteria}};
}

QVariant criterion_of(const QString &stored)
{
    if (!stored.startsWith(QLatin1String("date "))) {
        return dictionary_of(stored);
    }
    const int colon = stored.indexOf(QLatin1Char(':'));
    QVariantList entries;
    for (const QString &entry : stored.mid(colon + 2).split(QStringLiteral(" + "))) {
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
    const auto cases = cases_of("smart_mailbox_criteria.txt");
    for (const auto &[stored, shown] : cases) {
        mailboxes.append(mailbox("", QVariantList{compound({criterion_of(stored)})}));
    }
    source->write("anna", 9, mailboxes);

    const auto run = source->new_run();
    run->run();

    const QStringList rows = run->rows(source->table).split(QStringLiteral("row\n"), Qt::SkipEmptyParts);
    QCOMPARE(rows.size(), cases.size());
    for (int number = 0; number < rows.size(); ++number) {
        const QString shown = rows.at(number).section(QStringLiteral("  conditions = \""), 1);
        QVERIFY2(shown.section(QLatin1Char('"'), 0, 0) == cases.at(number).second,
                 qPrintable(cases.at(number).first + QLatin1String(": ") + shown));
    }
}

void test_macos_smart_mailboxes::rows()
{
    const QVariant no_trash = property_list_dictionary{{"Header", text("NotInTrashMailbox")}};
    const QVariant no_sent = property_list_dictionary{{"Header", text("NotInASpecialMailbox")}};
    const QVariant to_anna = dictionary_of(text("Header=To | Expression=anna"));
    const property_list_dictionary whole{
        {"MailboxAllCriteriaMustBeSatisfied", true},
        {"MailboxID", text("A1")},
        {"MailboxName", text(" Reisen & Pläne ")},
        {"MailboxCriteria",
         QVariantList{no_trash, to_anna, no_sent,
                      compound({dictionary_of(text("Header=From | Expression=ben")),
                                criterion_of(text("date today: Header=DateReceived | Qualifier=IsGreaterThan"))}),
                      compound({to_anna})}}};
    const QVariant dates_of_wrong_kind = property_list_dictionary{
        {"Header", text("Compound")}, {"Criteria", QVariantList{to_anna, text("no dictionary")}}};
    const QVariant wrong_kinds = mailbox(
        "wrong kinds", QVariantList{QVariantList{}, property_list_dictionary{{"Header", text("Compound")}},
                                    compound({1, dates_of_wrong_kind, property_list_dictionary{{"Header", 5}}})});
    source->write("anna", 9,
                  QVariantList{whole, text("no dictionary"), mailbox("no criteria", text("no array")),
                               mailbox("only without trash", QVariantList{no_trash}), wrong_kinds});
    source->write("anna", 3,
                  QVariantList{property_list_dictionary{{"MailboxAllCriteriaMustBeSatisfied", 2},
                                                        {"MailboxID", text("")},
                                                        {"MailboxName", text("of V3")},
                                                        {"MailboxCriteria", QVariantList{}}}});
    const tree_snapshot before(source->folder.path());

    const auto run = source->new_run();
    run->run();

    QCOMPARE(before.changes(), QString());
    const QString difference = source->difference_to("smart_mailboxes.txt", *run);
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
    QStringList lines{QStringLiteral("starts"), QStringLiteral("ends"), QStringLiteral("starts")};
    for (const char *failure :
         {"dictionary blank", "array blank", "dictionary blank", "array2 blank", "dictionary2 blank"}) {
        lines << QString::fromLatin1(failure) << QStringLiteral("end with failure");
    }
    QCOMPARE(run->log_of(operation), lines << QStringLiteral("ends"));
    QCOMPARE(run->log_of(dates_operation), (QStringList{text("[get_dates_from_nsarray] dictionary2 blank"),
                                                        text("[get_dates_from_nsarray] end with failure")}));
    QCOMPARE(run->record_signals.last(), 4);
}

QTEST_MAIN(test_macos_smart_mailboxes)
#include "test_macos_smart_mailboxes.moc"
