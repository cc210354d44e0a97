/// Mails: table "Message" of the communications store.
#pragma once

#include "windows/specific_table.h"

/// What start_parsing() reads of the table "Message" stands in struct_messages_QList.
class messages final : public specific_table
{
public:
    using specific_table::get_column_name_and_type;
    using specific_table::get_record_values;
    void get_record_values(libesedb_record_t *record, libesedb_error_t *error, QString column_name, int value_entry,
                           unsigned int column_type) override;
    void get_column_name_and_type(libesedb_record_t *record, libesedb_error_t *error) override;

private:
    static const column_field<struct_messages> columns[7];
};
