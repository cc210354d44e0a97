// The table vip_contacts: the lists of both layouts, and large ones.
#include "tests/macos/configuration_source.h"

using evidence::property_list_dictionary;
using evidence::property_list_form;

namespace {

const QString earlier_operation = text("mail_macos::xcode_extract_vip_list");
const QString later_operation = text("mail_macos::xcode_extract_vip_list_15");

QVariant senders(const property_list_dictionary &vips)
{
    return property_list_dictionary{{"Senders", vips}, {"Version", 1}};
}

property_list_dictionary vip_of(const char *name)
{
    return {{"Name", text(name)}};
}

} // namespace

class test_macos_vip : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { source = std::make_unique<configuration_source>("vip_contacts", "VIPs.plist"); }

    void rows();
    void sort_orders();
    void large_lists();

private:
    std::unique_ptr<configuration_source> source;
};

void test_macos_vip::rows()
{
    const QVariant nothing = property_list_dictionary{};
    source->write(
        "anna", 3,
        senders({{"Z9", json(R"({"Addresses": [" ben@example.org ", "ben@work.org"], "MailboxUnreadCount": 0,
                                 "Name": " Ben Öztürk ",
                                 "UserInfo": {"MailboxID": " M:1 ", "SortOrder": "received-date",
                                              "SortedDescending": "YES"}})")},
                 {"no dictionary", text("x")},
                 {"A1", json(R"({"Addresses": [], "MailboxUnreadCount": 12.9, "Name": " ",
                                 "UserInfo": {"MailboxID": "  ", "SortOrder": 5, "SortedDescending": true}})")},
                 {" ", json(R"({"Addresses": "a@b", "MailboxUnreadCount": "3", "Name": [], "UserInfo": "M:2"})")},
                 {"E5", nothing}}),
        property_list_form::xml);
    source->write("anna", 6, senders({{"K6", vip_of("of V6")}}));
    source->write("ben", 7,
                  property_list_dictionary{
                      {"Z9", json(R"({"Name": " Cem ", "EmailAddresses": [" cem@example.org", 5, "cem@work.org"]})")},
                      {"Senders", vip_of("named Senders")},
                      {"no dictionary", json("[{}]")},
                      {"empty ends", json(R"({"EmailAddresses": ["", "a", ""]})")},
                      {"wrong kinds", json(R"({"Name": 1, "EmailAddresses": "a@b"})")},
                      {"none", json(R"({"EmailAddresses": []})")}});
    source->write("ben", 9, nothing);
    source->write("ben", 4, property_list_dictionary{{"Senders", nothing}});
    source->write("ben", 5, property_list_dictionary{{"Senders", QVariantList{nothing}}});
    const tree_snapshot before(source->folder.path());

    const auto run = source->run();

    QCOMPARE(before.changes(), QString());
    source->compare_rows_with("vip_contacts.txt", *run);
    const QStringList lines = texts({"starts", "ends"});
    QCOMPARE(run->log_of(earlier_operation), lines + lines + lines + lines);
    QCOMPARE(run->log_of(later_operation), lines + lines);
    QCOMPARE(run->record_signals.last(), 10);
}

void test_macos_vip::sort_orders()
{
    property_list_dictionary vips;
    QStringList expected;
    for (const auto &[stored, shown] : cases_of("vip_sort_orders.txt")) {
        vips.append({QString::number(expected.size()),
                     property_list_dictionary{{"UserInfo", property_list_dictionary{{"SortOrder", stored}}}}});
        expected.append(shown);
    }
    source->write("anna", 6, senders(vips));

    const auto run = source->run();

    QCOMPARE(source->column(*run, "sort_order"), expected);
}

// A look-up of each key by itself would take minutes; keys and values of a megabyte are stored whole.
void test_macos_vip::large_lists()
{
    constexpr int vip_count = 100000;
    constexpr int megabyte = 1 << 20;
    property_list_dictionary vips;
    for (int i = 0; i < vip_count; ++i) {
        vips.append({QString::number(i), vip_of("many")});
    }
    source->write("anna", 9, vips);
    const QString long_text(megabyte, QLatin1Char('k'));
    source->write("ben", 6, senders({{long_text, property_list_dictionary{{"Name", long_text}}}}));

    const auto run = source->new_run();
    run->prepare();
    QElapsedTimer clock;
    clock.start();
    run->extract();

    QVERIFY2(clock.elapsed() < 20000, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(run->row_count(source->table), vip_count + 1);
    QCOMPARE(source->column(*run, "mailbox_uid"), QStringList{long_text});
}

QTEST_MAIN(test_macos_vip)
#include "test_macos_vip.moc"
