#include "windows/mail_store_table.h"

#include "services/byte_text.h"

#include <algorithm>
#include <iterator>

struct taken_column
{
    unsigned int type; // a column of the name in another type is not taken
    const char *name;
    const char *log_text;
    QString mail_store_record::*field;
};

namespace {

constexpr int without_template_columns = 1; // the library's flag

// clang-format off

constexpr taken_column taken_columns[] = {
    {10, "ContentType",              "[container_func] content type is:",                        &mail_store_record::ContentType_QString},
    {10, "GmailImapUniqueMessageId", "[container_func] gmailmapid type is:",                     &mail_store_record::GmailImapUniqueMessageId_QString},
    {10, "ConversationServerId",     "[container_func] conversationserverid type is:",           &mail_store_record::ConversationServerId_QString},
    {12, "FileName",                 "[container_func] file name is(attatchment):",              &mail_store_record::FileName_QString},
    {12, "BodyFile",                 "[container_func] bodyfile attatchment is:",                &mail_store_record::BodyFile_QString},
    {12, "ContentId",                "[container_func] contentid attatchment is:",               &mail_store_record::ContentId_QString},
    {12, "ContentLocation",          "[container_func] contentlocation attatchment is:",         &mail_store_record::ContentLocation_QString},
    {12, "LatestSender",             "[container_func] latestsender attatchment is:",            &mail_store_record::LatestSender_QString},
    {12, "LatestSenderEmail",        "[container_func] LatestSenderEmail attatchment is:",       &mail_store_record::LatestSenderEmail_QString},
    {12, "LatestSenderName",         "[container_func] LatestSenderName attatchment is:",        &mail_store_record::LatestSenderName_QString},
    {12, "NormalizedSubject",        "[container_func] NormalizedSubject attatchment is:",       &mail_store_record::NormalizedSubject_QString},
    {12, "EmlFile",                  "[container_func] EmlFile filename is:",                    &mail_store_record::EmlFile_QString},
    {12, "From",                     "[container_func] From attatchment is:",                    &mail_store_record::From_QString},
    {12, "FromEmail",                "[container_func] from_email attatchment is:",              &mail_store_record::FromEmail_QString},
    {12, "FromName",                 "[container_func] FromName attatchment is:",                &mail_store_record::FromName_QString},
    {12, "MimeMessageId",            "[container_func] mimemessegeid attatchment is:",           &mail_store_record::MimeMessageId_QString},
    {12, "PreviewText",              "[container_func] PreviewText attatchment is:",             &mail_store_record::PreviewText_QString},
    {12, "ReplyTo",                  "[container_func] ReplyTo attatchment is:",                 &mail_store_record::ReplyTo_QString},
    {12, "Subject",                  "[container_func] Subject attatchment is:",                 &mail_store_record::Subject_QString},
    {12, "To",                       "[container_func] to attatchment is:",                      &mail_store_record::To_QString},
    {14, "Size",                     "[container_func] attatchment file size is:",               &mail_store_record::Size_QString},
    {14, "InstanceNumber",           "[container_func] attatchment instance_number is:",         &mail_store_record::InstanceNumber_QString},
    {14, "TotalMessageCount",        "[container_func] attatchment totalmessegecount is:",       &mail_store_record::TotalMessageCount_QString},
    {14, "Importance",               "[container_func] attatchment Importance is:",              &mail_store_record::Importance_QString},
    {14, "ImapUID",                  "[container_func] attatchment imapuid is:",                 &mail_store_record::ImapUID_QString},
    {14, "LastModifiedBodyType",     "[container_func] attatchment lastmodifiedbodytype is:",    &mail_store_record::LastModifiedBodyType_QString},
    {15, "LatestMessageTime",        "[container_func] attatchment LatestMessageTime is:",       &mail_store_record::LatestMessageTime_QString},
    {15, "LatestReceivedTime",       "[container_func] attatchment LatestReceivedTime is:",      &mail_store_record::LatestReceivedTime_QString},
    {15, "DateReceived",             "[container_func] attatchment datereceived is:",            &mail_store_record::DateReceived_QString},
    {15, "DateLastModified",         "[container_func] attatchment datelastmodified is:",        &mail_store_record::DateLastModified_QString},
    {15, "DateLastModifiedBody",     "[container_func] attatchment datelastmodifiedbody is:",    &mail_store_record::DateLastModifiedBody_QString},
    {15, "DateDisplayed",            "[container_func] attatchment datedisplayed is:",           &mail_store_record::DateDisplayed_QString},
};

// clang-format on

const taken_column *taken_column_of(const QString &name)
{
    const auto *found = std::find_if(std::begin(taken_columns), std::end(taken_columns),
                                     [&name](const auto &column) { return name == QLatin1String(column.name); });
    return found == std::end(taken_columns) ? nullptr : found;
}

} // namespace

