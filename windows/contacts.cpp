#include "windows/contacts.h"

// clang-format off
constexpr specific_table::column_field<specific_table::struct_contacts> contacts::columns[13] = {
    {"008001f",  &struct_contacts::display_name_QString},
    {"0082001f", &struct_contacts::first_name_QString},
    {"0084001f", &struct_contacts::last_name_QString},
    {"008a001f", &struct_contacts::work_info_QString},
    {"0091001f", &struct_contacts::email_first_QString},
    {"0090001f", &struct_contacts::email_second_QString},
    {"0099001f", &struct_contacts::work_phone_QString},
    {"0096001f", &struct_contacts::phone_no_QString},
    {"00d1001f", &struct_contacts::address_first_QString},
    {"00d2001f", &struct_contacts::address_second_QString},
    {"00d3001f", &struct_contacts::address_third_QString},
    {"01bf000b", &struct_contacts::row_flag_QString},
    {"010a0041", &struct_contacts::blob_hex_QString},
};
// clang-format on

void contacts::get_record_values(libesedb_record_t *record, libesedb_error_t *error, QString column_name,
                                 int value_entry, unsigned int column_type)
{
    take_value(record, error, column_name, value_entry, column_type, columns, current_struct_contacts);
}

void contacts::get_column_name_and_type(libesedb_record_t *record, libesedb_error_t *error)
{
    read_record(record, error, columns, current_struct_contacts, struct_contacts_QList);
}
