// Table recents: one row an address that was used recently, with whom it was used and what its metadata tell. A
// metadata value is a property list in a blob; it is turned into XML text, and the few values are cut out of that.
#include "core/joined_text.h"
#include "core/look_up_table.h"
#include "core/result_session.h"
#include "core/row_writer.h"
#include "core/source_session.h"
#include "ios/mail_ios_uid.h"
#include "ios/short_message_reader.h"
#include "services/plugin_helper_functions.h"
#include "services/property_list_conversion.h"
#include "services/working_folder.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QScopeGuard>

namespace {

constexpr operation_log recents_log{"void mail_ios_uid::extract_mail_recents()"};

constexpr failure_text destination_failure{"[extract_mail_recents] Destination Db opening ---FAILED--- ", ""};
constexpr failure_text source_failure{"[extract_mail_recents]Source Db opening ----FAILED----", "", nullptr, false,
                                      true};

constexpr const char *select_recents =
    "select display_name,bundle_identifier,sending_address,original_source,dates,last_date,record_hash,count,ROWID "
    "from recents";
constexpr int row_id_position = 8; // SQLite names it by the table's key column
constexpr failure_text select_recents_failure{"[extract_mail_recents]Select query ---FAILED---", "", "", false};

constexpr const char *select_contacts = "SELECT display_name,kind,address FROM contacts WHERE recent_id=?";
constexpr look_up_table contacts_of_recent{"contacts", "recent_id,display_name,kind,address", "recent_id"};
constexpr const char *select_metadata = "SELECT key,value,recent_id FROM metadata WHERE recent_id=?";
constexpr int metadata_value_position = 1;
constexpr look_up_table metadata_of_recent{"metadata", "key,value,recent_id", "recent_id"};
constexpr failure_text side_query_failure{"[extract_mail_recents]query_select account ---FAILED--- ", "", "", false};

constexpr failure_text list_file_failure{"[extract_mail_recents]File Open Error: ", ""};
constexpr failure_text xml_file_failure{"[extract_mail_recents] file open -------FAILED-----", ""};

constexpr const char *insert_recent =
    "insert into recents(bookmark,last_receiver_display_name,bundle_id,sender_address,original_source,"
    "mailed_timestamp,last_mailed_timestamp,record_hash,receiver_count,receiver_details,subject,text,event_timestamp,"
    "source_file,artifacts_relation_source_file,source_count_name, os_scheme_display) "
    "values(0,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)";
constexpr failure_text insert_recent_failure{"[extract_mail_recents]Insertion Query -----FAILED-----", "", "", false};

constexpr qint64 xml_size_limit = 64 << 20;                 // bytes of a file that the platform's tool wrote
constexpr qint64 converted_size_limit = Q_INT64_C(4) << 30; // bytes of all files of a run, lists and XML

// --- Times -----------------------------------------------------------------------------------------------------------

// Times are stored in milliseconds, or in seconds with a fraction: their first ten characters are seconds since 1970.
constexpr int second_digits = 10;

QString seconds_of(const QString &time)
{
    return time.left(second_digits);
}

// The times of a list, each cut to seconds. Only a time of full length has a separator behind it.
QString seconds_of_list(const QString &times, const std::atomic<bool> &cancel_flag)
{
    if (!times.contains(QLatin1Char(':'))) {
        return seconds_of(times);
    }
    QString seconds;
    int begin = 0;
    while (!cancel_flag) {
        const int end = times.indexOf(QLatin1Char(':'), begin);
        if (end < 0) {
            seconds += times.midRef(begin, second_digits);
            break;
        }
        const int length = qMin(second_digits, end - begin);
        seconds += times.midRef(begin, length);
        if (length == second_digits) {
            seconds += QLatin1Char(';');
        }
        begin = end + 1;
    }
    return seconds;
}

// --- Receivers -------------------------------------------------------------------------------------------------------

// Out: those who were addressed, as many as the recent counts; false when the look-up fails or is cut off.
bool read_receivers(source_query &contacts, const QString &recent_id, const QString &count,
                    const std::atomic<bool> &cancel_flag, QString &details)
{
    if (!contacts.execute({recent_id})) {
        return false;
    }
    joined_text receivers{recents_log};
    int i = 0;
    while (contacts.next() && !cancel_flag && QString::number(i) != count) {
        receivers.append(QLatin1String(i == 0 ? "Display Name: " : ";;Display Name: ") + contacts.text("display_name") +
                             QLatin1String(";Kind: ") + contacts.text("kind") + QLatin1String(";Address: ") +
                             contacts.text("address"),
                         QString());
        ++i;
    }
    details = receivers.text();
    return !contacts.was_cancelled() && !cancel_flag;
}

// --- Values in the XML text of a property list -----------------------------------------------------------------------

struct marker_pair
{
    const char *opening;
    const char *closing;
};
constexpr marker_pair date_markers{"<date>", "</date>"};
constexpr marker_pair string_markers{"<string>", "</string>"};

// What stands between the first two markers, which are never the first thing in the text; up to a zero byte.
QString value_between(const marker_pair &markers, const QByteArray &xml)
{
    const int opening = xml.indexOf(markers.opening);
    const int closing = xml.indexOf(markers.closing);
    const int begin = opening + static_cast<int>(qstrlen(markers.opening));
    if (opening <= 0 || closing < begin) {
        return QString();
    }
    return QString::fromLocal8Bit(
        xml.constData() + begin,
        static_cast<int>(qstrnlen(xml.constData() + begin, static_cast<uint>(closing - begin))));
}

QString without_zone_letter(QString date)
{
    if (date.endsWith(QLatin1Char('Z'))) {
        date.chop(1);
    }
    return date;
}

// Out: the message guid in a URL that opens a short message; empty for any other URL.
QString message_guid_of(const QString &url)
{
    const QLatin1String parameter("message-guid=");
    return url.contains(QLatin1String("sms:/open?message-guid="))
               ? url.mid(url.lastIndexOf(parameter) + parameter.size())
               : QString();
}

} // namespace

