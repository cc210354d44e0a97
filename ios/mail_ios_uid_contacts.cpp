// Table contacts: one row an address that was used recently, from the database Recents, and one row a person of the
// address book that has an email address.
#include "core/result_session.h"
#include "core/row_writer.h"
#include "core/source_session.h"
#include "ios/mail_ios_uid.h"
#include "services/plugin_helper_functions.h"

namespace {

// --- Recents ---------------------------------------------------------------------------------------------------------

constexpr failure_text recents_destination_failure{"[extract_mailContact] Destination Db opening ---FAILED--- ", ""};
constexpr failure_text recents_open_failure{"[extract_mailContact]Source Db opening ----FAILED----", "", nullptr, false,
                                            true};

constexpr const char *select_contacts = "select recent_id,display_name,kind,address from contacts";
constexpr failure_text select_contacts_failure{"[extract_mailContact]Select query ---FAILED---", "", "", false};

constexpr const char *insert_contact =
    "insert into contacts(bookmark,recent_id,display_name,kind,address,source_file,artifacts_relation_source_file "
    ",source_count_name, os_scheme_display)values(?,?,?,?,?, ?,?,?,?)";
constexpr failure_text insert_contact_failure{"[extract_mailContact] query_insert execute ---FAILED--- ", "", "",
                                              false};

// --- Address book ----------------------------------------------------------------------------------------------------

constexpr failure_text book_destination_failure{"[extract_mailContact_11] Destination Db opening ---FAILED--- ", ""};
constexpr failure_text book_open_failure{"[extract_mailContact_11]Source Db opening ----FAILED----", "", nullptr, false,
                                         true};

constexpr const char *select_persons =
    "SELECT ABPerson.First,ABPerson.Last,ABPerson.Middle,ABPerson.Nickname,ABPerson.DisplayName,ABPerson.Organization,"
    "ABPerson.ImageURI,ABPerson.JobTitle,ABPerson.CreationDate,ABPerson.ModificationDate,ABPerson.Prefix,"
    "ABPerson.Suffix,ABPerson.Note,ABPerson.Birthday,ABPerson.AlternateBirthday,ABPerson.FirstPhonetic,"
    "ABPerson.MiddlePhonetic,ABPerson.LastPhonetic ,ABPersonFullTextSearch_content.c16phone,"
    "ABPersonFullTextSearch_content.c17email ,ABPersonFullTextSearch_content.c18Address from ABperson "
    ",ABPersonFullTextSearch_content where ((ABPerson.ROWID = ABPersonFullTextSearch_content.docid)AND "
    "(ABPersonFullTextSearch_content.c17Email is NOT NULL))";
constexpr failure_text select_persons_failure{"[extract_mailContact_11]Select query ---FAILED---", "", "", false};

constexpr const char *insert_person =
    "insert into contacts(bookmark,first_name,last_name,middle_name,nickname,display_name,organization,image_URI,"
    "jobtitle,creation_date,modification_date,prefix , suffix, note, birthday,alternate_birthday,first_phonetic, "
    "middle_phonetic,last_phonetic,phone_no,email,address,source_file,artifacts_relation_source_file "
    ",source_count_name, os_scheme_display) values(0,?,?,?,?,  ?,?,?,?,? ,?,?,?,?,? ,?,?,?,?,?,? ,?,?,?,?,?)";
constexpr failure_text insert_person_failure{"[extract_mailContact_11] query_insert execute ---FAILED--- ", "", "",
                                             false};

// The columns of a person's row in the order in which the statement above reads them.
enum class stored_as
{
    text,
    apple_time
};
struct person_column
{
    const char *name;
    stored_as form = stored_as::text;
};
// clang-format off
constexpr person_column person_columns[] = {
    {"first_name"},
    {"last_name"},
    {"middle_name"},
    {"nickname"},
    {"display_name"},
    {"organization"},
    {"image_URI"},
    {"jobtitle"},
    {"creation_date",     stored_as::apple_time},
    {"modification_date", stored_as::apple_time},
    {"prefix"},
    {"suffix"},
    {"note"},
    {"birthday",          stored_as::apple_time},
    {"alternate_birthday"},
    {"first_phonetic"},
    {"middle_phonetic"},
    {"last_phonetic"},
    {"phone_no"},
    {"email"},
    {"address"},
};
// clang-format on

} // namespace

