// Times and values that stand in the evidence as text.
#include "core/plugin_static_function.h"
#include "fuzz/fuzz_target.h"
#include "services/percent_encoding.h"

using service = plugin_static_function;

namespace {

bool is_number(const QString &text)
{
    bool is_integer = false;
    text.toLongLong(&is_integer);
    return is_integer;
}

} // namespace

void fuzz_one(const QByteArray &input)
{
    const QString text = QString::fromUtf8(input);
    const bool is_blank = text.trimmed().isEmpty();

    const QString apple_time = service::convert_apple_time_to_epoch(text);
    require(apple_time.isEmpty() || is_number(apple_time), "an Apple time is a number");
    const QString local_time = service::convert_T_Z_time_to_epoch(text);
    require(is_blank ? local_time.isEmpty() : is_number(local_time), "a local time is a number");
    const QString date = service::get_filtered_date_value(text);
    require(date.isEmpty() || (is_number(date) && date.size() >= 9), "a date is a number of nine characters");
    service::convert_timestamp_to_human_readable_in_UTC(text);
    service::get_datetime_from_string_with_iso_date(text);

    require(!service::mining_suffix(text).contains(QLatin1Char('/')), "a suffix is of the file's name");
    service::get_filtered_number_value(text);
    service::get_filtered_boolean_value(text);
    require(!service::get_filtered_cfstring_value(text).contains(QLatin1Char('"')), "a text has lost its quotes");
    require(!service::get_filtered_string_value(text).contains(QLatin1Char(',')), "a list is cut at its commas");
    service::get_filtered_wherefrom_value(text);
    require(percent_decoded(input).size() <= input.size(), "decoding makes nothing longer");
}
