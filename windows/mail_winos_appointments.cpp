// Table appointments: one row a record of the table "Appointment" in store.vol.
#include "windows/appointments.h"
#include "windows/mail_winos.h"
#include "windows/store_table.h"

void mail_winos::extract_appointments()
{
    static constexpr operation_log log{"void mail_winos::extract_appointments()"};
    static constexpr store_writer writer{
        "[extract_appointments]---STARTS---",
        "[extract_appointments]---ENDS---",
        {"[extract_appointments]Destination Db opening -----FAILED-------- ", ""},
        "INSERT INTO appointments(bookmark,system_user,domain_user,name,account,location,timezone,snooze,timestamp,"
        "source_file ,source_count_name, os_scheme_display) VALUES(0,?,?,?,?,?,?,?,?,?,?,?)",
        {"[extract_appointments]---Insert Query ---FAILED---- in Table appointments ", "", "", false}};
    appointments_table = std::make_unique<appointments>();
    write_store_rows(log, writer, [this](const QString &file, const row_source &shared, row_writer &rows) {
        for (const specific_table::struct_appointments &appointment :
             records_of(file, "Appointment", *appointments_table, &specific_table::struct_appointments_QList)) {
            if (cancel_extraction_bool) {
                return;
            }
            row_values row{
                {"system_user", shared.system_user},        {"domain_user", shared.domain_user},
                {"name", appointment.name_QString},         {"account", appointment.account_QString},
                {"location", appointment.location_QString}, {"timezone", appointment.timezone_QString},
                {"snooze", appointment.snooze_QString},     {"timestamp", epoch_text_of(appointment.timestamp_QString)},
            };
            append_source_columns(row, shared);
            rows.insert(row);
        }
    });
    appointments_table.reset();
}
