// Table contacts: one row a record of the table "Contact" in store.vol that is marked as one.
#include "windows/contacts.h"
#include "windows/mail_winos.h"
#include "windows/store_table.h"

void mail_winos::extract_contacts()
{
    static constexpr operation_log log{"void mail_winos::extract_contacts()"};
    static constexpr store_writer writer{
        "[extract_contacts]---STARTS---",
        "[extract_contacts]---ENDS---",
        {"[extract_contacts]Destination Db opening  ------FAILED----- ", ""},
        "insert into contacts(bookmark,system_user,domain_user,display_name,first_name,last_name,email,phone_no,"
        "address,work_phone,work_info,source_file ,source_count_name, os_scheme_display)"
        "values(0,?,?,?,?,?,?,?,?,?,?,?,?,?)",
        {"[]Insert Query ---FAILED---- in contacts Table ", "", "", false}};
    contacts_table = std::make_unique<contacts>();
    write_store_rows(log, writer, [this](const QString &file, const row_source &shared, row_writer &rows) {
        for (const specific_table::struct_contacts &contact :
             records_of(file, "Contact", *contacts_table, &specific_table::struct_contacts_QList)) {
            if (cancel_extraction_bool) {
                return;
            }
            if (contact.row_flag_QString != QLatin1String("true")) {
                continue;
            }
            const QLatin1Char blank(' ');
            row_values row{
                {"system_user", shared.system_user},
                {"domain_user", shared.domain_user},
                {"display_name", contact.display_name_QString},
                {"first_name", contact.first_name_QString},
                {"last_name", contact.last_name_QString},
                {"email", QLatin1String("") + contact.email_first_QString + contact.email_second_QString},
                {"phone_no", contact.phone_no_QString},
                {"address", contact.address_first_QString + blank + contact.address_second_QString + blank +
                                contact.address_third_QString},
                {"work_phone", contact.work_phone_QString},
                {"work_info", contact.work_info_QString},
            };
            append_source_columns(row, shared);
            rows.insert(row);
        }
    });
    contacts_table.reset();
}
