// AppleDouble files: where the metadata of a file stands that its file system cannot hold.
#include "core/plugin_static_function.h"
#include "fuzz/fuzz_target.h"
#include "services/file_metadata.h"

namespace {

constexpr const char *attributes[] = {
    "kMDItemWhereFroms", "kMDItemLastUsedDate", "kMDItemUsedDates", "kMDItemFSNodeCount", "kMDItemOriginSubject",
};

} // namespace

void fuzz_one(const QByteArray &input)
{
    static const QString file = file_with(QByteArray("content"), "mail.pdf");
    file_with(input, "._mail.pdf");

    const std::optional<stored_metadata> stored = stored_metadata::of_file(file);
    const std::optional<file_metadata> item = file_metadata::item_at(file);
    require(stored && item, "a file that is there has an item");
    for (const char *name : attributes) {
        const QString attribute = QString::fromLatin1(name);
        const QByteArray value = stored->value(attribute);
        require(value.isEmpty() || input.contains(value), "a value stands in the file as it is");
        const QString description = item->attribute_description(attribute);
        require(description.isNull() || !value.isNull(), "what is described is there");
    }
    const struct_used_dates dates = plugin_static_function::extract_used_date(*item);
    require(dates.used_dates.isEmpty() || dates.last_date == dates.used_dates.constLast(), "the last date is listed");
}