void mail_ios_uid::extract_mailContact()
{
    static constexpr operation_log log{"void mail_ios_uid::extract_mailContact()"};
    log("[extract_mailContact] -Start");
    const QString recents_copy = plugin_helper_obj->get_adhoc_path_for_database(recents_file_QString);
    if (recents_copy.isEmpty()) {
        return;
    }
    result_session destination{log, destination_db_path_QString};
    if (!destination.open(recents_destination_failure)) {
        return;
    }
    source_session recents{log, recents_copy, cancel_extraction_bool};
    if (!recents.open(recents_open_failure)) {
        return;
    }
    source_query contacts{recents, log, select_contacts, select_contacts_failure};
    if (!contacts.execute()) {
        return;
    }
    row_writer rows{*this, destination, log, insert_contact, insert_contact_failure};
    const row_paths paths = paths_of(recents_file_QString, recents_domain_QString);
    const QString source_count_name = plugin_static_function::get_source_count_name();
    while (contacts.next()) {
        if (cancel_extraction_bool) {
            return;
        }
        rows.insert({
            {"bookmark", QStringLiteral("0")},
            {"recent_id", contacts.text("recent_id")},
            {"display_name", contacts.text("display_name")},
            {"kind", contacts.text("kind")},
            {"address", contacts.text("address")},
            {"source_file", paths.source_file},
            {"artifacts_relation_source_file", paths.artifacts_relation_source_file},
            {"source_count_name", source_count_name},
            {"os_scheme_display", os_scheme_display_QString},
        });
    }
    if (contacts.was_cancelled()) {
        return;
    }
    destination.finish();
    log("[extract_mailContact] -End");
}

void mail_ios_uid::extract_mailContact_11()
{
    static constexpr operation_log log{"void mail_ios_uid::extract_mailContact_11()"};
    log("[extract_mailContact_11] -Start");
    const QString book_copy = plugin_helper_obj->get_adhoc_path_for_database(address_book_file_QString);
    if (book_copy.isEmpty()) {
        return;
    }
    result_session destination{log, destination_db_path_QString};
    if (!destination.open(book_destination_failure)) {
        return;
    }
    source_session address_book{log, book_copy, cancel_extraction_bool};
    if (!address_book.open(book_open_failure)) {
        return;
    }
    source_query persons{address_book, log, select_persons, select_persons_failure};
    if (!persons.execute()) {
        return;
    }
    row_writer rows{*this, destination, log, insert_person, insert_person_failure};
    const row_paths paths = paths_of(address_book_file_QString, address_book_domain_QString);
    const QString source_count_name = plugin_static_function::get_source_count_name();
    while (persons.next()) {
        if (cancel_extraction_bool) {
            return;
        }
        row_values row;
        row.reserve(std::size(person_columns) + 4);
        int position = 0;
        for (const person_column &column : person_columns) {
            const QString value = persons.text_at(position++);
            row.push_back({column.name, column.form == stored_as::apple_time
                                            ? plugin_static_function::convert_apple_time_to_epoch(value)
                                            : value});
        }
        row.push_back({"source_file", paths.source_file});
        row.push_back({"artifacts_relation_source_file", paths.artifacts_relation_source_file});
        row.push_back({"source_count_name", source_count_name});
        row.push_back({"os_scheme_display", os_scheme_display_QString});
        rows.insert(row);
    }
    if (persons.was_cancelled()) {
        return;
    }
    destination.finish();
    log("[extract_mailContact_11] -End");
}
