/// Configuration lists of which each entry gives a row: VIPs, rules, smart mailboxes.
#pragma once

#include "macos/mail_macos.h"

#include <optional>

/// The entries of a list in the order of the file, with their keys where it is a dictionary.
using listed_entries = std::vector<std::pair<QString, property_list_value>>;

/// Out: none where the root is of another kind.
std::optional<listed_entries> entries_of_array(const property_list_value &root);
std::optional<listed_entries> entries_of_dictionary(const property_list_value &root);

struct mail_macos::listed_rows
{
    operation_log log;
    failure_text destination_open_failure;
    failure_text list_failure;
    const char *line_behind_list_failure;
    std::optional<listed_entries> (*entries_of)(const property_list_value &root);
    const char *insert;
    failure_text insert_failure;
};
