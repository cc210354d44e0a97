// Values of attributes: described as the platform does, then taken out of their description by the filters.
#include "core/plugin_static_function.h"
#include "fuzz/fuzz_target.h"
#include "services/file_metadata.h"
#include "services/property_list.h"

#include <cmath>

using service = plugin_static_function;

void fuzz_one(const QByteArray &input)
{
    const property_list list = property_list::from_bytes(input);
    const property_list_value value = list.root();
    const QString description = metadata_description(value);
    const QString number = service::get_filtered_number_value(description);
    const QString boolean = service::get_filtered_boolean_value(description);
    const QString text = service::get_filtered_cfstring_value(description);
    const QString date = service::get_filtered_date_value(description);
    service::get_filtered_string_value(description);
    service::get_filtered_wherefrom_value(description);

    if (value.is_boolean()) {
        require(boolean == (value.integer_value() == 1 ? QLatin1String("true") : QLatin1String("false")),
                "a boolean comes through");
    } else if (value.is_number() && !value.is_real() && value.integer_value() >= 0) {
        require(number == value.string_value(), "an integer comes through");
    } else if (value.is_string() && !value.text().contains(QLatin1Char('=')) &&
               !value.text().contains(QLatin1String("]>{"))) {
        require(text == value.text().remove(QLatin1Char('"')).trimmed(), "a text comes through");
    } else if (value.is_date()) {
        const double seconds = std::floor(value.time_interval_since_1970());
        const bool is_recent = seconds >= 100000000.0 && seconds <= 253402300799.0;
        require(!is_recent || date == QString::number(static_cast<qint64>(seconds)), "a date comes through");
    }
}