struct mail_ios_uid::recent_metadata
{
    QString subject;
    QString text;
    QString event_date;
};

struct mail_ios_uid::metadata_conversion
{
    QString tool; // the platform's; empty where it has none
    working_folder folder;
    QElapsedTimer since_event_loop{}; // was turned last; not valid before the first time
    qint64 size = 0;                  // bytes of the files so far

    // A conversion takes less time than asking the system for events does, so not each of them asks.
    void turn_event_loop()
    {
        constexpr qint64 interval_ms = 10;
        if (!since_event_loop.isValid() || since_event_loop.elapsed() >= interval_ms) {
            QCoreApplication::processEvents(); // a host may cancel from there
            since_event_loop.start();
        }
    }

    // Blobs of a few kilobytes can unfold to more than the disk of the examiner holds. Out: whether there is room left.
    bool has_room() const { return size <= converted_size_limit; }
    void count(qint64 bytes)
    {
        const bool had_room = has_room();
        size += bytes;
        if (had_room && !has_room()) {
            recents_log("converted metadata larger than 4 GiB -----FAILED-----, the rest is left out");
        }
    }
};

// What belongs to a recent, read from the side tables of its database.
struct mail_ios_uid::recent_details
{
    recent_details(source_session &source, metadata_conversion &&metadata_conversion)
        : contacts{source, recents_log, select_contacts, side_query_failure}, metadata{source, recents_log,
                                                                                       select_metadata,
                                                                                       side_query_failure},
          conversion(std::move(metadata_conversion))
    {
        make_look_up_fast(source, contacts_of_recent);
        make_look_up_fast(source, metadata_of_recent);
        contacts.leave_out_large_values("ROWID");
        metadata.leave_out_large_values("ROWID");
    }

    source_query contacts;
    source_query metadata;
    metadata_conversion conversion;
};

