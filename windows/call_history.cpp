#include "windows/call_history.h"

// clang-format off
constexpr specific_table::column_field<specific_table::struct_call_history> call_history::columns[7] = {
    {"StartTime",              &struct_call_history::start_time_QString},
    {"EndTime",                &struct_call_history::end_time_QString},
    {"ArrivalTime",            &struct_call_history::arrival_time_QString},
    {"ApplicationInstallTime", &struct_call_history::application_install_time_QString},
    {"CallerLocation",         &struct_call_history::caller_location_QString},
    {"ResolvedName",           &struct_call_history::resolved_name_QString},
    {"ResolvedNumber",         &struct_call_history::resolved_number_QString},
};
// clang-format on

void call_history::get_record_values(libesedb_record_t *record, libesedb_error_t *error, QString column_name,
                                     int value_entry, unsigned int column_type)
{
    take_value(record, error, column_name, value_entry, column_type, columns, current_struct_call_history);
}

void call_history::get_column_name_and_type(libesedb_record_t *record, libesedb_error_t *error)
{
    read_record(record, error, columns, current_struct_call_history, struct_call_history_QList);
}
