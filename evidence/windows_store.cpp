#include "evidence/windows_store.h"

#include "evidence/files.h"

namespace evidence {

namespace {

// The last four digits of a property tag are its type.
ese_type type_of_tag(const QByteArray &tag)
{
    const QByteArray type = tag.right(4);
    if (type == "000b") {
        return ese_type::boolean;
    }
    if (type == "0013") {
        return ese_type::unsigned32;
    }
    if (type == "0040") {
        return ese_type::date_time;
    }
    return type == "0041" ? ese_type::long_binary : ese_type::long_text;
}

// Items have few of the properties that a table knows, so all columns are tagged.
std::vector<ese_column> tag_columns(std::initializer_list<const char *> tags)
{
    std::vector<ese_column> columns;
    for (const char *tag : tags) {
        ese_column column;
        column.name = tag;
        column.type = type_of_tag(tag);
        column.storage = ese_storage::tagged;
        columns.push_back(column);
    }
    return columns;
}

std::vector<ese_column> named_columns(std::initializer_list<const char *> names, ese_type type)
{
    std::vector<ese_column> columns;
    for (const char *name : names) {
        ese_column column;
        column.name = name;
        column.type = type;
        column.storage = ese_storage::tagged;
        columns.push_back(column);
    }
    return columns;
}

std::vector<ese_column> call_columns()
{
    std::vector<ese_column> columns =
        named_columns({"StartTime", "EndTime", "ArrivalTime", "ApplicationInstallTime"}, ese_type::date_time);
    const std::vector<ese_column> texts =
        named_columns({"CallerLocation", "ResolvedName", "ResolvedNumber"}, ese_type::long_text);
    columns.insert(columns.end(), texts.begin(), texts.end());
    return columns;
}

ese_value value_of(const QString &text)
{
    return text.isNull() ? ese_value() : ese_value::text(text);
}

ese_value value_of(const QByteArray &bytes)
{
    return bytes.isNull() ? ese_value() : ese_value::bytes(bytes);
}

ese_value value_of(const std::optional<qint64> &number)
{
    return number ? ese_value::number(*number) : ese_value();
}

ese_value value_of(const std::optional<bool> &flag)
{
    return flag ? ese_value::boolean(*flag) : ese_value();
}

template <typename... values>
void add_record(std::optional<ese_table> &table, const values &...fields)
{
    if (!table) {
        throw evidence_error(QStringLiteral("A record for a table that the store was told to leave out."));
    }
    table->add_record({value_of(fields)...});
}

} // namespace

struct windows_store::tables
{
    std::optional<ese_table> appointments;
    std::optional<ese_table> attachments;
    std::optional<ese_table> recipients;
    std::optional<ese_table> messages;
    std::optional<ese_table> contacts;
    std::optional<ese_table> calls;
};

windows_store::windows_store(const QString &path, const windows_store_tables &wanted, const ese_file_options &options)
    : file(std::make_unique<ese_file>(path, options)), added(std::make_unique<tables>())
{
    const auto add_table = [this](bool is_wanted, std::optional<ese_table> &table, const char *name,
                                  const std::vector<ese_column> &columns) {
        if (is_wanted) {
            table.emplace(file->add_table(name, columns));
        }
    };
    // The columns stand in the order of the records' members.
    add_table(wanted.appointments, added->appointments, "Appointment",
              tag_columns({"0020001f", "0041001f", "004a001f", "00460013", "10420040", "0055001f"}));
    add_table(wanted.attachments, added->attachments, "Attachment",
              tag_columns({"3704001f", "0e200013", "370e001f", "3701000b", "20040013"}));
    add_table(wanted.recipients, added->recipients, "Recipient",
              tag_columns({"20040013", "0c150013", "0e060040", "3003001f"}));
    add_table(wanted.messages, added->messages, "Message",
              tag_columns({"3fda001f", "8279001f", "0c1a001f", "003d001f", "0037001f", "0e060040", "82a50040"}));
    add_table(wanted.contacts, added->contacts, "Contact",
              tag_columns({"008001f", "0082001f", "0084001f", "008a001f", "0091001f", "0090001f", "0099001f",
                           "0096001f", "00d1001f", "00d2001f", "00d3001f", "01bf000b", "010a0041"}));
    add_table(wanted.calls, added->calls, "CallHistory", call_columns());
}

windows_store::~windows_store() = default;

void windows_store::add(const windows_appointment &item)
{
    add_record(added->appointments, item.name, item.location, item.timezone, item.snooze, item.time, item.account);
}

void windows_store::add(const windows_attachment &item)
{
    add_record(added->attachments, item.file_name, item.size, item.suffix, item.is_received, item.message_key);
}

void windows_store::add(const windows_recipient &item)
{
    add_record(added->recipients, item.message_key, item.kind, item.message_time, item.address);
}

void windows_store::add(const windows_message &item)
{
    add_record(added->messages, item.text, item.from, item.sender_name, item.subject_prefix, item.subject, item.time,
               item.date_sent);
}

void windows_store::add(const windows_contact &item)
{
    add_record(added->contacts, item.display_name, item.first_name, item.last_name, item.work_info, item.email_first,
               item.email_second, item.work_phone, item.phone, item.address_first, item.address_second,
               item.address_third, item.is_listed, item.blob);
}

void windows_store::add(const windows_call &item)
{
    add_record(added->calls, item.start, item.end, item.arrival, item.application_install, item.caller_location,
               item.resolved_name, item.resolved_number);
}

void windows_store::finish()
{
    file->finish();
}

} // namespace evidence
