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

row_values contact_of(const source_query &contact)
{
    return {
        {"bookmark", QStringLiteral("0")}, {"recent_id", contact.text_at(0)}, {"display_name", contact.text_at(1)},
        {"kind", contact.text_at(2)},      {"address", contact.text_at(3)},
    };
}

row_values person_of(const source_query &person)
{
    row_values values;
    int position = 0;
    for (const person_column &column : person_columns) {
        const QString value = person.text_at(position++);
        values.push_back({column.name, column.form == stored_as::apple_time
                                           ? plugin_static_function::convert_apple_time_to_epoch(value)
                                           : value});
    }
    return values;
}

} // namespace

// What the readers of the two databases differ in.
struct mail_ios_uid::contacts_database
{
    operation_log log;
    const char *start_line;
    const char *end_line;
    QString mail_ios_uid::*file;
    QString mail_ios_uid::*domain_path;
    const failure_text &destination_failure;
    const failure_text &open_failure;
    const char *select;
    const char *row_id; // in the statement
    const failure_text &select_failure;
    const char *insert;
    const failure_text &insert_failure;
    row_values (*values_of)(const source_query &row);
};

void mail_ios_uid::extract_mailContact()
{
    static constexpr contacts_database recents{operation_log{"void mail_ios_uid::extract_mailContact()"},
                                               "[extract_mailContact] -Start",
                                               "[extract_mailContact] -End",
                                               &mail_ios_uid::recents_file_QString,
                                               &mail_ios_uid::recents_domain_QString,
                                               recents_destination_failure,
                                               recents_open_failure,
                                               select_contacts,
                                               "ROWID",
                                               select_contacts_failure,
                                               insert_contact,
                                               insert_contact_failure,
                                               contact_of};
    extract_contacts(recents);
}

void mail_ios_uid::extract_mailContact_11()
{
    static constexpr contacts_database address_book{operation_log{"void mail_ios_uid::extract_mailContact_11()"},
                                                    "[extract_mailContact_11] -Start",
                                                    "[extract_mailContact_11] -End",
                                                    &mail_ios_uid::address_book_file_QString,
                                                    &mail_ios_uid::address_book_domain_QString,
                                                    book_destination_failure,
                                                    book_open_failure,
                                                    select_persons,
                                                    "ABPerson.ROWID",
                                                    select_persons_failure,
                                                    insert_person,
                                                    insert_person_failure,
                                                    person_of};
    extract_contacts(address_book);
}

void mail_ios_uid::extract_contacts(const contacts_database &kind)
{
    const operation_log &log = kind.log;
    log(kind.start_line);
    const QString copy = plugin_helper_obj->get_adhoc_path_for_database(this->*kind.file);
    if (copy.isEmpty()) {
        return;
    }
    result_session destination{log, destination_db_path_QString};
    if (!destination.open(kind.destination_failure)) {
        return;
    }
    source_session source{log, copy, cancel_extraction_bool};
    if (!source.open(kind.open_failure)) {
        return;
    }
    source_query contacts{source, log, kind.select, kind.select_failure};
    contacts.leave_out_large_values(kind.row_id);
    if (!contacts.execute()) {
        return;
    }
    row_writer rows{*this, destination, log, kind.insert, kind.insert_failure};
    const row_paths paths = paths_of(this->*kind.file, this->*kind.domain_path);
    const QString source_count_name = plugin_static_function::get_source_count_name();
    while (contacts.next()) {
        if (cancel_extraction_bool) {
            return;
        }
        row_values row = kind.values_of(contacts);
        row.push_back({"source_file", paths.source_file});
        row.push_back({"artifacts_relation_source_file", paths.artifacts_relation_source_file});
        row.push_back({"source_count_name", source_count_name});
        row.push_back({"os_scheme_display", os_scheme_display_QString});
        rows.insert(row);
    }
    if (contacts.was_cancelled()) {
        return;
    }
    destination.finish();
    log(kind.end_line);
}
