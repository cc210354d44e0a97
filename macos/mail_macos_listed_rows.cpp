// The steps that the tables vip_contacts, rules and smart_mailboxes have in common.
#include "core/result_session.h"
#include "core/row_writer.h"
#include "macos/listed_rows.h"

std::optional<listed_entries> entries_of_array(const property_list_value &root)
{
    if (!root.is_array()) {
        return std::nullopt;
    }
    listed_entries entries;
    entries.reserve(static_cast<std::size_t>(root.count()));
    for (const property_list_value &element : root.elements()) {
        entries.emplace_back(QString(), element);
    }
    return entries;
}

std::optional<listed_entries> entries_of_dictionary(const property_list_value &root)
{
    return root.is_dictionary() ? root.entries() : std::optional<listed_entries>();
}

void mail_macos::extract_listed_rows(const listed_rows &list, const QString &file, const QString &user,
                                     const QString &destination_db, const values_of_entry &values_of)
{
    list.log("starts");
    result_session destination{list.log, destination_db};
    if (!destination.open(list.destination_open_failure)) {
        return;
    }
    const property_list content = property_list::from_file(file);
    const std::optional<listed_entries> entries = list.entries_of(content.root());
    if (!entries) {
        list.log.failure(list.list_failure, file);
        list.log(list.line_behind_list_failure);
        return;
    }
    row_writer rows{*this, destination, list.log, list.insert, list.insert_failure};
    const artifact_source_file shown_file = shown_source_of(file, user);
    for (const auto &[key, entry] : *entries) {
        if (cancel_extraction_bool) {
            return;
        }
        const std::optional<row_values> values = values_of(key, entry);
        if (cancel_extraction_bool) { // they may have been read in part only
            return;
        }
        if (!values) {
            continue;
        }
        row_values row{{"bookmark", QStringLiteral("0")}, {"system_user", user}};
        row.insert(row.end(), values->begin(), values->end());
        append_source_columns(row, shown_file);
        rows.insert(row);
    }
    destination.finish();
    list.log("ends");
}
