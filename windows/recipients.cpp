#include "windows/recipients.h"

// clang-format off
constexpr specific_table::column_field<specific_table::struct_recipients> recipients::columns[4] = {
    {"20040013", &struct_recipients::message_key_QString},
    {"0c150013", &struct_recipients::recipient_kind_QString},
    {"0e060040", &struct_recipients::message_time_QString},
    {"3003001f", &struct_recipients::address_QString},
};
// clang-format on

void recipients::get_record_values(libesedb_record_t *record, libesedb_error_t *error, QString column_name,
                                   int value_entry, unsigned int column_type)
{
    take_value(record, error, column_name, value_entry, column_type, columns, current_struct_recipients);
}

void recipients::get_column_name_and_type(libesedb_record_t *record, libesedb_error_t *error)
{
    read_record(record, error, columns, current_struct_recipients, struct_recipients_QList);
}