mail_store_table::mail_store_table(const ese_file &file, libesedb_table_t *handle, const QString &name,
                                   const operation_log &operation, const std::atomic<bool> &cancel_flag)
    : table(handle), log(operation), is_cancelled(cancel_flag), records(file, name.toUtf8(), handle),
      values(file, name, operation, "container_func")
{
    count_records();
    find_columns();
}

void mail_store_table::count_records()
{
    if (settled(records.count(&record_count_int, &error), error) == -1) {
        log("[container_func]  unable to retrieve total number of records in table : \n");
        if (table) { // a database without it lacks nothing
            values.log_unread("number of records");
        }
    }
    log("[container_func]number of records inside table: ", QString::number(record_count_int));
    log("[container_func] \n");
}

void mail_store_table::find_columns()
{
    int count = 0;
    const int result = libesedb_table_get_number_of_columns(table, &count, without_template_columns, &error);
    if (settled(result, error) != 1) {
        log("[container_func] unable to retrieve number of columns: \n");
    }
    log("[container_func] no of columns are: ", QString::number(count));
    for (int position = 0; position < count; ++position) {
        columns.push_back(column_at(position));
    }
}

mail_store_table::column mail_store_table::column_at(int position) const
{
    libesedb_error_t *failure = nullptr;
    libesedb_column_t *opened = nullptr;
    column found;
    found.is_found =
        settled(libesedb_table_get_column(table, position, &opened, without_template_columns, &failure), failure) != -1;
    const ese_column_handle handle(opened);
    std::size_t size = 0; // with the terminator
    found.has_name_size = settled(libesedb_column_get_utf8_name_size(opened, &size, &failure), failure) == 1;
    constexpr std::size_t longest_name = 1024; // the format allows 64
    QByteArray name(static_cast<int>(std::min(size, longest_name)), '\0');
    found.has_name = settled(libesedb_column_get_utf8_name(opened, reinterpret_cast<uint8_t *>(name.data()),
                                                           static_cast<std::size_t>(name.size()), &failure),
                             failure) != -1;
    found.name = found.has_name ? text_of_unknown_encoding(bytes_before_zero(name)) : QString();
    found.taken = taken_column_of(found.name);
    return found;
}

void mail_store_table::log_column(const column &column) const
{
    if (!column.is_found) {
        log(" [container_func]unable to retrieve column: \n");
    }
    if (!column.has_name_size) {
        log("[container_func] unable to retrieve column size: \n");
    }
    if (!column.has_name) {
        log("[container_func] unable to retrieve column name: \n");
    }
    log("[container_func] column name is : ", column.name);
}

mail_store_table::outcome mail_store_table::read(int position, mail_store_record &record)
{
    log("[container_func] ---- start of new record ----");
    values.enter_record(position);
    libesedb_record_t *fetched = nullptr;
    const int result = settled(records.get(position, &fetched, &error), error);
    const ese_record_handle stored(fetched);
    if (result != 1) {
        log("[container_func]Unable to retrieve record: 0.\n");
        values.log_unread("record");
        return outcome::not_fetched;
    }
    for (int entry = 0; entry < static_cast<int>(columns.size()); ++entry) {
        if (is_cancelled) {
            return outcome::cancelled;
        }
        read_value(fetched, entry, record);
    }
    return outcome::read;
}

