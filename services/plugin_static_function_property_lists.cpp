// Readers of property-list values, and the dates that the metadata of a file tell.
#include "core/plugin_static_function.h"
#include "services/file_metadata.h"
#include "services/property_list.h"
#include "services/property_list_readers.h"

#include <cmath>

namespace {

// A number as the readers take it: the real, cut towards zero.
qint64 truncated(const property_list_value &number)
{
    const double value = number.double_value();
    constexpr double limit = 9223372036854775808.0; // two to the 63rd
    if (!(value > -limit && value < limit)) {
        return number.integer_value(); // no number, or one that 64 bits do not hold
    }
    return static_cast<qint64>(value);
}

QString yes_or_no(const property_list_value &number)
{
    const qint64 value = truncated(number);
    return value == 0 ? QStringLiteral("NO") : value == 1 ? QStringLiteral("YES") : QString();
}

// The description of a date as seconds since 1970, of its date and time as they read. The number passes through an
// unsigned one: before 1970 it is 0.
QString seconds_of_description(const QString &description)
{
    QDateTime date_time = plugin_static_function::get_datetime_from_string_with_iso_date(description);
    date_time.setTimeSpec(Qt::UTC);
    return QString::number(QString::number(date_time.toMSecsSinceEpoch() / 1000).toULongLong());
}

} // namespace

QString plugin_static_function::get_nsstring_values(const QString &key, const property_list_value &dictionary)
{
    return dictionary.object_for_key(key).text().trimmed();
}

QString plugin_static_function::get_nsnumber_values(const QString &key, const property_list_value &dictionary)
{
    const property_list_value value = dictionary.object_for_key(key);
    return value.is_number() ? QString::number(truncated(value)) : QString();
}

QString plugin_static_function::get_nsnumber_values_yes_no(const QString &key, const property_list_value &dictionary)
{
    const property_list_value value = dictionary.object_for_key(key);
    return value.is_boolean() ? yes_or_no(value) : QString();
}

QString plugin_static_function::get_nsstring_key_and_values(const QString &key, const property_list_value &dictionary,
                                                            const QString &label)
{
    const property_list_value value = dictionary.object_for_key(key);
    return value.is_string() ? labelled(label, value.text().trimmed()) : QString();
}

QString plugin_static_function::get_nsnumber_key_and_values(const QString &key, const property_list_value &dictionary,
                                                            const QString &label)
{
    const QString number = get_nsnumber_values(key, dictionary);
    return number.isEmpty() ? QString() : labelled(label, number);
}

QString plugin_static_function::get_nsnumber_key_and_value_yes_no(const QString &key,
                                                                  const property_list_value &dictionary,
                                                                  const QString &label)
{
    const property_list_value value = dictionary.object_for_key(key);
    return value.is_number() ? labelled(label, yes_or_no(value)) : QString();
}

QString plugin_static_function::get_nsarray_key_and_values(const QString &key, const property_list_value &dictionary,
                                                           const QString &label)
{
    return labelled_texts_of_array(dictionary.object_for_key(key), label, bool_cancel_extraction);
}

QString plugin_static_function::convert_cfstring_to_qstring(const property_list_value &string)
{
    return string.text();
}

qint64 plugin_static_function::convert_nsdate_to_epoch(const property_list_value &date,
                                                       const property_list_value &object)
{
    if (date.get_kind() == property_list_value::kind::none || !object.is_date()) {
        return 0;
    }
    const double seconds = std::floor(date.time_interval_since_1970()); // the fraction of a second is dropped
    constexpr double limit = 9223372036854775808.0;                     // two to the 63rd
    return seconds > -limit && seconds < limit ? static_cast<qint64>(seconds) : 0;
}

struct_used_dates plugin_static_function::extract_used_date(const QString &file_path)
{
    const std::optional<file_metadata> item = file_metadata::item_at(file_path);
    return item ? extract_used_date(*item) : struct_used_dates();
}

struct_used_dates plugin_static_function::extract_used_date(const file_metadata &item)
{
    struct_used_dates dates;
    const QString last_used = item.attribute_description(QStringLiteral("kMDItemLastUsedDate"));
    if (!last_used.isNull()) {
        dates.last_used_date = seconds_of_description(last_used);
    }
    QString used = item.attribute_description(QStringLiteral("kMDItemUsedDates"));
    if (used.isNull()) {
        return dates;
    }
    used.remove(QLatin1Char('(')).remove(QLatin1Char(')')).remove(QLatin1Char('"'));
    QStringList used_dates;
    const QStringList parts = used.split(QLatin1Char(','));
    for (const QString &part : parts) {
        if (bool_cancel_extraction) {
            return dates;
        }
        used_dates.append(seconds_of_description(part.trimmed()));
    }
    dates.used_dates = used_dates;
    dates.first_date = used_dates.constFirst();
    dates.last_date = used_dates.constLast();
    return dates;
}