// --- Metadata --------------------------------------------------------------------------------------------------------

void mail_ios_uid::slot_process_finished(int)
{
    process_finished_bool = true;
}

// The XML text stands in its file then.
std::optional<QByteArray> mail_ios_uid::xml_from_this_process(const QString &xml_name, const QByteArray &value,
                                                              metadata_conversion &conversion)
{
    recents_log(" : running");
    conversion.turn_event_loop();
    if (cancel_extraction_bool) {
        return std::nullopt;
    }
    const QByteArray xml = property_list_as_xml(value);
    recents_log(" : infinite loop cross");
    if (xml.isNull()) {
        conversion.folder.remove(xml_name);
        return conversion.folder.read(xml_name, xml_size_limit); // fails, as it does behind a tool that left no file
    }
    return conversion.folder.write(xml_name, xml) ? xml : QByteArray();
}

// The file of an earlier conversion under the same name is gone before the next one: what a recent is said to hold must
// never be read from another's.
std::optional<QByteArray> mail_ios_uid::xml_from_tool(const QString &xml_name, const QString &list_name,
                                                      metadata_conversion &conversion)
{
    const QString path = tmp_directory_QString + QLatin1Char('/');
    conversion.folder.remove(xml_name);
    process_finished_bool = false;
    property_list_tool process(conversion.tool, path + list_name, path + xml_name,
                               [this](int exit_code) { slot_process_finished(exit_code); });
    recents_log(" : running");
    while (!process_finished_bool && !cancel_extraction_bool) {
        process.turn_event_loop();
    }
    if (cancel_extraction_bool) { // the tool may have been ended by what cancelled the run
        return std::nullopt;
    }
    recents_log(" : infinite loop cross");
    return conversion.folder.read(xml_name, xml_size_limit);
}

QByteArray mail_ios_uid::converted_metadata(const QString &name, const QByteArray &value,
                                            metadata_conversion &conversion)
{
    const QString list_name = name + QLatin1String(".plist");
    const QString xml_name = name + QLatin1String(".xml");
    const QString path = tmp_directory_QString + QLatin1Char('/');
    if (!conversion.folder.write(list_name, value)) {
        recents_log.failure(list_file_failure, path + list_name, conversion.folder.error_text());
        return QByteArray();
    }
    const std::optional<QByteArray> xml = conversion.tool.isEmpty() ? xml_from_this_process(xml_name, value, conversion)
                                                                    : xml_from_tool(xml_name, list_name, conversion);
    if (!xml) {
        return QByteArray();
    }
    conversion.count(value.size() + xml->size());
    if (xml->isNull()) {
        recents_log.failure(xml_file_failure, path + xml_name, conversion.folder.error_text());
    }
    return *xml;
}

bool mail_ios_uid::read_metadata(recent_details &details, const QString &recent_id, recent_metadata &metadata)
{
    source_query &rows = details.metadata;
    if (!rows.execute({recent_id})) {
        return false;
    }
    while (rows.next() && !cancel_extraction_bool && details.conversion.has_room()) {
        const QString key = rows.text("key");
        const QByteArray xml = converted_metadata(key + rows.text("recent_id"), rows.bytes_at(metadata_value_position),
                                                  details.conversion);
        if (xml.isNull()) {
            continue;
        }
        if (key == QLatin1String("corerecents:event-time")) {
            metadata.event_date = without_zone_letter(value_between(date_markers, xml));
        } else if (key == QLatin1String("corerecents:subject")) {
            metadata.subject = value_between(string_markers, xml);
        } else if (key == QLatin1String("corerecents:reference-url")) {
            metadata.text = mail_message_sms_text(message_guid_of(value_between(string_markers, xml)));
        }
    }
    return !rows.was_cancelled() && !cancel_extraction_bool;
}

