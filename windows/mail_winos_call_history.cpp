// Table call_history: one row a record of the table "CallHistory" in store.vol.
#include "windows/call_history.h"
#include "windows/mail_winos.h"
#include "windows/store_table.h"

void mail_winos::extract_call_history()
{
    static constexpr operation_log log{"void mail_winos::extract_call_history()"};
    static constexpr store_writer writer{
        "[extract_call_history]---STARTS---",
        "[extract_call_history]---ENDS---",
        {"[extract_contacts]Destination Db opening  ------FAILED----- ", ""},
        "insert into call_history(bookmark,system_user,domain_user,start_timestamp,end_timestamp,arrival_timestamp,"
        "application_install_timestamp,caller_location,resolved_name,resolved_number,source_file ,source_count_name,"
        "os_scheme_display) values(0,?,?,?,?,?,?,?,?,?,?,?,?)",
        {"[extract_call_history]Insert Query ---FAILED---", "", "", false}};
    call_history_table = std::make_unique<call_history>();
    write_store_rows(log, writer, [this](const QString &file, const row_source &shared, row_writer &rows) {
        for (const specific_table::struct_call_history &call :
             records_of(file, "CallHistory", *call_history_table, &specific_table::struct_call_history_QList)) {
            if (cancel_extraction_bool) {
                return;
            }
            row_values row{
                {"system_user", shared.system_user},
                {"domain_user", shared.domain_user},
                {"start_timestamp", epoch_text_of(call.start_time_QString)},
                {"end_timestamp", epoch_text_of(call.end_time_QString)},
                {"arrival_timestamp", epoch_text_of(call.arrival_time_QString)},
                {"application_install_timestamp", epoch_text_of(call.application_install_time_QString)},
                {"caller_location", call.caller_location_QString},
                {"resolved_name", call.resolved_name_QString},
                {"resolved_number", call.resolved_number_QString},
            };
            append_source_columns(row, shared);
            rows.insert(row);
        }
    });
    call_history_table.reset();
}
