#include "services/file_metadata.h"

#include <QDateTime>
#include <QLocale>
#include <QStringList>

#include <cmath>

namespace {

QString described(const char *type, const QString &content)
{
    return QStringLiteral("<%1 0x0 [0x0]>{").arg(QLatin1String(type)) + content + QLatin1Char('}');
}

QString describe_number(const property_list_value &number)
{
    if (number.is_boolean()) {
        return described("CFBoolean",
                         QLatin1String("value = ") +
                             (number.double_value() != 0.0 ? QLatin1String("true") : QLatin1String("false")));
    }
    if (number.is_real()) {
        const QString value = QString::asprintf("%+.20f", number.double_value());
        return described("CFNumber",
                         QLatin1String("value = ") + value + QLatin1String(", type = kCFNumberFloat64Type"));
    }
    QString value = number.string_value();
    if (!value.startsWith(QLatin1Char('-'))) {
        value.prepend(QLatin1Char('+'));
    }
    return described("CFNumber", QLatin1String("value = ") + value + QLatin1String(", type = kCFNumberSInt64Type"));
}

QString describe_date(const property_list_value &date)
{
    const double seconds = std::floor(date.time_interval_since_1970());
    constexpr double end_of_year_9999 = 253402300799.0;
    if (!(std::abs(seconds) <= end_of_year_9999)) {
        return QString(); // no date that could be printed
    }
    // Digits as in English whatever the locale: the description is cut up again.
    return QLocale::c().toString(QDateTime::fromSecsSinceEpoch(static_cast<qint64>(seconds), Qt::UTC),
                                 QStringLiteral("yyyy-MM-dd hh:mm:ss")) +
           QLatin1String(" +0000");
}

// The text of an entry inside a list, where it stands without its type.
QString entry_text(const property_list_value &entry)
{
    switch (entry.get_kind()) {
    case property_list_value::kind::string:
        return entry.text();
    case property_list_value::kind::number:
        return entry.string_value();
    default:
        return metadata_description(entry);
    }
}

QString describe_array(const property_list_value &array)
{
    QStringList entries;
    for (const property_list_value &entry : array.elements()) {
        entries.append(QLatin1String("    \"") + entry_text(entry) + QLatin1Char('"'));
    }
    return QLatin1String("(\n") + entries.join(QLatin1String(",\n")) + QLatin1String("\n)");
}

} // namespace

QString metadata_description(const property_list_value &value)
{
    switch (value.get_kind()) {
    case property_list_value::kind::string:
        return described("CFString", QLatin1String("contents = \"") + value.text() + QLatin1Char('"'));
    case property_list_value::kind::number:
        return describe_number(value);
    case property_list_value::kind::date:
        return describe_date(value);
    case property_list_value::kind::array:
        return describe_array(value);
    default:
        return QString();
    }
}

std::optional<file_metadata> file_metadata::item_at(const QString &file_path)
{
    std::optional<stored_metadata> stored = stored_metadata::of_file(file_path);
    return stored ? std::make_optional(file_metadata(std::move(*stored))) : std::nullopt;
}

property_list file_metadata::attribute(const QString &name) const
{
    return property_list::from_bytes(values.value(name));
}

QString file_metadata::attribute_description(const QString &name) const
{
    if (is_empty()) {
        return QString();
    }
    const property_list value = attribute(name);
    return value.is_null() ? QString() : metadata_description(value.root());
}