QString mail_ios_uid::mail_message_sms_text(const QString &guid)
{
    static constexpr operation_log log{"QString mail_ios_uid::mail_message_sms_text(QString)"};
    if (guid.trimmed().isEmpty()) {
        return QString();
    }
    if (!short_messages) {
        const QString copy = plugin_helper_obj->get_adhoc_path_for_database(sms_file_QString);
        if (copy.isEmpty()) {
            return QString();
        }
        short_messages = std::make_unique<short_message_reader>(log, copy, cancel_extraction_bool);
    }
    return short_messages->text_of(guid);
}

// --- The operation ---------------------------------------------------------------------------------------------------

void mail_ios_uid::extract_mail_recents()
{
    const operation_log &log = recents_log;
    log("[extract_mail_recents] -Start");
    const QString recents_copy = plugin_helper_obj->get_adhoc_path_for_database(recents_file_QString);
    if (recents_copy.isEmpty()) {
        return;
    }
    result_session destination{log, destination_db_path_QString};
    if (!destination.open(destination_failure)) {
        return;
    }
    source_session source{log, recents_copy, cancel_extraction_bool};
    if (!source.open(source_failure)) {
        return;
    }
    recent_details details{source,
                           {property_list_tool::path(source_root_path_QString), working_folder(tmp_directory_QString)}};
    source_query recents{source, log, select_recents, select_recents_failure};
    recents.leave_out_large_values("ROWID");
    if (!recents.execute()) {
        return;
    }
    const auto close_short_messages = qScopeGuard([this] { short_messages.reset(); });
    row_writer rows{*this, destination, log, insert_recent, insert_recent_failure};
    const row_paths paths = paths_of_recents();
    while (recents.next()) {
        if (cancel_extraction_bool) {
            return;
        }
        const std::optional<row_values> row = row_of_recent(recents, details, paths);
        if (cancel_extraction_bool) { // what was cut off must not stand in a row
            return;
        }
        if (row) {
            rows.insert(*row);
        }
    }
    if (recents.was_cancelled()) {
        return;
    }
    destination.finish();
    log("[extract_mail_recents] -End");
}

std::optional<row_values> mail_ios_uid::row_of_recent(source_query &recent, recent_details &details,
                                                      const row_paths &paths)
{
    const QString recent_id = recent.text_at(row_id_position);
    QString receivers;
    recent_metadata metadata;
    if (!read_receivers(details.contacts, recent_id, recent.text("count"), cancel_extraction_bool, receivers) ||
        !read_metadata(details, recent_id, metadata)) {
        return std::nullopt;
    }
    return row_values{
        {"last_receiver_display_name", recent.text("display_name")},
        {"bundle_id", recent.text("bundle_identifier")},
        {"sender_address", recent.text("sending_address")},
        {"original_source", recent.text("original_source")},
        {"mailed_timestamp", seconds_of_list(recent.text("dates"), cancel_extraction_bool)},
        {"last_mailed_timestamp", seconds_of(recent.text("last_date"))},
        {"record_hash", recent.text("record_hash")},
        {"receiver_count", recent.text("count")},
        {"receiver_details", receivers},
        {"subject", metadata.subject},
        {"text", metadata.text},
        {"event_timestamp", plugin_static_function::convert_T_Z_time_to_epoch(metadata.event_date)},
        {"source_file", paths.source_file},
        {"artifacts_relation_source_file", paths.artifacts_relation_source_file},
        {"source_count_name", plugin_static_function::get_source_count_name()},
        {"os_scheme_display", os_scheme_display_QString},
    };
}

// The root of the source is taken off the first path only.
mail_ios_uid::row_paths mail_ios_uid::paths_of_recents() const
{
    const QString recents = behind_source_root(recents_file_QString.trimmed());
    const QString messages = sms_file_QString.trimmed();
    const bool needs_slash = !messages.isEmpty() && !messages.startsWith(QLatin1Char('/'));
    return {recents + QLatin1Char(';') + (needs_slash ? QLatin1String("/") : QLatin1String()) + messages,
            QLatin1Char('/') + recents_domain_QString + QLatin1String(";/") + sms_domain_QString};
}
