#include "windows/attachments.h"

// clang-format off
constexpr specific_table::column_field<specific_table::struct_attachments> attachments::columns[5] = {
    {"3704001f", &struct_attachments::file_name_QString},
    {"0e200013", &struct_attachments::file_size_QString},
    {"370e001f", &struct_attachments::suffix_QString},
    {"3701000b", &struct_attachments::direction_flag_QString},
    {"20040013", &struct_attachments::message_key_QString},
};
// clang-format on

void attachments::get_record_values(libesedb_record_t *record, libesedb_error_t *error, QString column_name,
                                    int value_entry, unsigned int column_type)
{
    take_value(record, error, column_name, value_entry, column_type, columns, current_struct_attachments);
}

void attachments::get_column_name_and_type(libesedb_record_t *record, libesedb_error_t *error)
{
    read_record(record, error, columns, current_struct_attachments, struct_attachments_QList);
}