void mail_store_table::read_value(libesedb_record_t *stored, int entry, mail_store_record &record)
{
    const int type = values.column_type(stored, entry, error);
    if (type == -1) {
        log("[container_func]  unable to retrieve column type: \n");
    }
    log_column(columns[static_cast<std::size_t>(entry)]);
    if (!is_taken(entry, static_cast<unsigned int>(type)) && !plugin_static_function::is_debug_on()) {
        return; // only the log would tell of it
    }
    switch (type) {
    case ese_column_type::signed_16bit:
    case ese_column_type::signed_32bit:
        read_unused_number(stored, entry, static_cast<unsigned int>(type));
        break;
    case ese_column_type::text:
    case ese_column_type::large_text:
        read_text(stored, entry, static_cast<unsigned int>(type), record);
        break;
    case ese_column_type::unsigned_32bit:
    case ese_column_type::signed_64bit:
        read_number(stored, entry, static_cast<unsigned int>(type), record);
        break;
    default:
        log("[container_func] function specific to column type is not defined:");
    }
}

// No column of these types is taken; that one is unreadable is told all the same.
void mail_store_table::read_unused_number(libesedb_record_t *stored, int entry, unsigned int type)
{
    if (type == ese_column_type::signed_16bit) {
        std::uint16_t number = 0;
        if (values.number(libesedb_record_get_value_16bit, stored, entry, &number, error) == -1) {
            log("[container_func] unable to retrieve 16bit value: \n");
        }
    } else {
        std::uint32_t number = 0;
        if (values.number(libesedb_record_get_value_32bit, stored, entry, &number, error) == -1) {
            log("[container_func] unable to retrieve 32bit value: \n");
        }
    }
}

void mail_store_table::read_text(libesedb_record_t *stored, int entry, unsigned int type, mail_store_record &record)
{
    const bool is_large = type == ese_column_type::large_text;
    const ese_value value = values.text(stored, entry, type, error);
    if (!value.is_read) {
        log(is_large ? "[container_func] unable to retrieve string size \n"
                     : "[container_func]  case 10 unable to retrieve string size \n");
        log(is_large ? "[container_func] unable to retrieve string  \n"
                     : "[container_func]  case 10 unable to retrieve string  \n");
    }
    if (is_large) {
        log("[container_func] \n");
    }
    if (is_taken(entry, type)) {
        store(entry, text_of_unknown_encoding(value.bytes), record);
    }
}

void mail_store_table::read_number(libesedb_record_t *stored, int entry, unsigned int type, mail_store_record &record)
{
    QString text;
    if (type == ese_column_type::unsigned_32bit) {
        std::uint32_t number = 0;
        if (values.number(libesedb_record_get_value_32bit, stored, entry, &number, error) == -1) {
            log("[container_func] unable to retrieve 32bit value: \n");
        }
        text = QString::number(number);
        log("[container_func] inside case 14: ", text);
    } else {
        std::uint64_t number = 0;
        if (values.number(libesedb_record_get_value_64bit, stored, entry, &number, error) == -1) {
            log("[container_func] unable to retrieve 64bit value: \n");
        }
        text = QString::number(number);
        log("[container_func] 64bit value: ", text);
    }
    if (is_taken(entry, type)) {
        store(entry, text, record);
    }
}

bool mail_store_table::is_taken(int entry, unsigned int type) const
{
    const taken_column *taken = columns[static_cast<std::size_t>(entry)].taken;
    return taken && taken->type == type;
}

void mail_store_table::store(int entry, const QString &value, mail_store_record &record) const
{
    const taken_column &taken = *columns[static_cast<std::size_t>(entry)].taken;
    record.*taken.field = value;
    log(taken.log_text, value);
}
