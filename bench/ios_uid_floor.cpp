#include "bench/ios_uid_floor.h"

#include "bench/floor_database.h"
#include "bench/floor_tables.h"
#include "evidence/files.h"
#include "evidence/sample_ios_backup.h"

#include <plist/plist.h>

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <unistd.h>

namespace bench {

namespace {

// In both, ?1 to ?4 are source file, device path, number and display text of the source; %1 are the columns. The times
// of a recent are up to three, of 13 digits each.
constexpr const char *insert_recents =
    "INSERT INTO recents(%1) SELECT 0, c.display_name, c.bundle_identifier, c.sending_address, c.original_source,"
    " substr(c.dates, 1, 10)"
    " || CASE WHEN length(c.dates) > 13 THEN ';' || substr(c.dates, 15, 10) ELSE '' END"
    " || CASE WHEN length(c.dates) > 27 THEN ';' || substr(c.dates, 29, 10) ELSE '' END,"
    " substr(c.last_date, 1, 10), c.record_hash, c.count,"
    " (SELECT group_concat('Display Name: ' || o.display_name || ';Kind: ' || o.kind || ';Address: ' || o.address,"
    "  ';;') FROM r.contacts o WHERE o.recent_id = c.ROWID),"
    " (SELECT converted(m.key, m.recent_id, m.value, 'string') FROM r.metadata m"
    "  WHERE m.recent_id = c.ROWID AND m.key = 'corerecents:subject'),"
    " (SELECT t.text FROM s.message t WHERE t.guid = (SELECT message_guid(converted(m.key, m.recent_id, m.value,"
    "  'string')) FROM r.metadata m WHERE m.recent_id = c.ROWID AND m.key = 'corerecents:reference-url')),"
    " (SELECT strftime('%s', converted(m.key, m.recent_id, m.value, 'date'), 'utc') FROM r.metadata m"
    "  WHERE m.recent_id = c.ROWID AND m.key = 'corerecents:event-time'),"
    " ?1, ?2, ?3, ?4 FROM r.recents c";

constexpr const char *insert_recent_contacts =
    "INSERT INTO contacts(bookmark,recent_id,display_name,kind,address,source_file,artifacts_relation_source_file,"
    "source_count_name,os_scheme_display) SELECT 0, recent_id, display_name, kind, address, ?1, ?2, ?3, ?4 "
    "FROM r.contacts";

constexpr const char *insert_persons =
    "INSERT INTO contacts(bookmark,first_name,last_name,middle_name,nickname,display_name,organization,image_URI,"
    "jobtitle,creation_date,modification_date,prefix,suffix,note,birthday,alternate_birthday,first_phonetic,"
    "middle_phonetic,last_phonetic,phone_no,email,address,source_file,artifacts_relation_source_file,"
    "source_count_name,os_scheme_display) SELECT 0, p.First, p.Last, p.Middle, p.Nickname, p.DisplayName,"
    " p.Organization, p.ImageURI, p.JobTitle, p.CreationDate + 978307200, p.ModificationDate + 978307200, p.Prefix,"
    " p.Suffix, p.Note, p.Birthday + 978307200, p.AlternateBirthday, p.FirstPhonetic, p.MiddlePhonetic,"
    " p.LastPhonetic, f.c16Phone, f.c17Email, f.c18Address, ?1, ?2, ?3, ?4 "
    "FROM b.ABPerson p, b.ABPersonFullTextSearch_content f WHERE p.ROWID = f.docid AND f.c17Email IS NOT NULL";

std::string_view text_of(sqlite3_value *value)
{
    const auto *text = reinterpret_cast<const char *>(sqlite3_value_text(value));
    return text == nullptr ? std::string_view()
                           : std::string_view(text, static_cast<size_t>(sqlite3_value_bytes(value)));
}

void give(sqlite3_context *context, std::string_view text)
{
    sqlite3_result_text(context, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
}

bool write_whole_file(int folder, const std::string &name, std::string_view content)
{
    const int file = ::openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    const ssize_t written = ::write(file, content.data(), content.size());
    return ::close(file) == 0 && written == static_cast<ssize_t>(content.size());
}

std::string xml_of(std::string_view list)
{
    plist_t root = nullptr;
    plist_from_memory(list.data(), static_cast<uint32_t>(list.size()), &root);
    const std::unique_ptr<void, decltype(&plist_free)> owner(root, &plist_free);
    char *xml = nullptr;
    uint32_t size = 0;
    plist_to_xml(root, &xml, &size);
    const std::unique_ptr<char, decltype(&std::free)> xml_owner(xml, &std::free);
    return {xml, size};
}

/// converted(key, recent_id, value, element): writes both files, gives what stands in the XML element of that name,
/// dates without their zone letter. The values of the evidence have it.
void converted_function(sqlite3_context *context, int /*count*/, sqlite3_value **values)
{
    const int folder = *static_cast<int *>(sqlite3_user_data(context));
    const std::string name = std::string(text_of(values[0])).append(text_of(values[1]));
    const std::string_view list(static_cast<const char *>(sqlite3_value_blob(values[2])),
                                static_cast<size_t>(sqlite3_value_bytes(values[2])));
    const std::string xml = xml_of(list);
    if (!write_whole_file(folder, name + ".plist", list) || !write_whole_file(folder, name + ".xml", xml)) {
        sqlite3_result_error(context, "a file of a conversion cannot be written", -1);
        return;
    }
    const std::string element(text_of(values[3]));
    const size_t begin = xml.find('<' + element + '>') + element.size() + 2;
    const size_t end = xml.find("</" + element + '>', begin);
    const size_t zone_letter = element == "date" ? 1 : 0;
    give(context, std::string_view(xml).substr(begin, end - begin - zone_letter));
}

/// message_guid(url): of a URL that opens a short message; NULL for others.
void message_guid_function(sqlite3_context *context, int /*count*/, sqlite3_value **values)
{
    constexpr std::string_view beginning = "sms:/open?message-guid=";
    const std::string_view url = text_of(values[0]);
    if (url.substr(0, beginning.size()) == beginning) {
        give(context, url.substr(beginning.size()));
    }
}

QString place_of(const char *device_path)
{
    return evidence::ios_backup_place(QLatin1String(device_path), evidence::ios_backup_layout::manifest_database);
}

void insert(sqlite3 *connection, const QByteArray &statement, const QString &source_file, const QString &device_path)
{
    run(connection, statement.constData(),
        {source_file, device_path, QLatin1String(source_count_name), QLatin1String(scheme_display)});
}

// The short messages are named by their whole path, which is where the plug-in got them.
void insert_rows(sqlite3 *connection, const QString &root)
{
    const QLatin1Char slash('/');
    const QString recents = slash + place_of(evidence::ios_recents_path);
    const QString recents_device_path = slash + QLatin1String(evidence::ios_recents_path);
    insert(connection, insert_recent_contacts, recents, recents_device_path);
    insert(connection, insert_persons, slash + place_of(evidence::ios_address_book_path),
           slash + QLatin1String(evidence::ios_address_book_path));
    insert(connection, QByteArray(insert_recents).replace("%1", ios_recents_columns),
           recents + QLatin1Char(';') + root + place_of(evidence::ios_sms_path),
           recents_device_path + QLatin1String(";/") + QLatin1String(evidence::ios_sms_path));
}

void add_functions(sqlite3 *connection, int *folder)
{
    sqlite3_create_function(connection, "converted", 4, SQLITE_UTF8, folder, converted_function, nullptr, nullptr);
    sqlite3_create_function(connection, "message_guid", 1, SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr,
                            message_guid_function, nullptr, nullptr);
}

} // namespace

void run_ios_uid_floor(const QString &root, const QString &database_path, stopwatch &watch)
{
    const QString folder = evidence::folder_of(database_path) + QLatin1Char('/');
    const QString conversions = folder + QLatin1String("conversions/");
    evidence::make_folder(conversions);
    const QString recents = copy_database(root + place_of(evidence::ios_recents_path), folder);
    const QString book = copy_database(root + place_of(evidence::ios_address_book_path), folder);
    const QString messages = copy_database(root + place_of(evidence::ios_sms_path), folder);
    watch.lap("copy");

    int conversion_folder = ::open(conversions.toUtf8().constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    evidence::sqlite_connection connection = open_database(database_path);
    add_functions(connection.get(), &conversion_folder);
    run(connection.get(), create_statement_of("contacts"));
    run(connection.get(), create_statement_of("recents"));
    run(connection.get(), "ATTACH ? AS r", {recents});
    run(connection.get(), "ATTACH ? AS b", {book});
    run(connection.get(), "ATTACH ? AS s", {messages});
    run(connection.get(), "CREATE INDEX r.contacts_of_recent ON contacts(recent_id)"); // the copy is ours
    run(connection.get(), "CREATE INDEX r.metadata_of_recent ON metadata(recent_id)");
    run(connection.get(), "BEGIN");
    insert_rows(connection.get(), root);
    watch.lap("rows");
    run(connection.get(), "COMMIT");
    connection.reset();
    ::close(conversion_folder);
    watch.lap("commit");

    for (const QString &copy : {recents, book, messages}) {
        remove_database(copy);
    }
    std::filesystem::remove_all(conversions.toStdString());
    watch.lap("remove");
}

} // namespace bench
