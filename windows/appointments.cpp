#include "windows/appointments.h"

// clang-format off
constexpr specific_table::column_field<specific_table::struct_appointments> appointments::columns[6] = {
    {"0020001f", &struct_appointments::name_QString},
    {"0041001f", &struct_appointments::location_QString},
    {"004a001f", &struct_appointments::timezone_QString},
    {"00460013", &struct_appointments::snooze_QString},
    {"10420040", &struct_appointments::timestamp_QString},
    {"0055001f", &struct_appointments::account_QString},
};
// clang-format on

void appointments::get_record_values(libesedb_record_t *record, libesedb_error_t *error, QString column_name,
                                     int value_entry, unsigned int column_type)
{
    take_value(record, error, column_name, value_entry, column_type, columns, current_struct_appointments);
}

void appointments::get_column_name_and_type(libesedb_record_t *record, libesedb_error_t *error)
{
    read_record(record, error, columns, current_struct_appointments, struct_appointments_QList);
}
