/// The platform's metadata queries: what is known of a file beside its content, such as where it was downloaded from
/// and when it was opened.
#pragma once

#include "services/file_metadata_store.h"
#include "services/property_list.h"

#include <QString>

#include <optional>
#include <utility>

class file_metadata
{
public:
    /// The metadata item of a file, with all that the file carries; none when nothing stands at the path.
    static std::optional<file_metadata> item_at(const QString &file_path);

    /// Whether the item has no attribute at all, which is so for most files.
    bool is_empty() const { return values.is_empty(); }

    /// The value of an attribute such as "kMDItemUsedDates"; a null list when the item has none.
    property_list attribute(const QString &name) const;
    /// The printed description of that value; a null text when the item has none.
    QString attribute_description(const QString &name) const;

private:
    explicit file_metadata(stored_metadata stored) : values(std::move(stored)) {}

    stored_metadata values;
};

/// The printed description of a value, as the platform gives it: <CFString 0x0 [0x0]>{contents = "…"}, <CFNumber 0x0
/// [0x0]>{value = +5, type = kCFNumberSInt64Type}, <CFBoolean 0x0 [0x0]>{value = true}, a date as "2015-03-01 10:20:30
/// +0000", an array as a list in parentheses, an entry a line, each in double quotes, separated by commas. The
/// addresses are always 0x0, so that the same evidence gives the same text. Empty for other kinds.
QString metadata_description(const property_list_value &value);
