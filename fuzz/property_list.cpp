// Property lists of both forms: every value asked for everything, and the list written anew as XML.
#include "services/property_list.h"

#include "fuzz/fuzz_target.h"
#include "services/property_list_conversion.h"

namespace {

using kind = property_list_value::kind;

constexpr int most_values = 20000; // a list may refer to one of its objects many times

// Asks the value, and all below it, what each kind answers; the others answer with nothing.
void ask(const property_list_value &value, int &values_left)
{
    if (--values_left < 0) {
        return;
    }
    require(value.is_string() || value.text().isNull(), "only a string has a text");
    require(value.is_number() || value.string_value().isNull(), "only a number has a number's text");
    require(value.is_number() || (value.integer_value() == 0 && value.double_value() == 0.0), "no other has a number");
    require(value.is_date() || value.time_interval_since_1970() == 0.0, "only a date has a time");
    require(value.get_kind() == kind::data || value.data().isNull(), "only data have bytes");
    require(!value.is_boolean() || value.string_value() == QString::number(value.integer_value()), "true is 1");
    if (value.is_number() && !value.is_real() && qAbs(value.double_value()) < 9e15) {
        require(value.string_value() == QString::number(value.integer_value()), "an integer's text is its number");
    }

    const std::vector<property_list_value> elements = value.elements();
    require(static_cast<int>(elements.size()) == value.count(), "an array has as many elements as it counts");
    require(value.object_at(value.count()).get_kind() == kind::none, "nothing stands behind the last element");
    for (const property_list_value &element : elements) {
        ask(element, values_left);
    }
    const auto entries = value.entries();
    require(static_cast<int>(entries.size()) == value.all_keys().size(), "each key has an entry");
    for (const auto &entry : entries) {
        value.object_for_key(entry.first);
        ask(entry.second, values_left);
    }
}

} // namespace

void fuzz_one(const QByteArray &input)
{
    const property_list list = property_list::from_bytes(input);
    int values_left = most_values;
    ask(list.root(), values_left);

    const QByteArray xml = property_list_as_xml(input);
    require(xml.isNull() || !list.is_null(), "only a property list becomes XML");
}
