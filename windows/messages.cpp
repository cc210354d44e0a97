#include "windows/messages.h"

// clang-format off
constexpr specific_table::column_field<specific_table::struct_messages> messages::columns[7] = {
    {"3fda001f", &struct_messages::message_text_QString},
    {"8279001f", &struct_messages::from_str_QString},
    {"0c1a001f", &struct_messages::sender_name_QString},
    {"003d001f", &struct_messages::subject_prefix_QString},
    {"0037001f", &struct_messages::subject_QString},
    {"0e060040", &struct_messages::message_time_QString},
    {"82a50040", &struct_messages::date_sent_QString},
};
// clang-format on

void messages::get_record_values(libesedb_record_t *record, libesedb_error_t *error, QString column_name,
                                 int value_entry, unsigned int column_type)
{
    take_value(record, error, column_name, value_entry, column_type, columns, current_struct_messages);
}

void messages::get_column_name_and_type(libesedb_record_t *record, libesedb_error_t *error)
{
    read_record(record, error, columns, current_struct_messages, struct_messages_QList);
}
