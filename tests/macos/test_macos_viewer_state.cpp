// The settings of the table preferences that describe the state of the main window, with the names that other tables
// give to mailboxes and accounts.
#include "tests/macos/preference_source.h"

using evidence::property_list_dictionary;

namespace {

const QString operation = text("mail_macos::xcode_extract_preferences");

void fill_tables(const host_run &run)
{
    for (const char *rows :
         {"accounts(user_name, account_identifier) values('anna@example.org', 'A1B2'), ('nobody', '')",
          "smart_mailboxes(mailbox_name, mailbox_id) values('Wichtig', 'S1'), (' ', 'S2')",
          "vip_contacts(vip_name, mailbox_uid) values('Ben', 'S2'), ('Cem', 'V1')"}) {
        run_statement(run, text("insert into ") + text(rows));
    }
}

} // namespace

class test_macos_viewer_state : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { source = std::make_unique<preference_source>(application_list); }

    void settings() { source->check_cases("viewer_state.txt", with_silent_defaults, fill_tables); }
    void flags_in_the_order_of_the_list();
    void failed_look_ups();
    void many_favorites();

private:
    QString rows_of(const host_run &run) const { return preference_source::rows_by_user(run).value(text("anna")); }

    std::unique_ptr<preference_source> source;
};

void test_macos_viewer_state::flags_in_the_order_of_the_list()
{
    const property_list_dictionary flags{{"6", text("Grau")}, {"0", text("Rot")}, {"b", text("x")}};
    source->write(with_silent_defaults(property_list_dictionary{{"FlagNames", flags}}));

    const auto run = source->run();

    QCOMPARE(rows_of(*run), text("Flag Names: Position 6: Grau;Position 0: Rot;Position b: x"));
}

void test_macos_viewer_state::failed_look_ups()
{
    source->write(with_silent_defaults(json(R"({
        "AccountOrdering": ["imap://A1B2/", "local://"],
        "DefaultViewerState": {"SelectedMailboxes": ["smartmailbox://S1", "smartmailbox://V1", "imap://A1B2/INBOX"]}})")));

    const auto run = source->new_run();
    run->prepare();
    fill_tables(*run);
    run_statement(*run, text("drop table vip_contacts"));
    run_statement(*run, text("drop table accounts"));
    run->extract();

    QCOMPARE(rows_of(*run), text("Selected Mailbox: Mailbox Name: Wichtig;Mailbox URL: smartmailbox://S1 | Account "
                                 "Display Order: Local Account: On My Mac;Account URL: local://"));
    const QString no_match = text("[xcode_extract_preferences] : no match found ");
    QCOMPARE(run->log_of(operation), (QStringList{text("starts"), text("[xcode_extract_preferences] :2 no match found"),
                                                  no_match, no_match, text("ends")}));
}

// The text so far is decoded behind each entry: that must not take a time that grows with the square of their number.
void test_macos_viewer_state::many_favorites()
{
    constexpr int favorite_count = 50000;
    const std::pair<QString, QString> first_and_others[] = {
        {text("a%20b"), text("a%20b")}, // an escape each
                                        // Escapes within escapes: each decoding takes one off the
                                        // first entry, whose "%" so stays in front of all others.
        {text("%") + text("25").repeated(20000), text("a b")}};
    for (const auto &[first, others] : first_and_others) {
        QVariantList favorites{property_list_dictionary{{"MailboxUidName", first}}};
        while (favorites.size() <= favorite_count) {
            favorites.append(property_list_dictionary{{"MailboxUidName", others}});
        }
        source->write(property_list_dictionary{{"Favorites", favorites}});
        QVERIFY(rows_of(*source->run()).count(text("Mailbox UID Name: a b")) >= favorite_count);
    }
}

QTEST_MAIN(test_macos_viewer_state)
#include "test_macos_viewer_state.moc"
