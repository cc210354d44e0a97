#include "bench/macos_mail_files.h"

#include "bench/floor_database.h"

#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace bench {

namespace {

constexpr std::string_view mail_suffix = ".emlx";
const std::string document_start = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Extended_Attributes_XML_Header";

struct folder_closer
{
    void operator()(DIR *folder) const { ::closedir(folder); }
};

bool ends_in(std::string_view text, std::string_view end)
{
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

/// Calls `take(path, name)` for each file below the folder. Paths are `path` with what lies below it.
template <typename file_taker>
void walk(int parent, const std::string &path, const char *name, const file_taker &take)
{
    const int descriptor = ::openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) {
        return;
    }
    const std::unique_ptr<DIR, folder_closer> entries(::fdopendir(descriptor));
    while (const dirent *entry = ::readdir(entries.get())) {
        const std::string_view entry_name = entry->d_name;
        if (entry->d_type != DT_DIR) {
            take(path + '/' + entry->d_name, entry_name);
        } else if (entry_name != "." && entry_name != "..") {
            walk(descriptor, path + '/' + entry->d_name, entry->d_name, take);
        }
    }
}

std::string attributes_document(const std::string &path)
{
    std::string document = document_start + ">\n    <Extended_Attributes_Artifact_Source_Header>\n        <File_Path>";
    for (const char character : path) {
        document += character == '&' ? std::string("&amp;") : std::string(1, character);
    }
    return document + "</File_Path>\n    </Extended_Attributes_Artifact_Source_Header>\n"
                      "</Extended_Attributes_XML_Header>\n";
}

file_facts facts_of_open_file(int descriptor, const std::string &path)
{
    struct statx status = {};
    if (::statx(descriptor, "", AT_EMPTY_PATH, STATX_SIZE | STATX_BTIME, &status) != 0) {
        return {};
    }
    ::flistxattr(descriptor, nullptr, 0);
    file_facts facts;
    facts.size = std::to_string(status.stx_size);
    facts.created = std::to_string(status.stx_btime.tv_sec);
    facts.attributes = attributes_document(path);
    facts.exists = "YES";
    return facts;
}

/// Takes the first line of each of the two fields.
void find_addresses(std::string_view content, mail_file_facts &mail)
{
    for (size_t start = 0; start < content.size();) {
        const size_t end = std::min(content.find('\n', start), content.size());
        const std::string_view line = content.substr(start, end - start);
        const std::string_view field = line.substr(0, line.find(':') == std::string_view::npos ? 0 : line.find(':'));
        if (mail.bcc.empty() && (field == "Bcc" || field == "BCC")) {
            mail.bcc = line.substr(field.size() + 1);
        } else if (mail.reply_to.empty() && (field == "Reply-To" || field == "Reply-to")) {
            mail.reply_to = line.substr(field.size() + 1);
        }
        start = end + 1;
    }
}

void bind(sqlite3_stmt *statement, int position, const std::string &text)
{
    sqlite3_bind_text(statement, position, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
}

} // namespace

macos_mail_files::macos_mail_files(std::string root, std::string store_folder)
    : root(std::move(root)), store_folder(std::move(store_folder))
{
    in_hand.attributes = document_start + "/>\n";
}

void macos_mail_files::list(sqlite3 *connection, const std::string &source_count_name)
{
    const evidence::sqlite_statement insert =
        prepare(connection, "INSERT INTO emlx_list(bookmark,file_path,file_name,source_file,"
                            "artifacts_relation_source_file,source_count_name) VALUES (0,?1,?2,?3,'',?4)");
    const std::string store_path = root + store_folder;
    walk(AT_FDCWD, store_folder, store_path.c_str(), [&](const std::string &path, std::string_view name) {
        if (!ends_in(name, mail_suffix)) {
            return;
        }
        const std::string file_path = root + path;
        const std::string file_name(name);
        const std::string account_folder = root + path.substr(0, path.find('/', store_folder.size() + 1));
        bind(insert.get(), 1, file_path);
        bind(insert.get(), 2, file_name);
        bind(insert.get(), 3, account_folder);
        bind(insert.get(), 4, source_count_name);
        sqlite3_step(insert.get());
        sqlite3_reset(insert.get());
        path_of_id.emplace(std::strtoll(file_name.c_str(), nullptr, 10), path);
    });
}

template <auto text>
void macos_mail_files::text_function(sqlite3_context *context, int /*count*/, sqlite3_value **values)
{
    auto *files = static_cast<macos_mail_files *>(sqlite3_user_data(context));
    const std::string &value = files->read(sqlite3_value_int64(values[0])).*text;
    if (!value.empty()) {
        sqlite3_result_text(context, value.data(), static_cast<int>(value.size()), SQLITE_TRANSIENT);
    }
}

void macos_mail_files::exists_function(sqlite3_context *context, int /*count*/, sqlite3_value **values)
{
    auto *files = static_cast<macos_mail_files *>(sqlite3_user_data(context));
    sqlite3_result_text(context, files->read(sqlite3_value_int64(values[0])).exists, -1, SQLITE_STATIC);
}

void macos_mail_files::add_functions(sqlite3 *connection)
{
    const auto add = [this, connection](const char *name, auto function) {
        sqlite3_create_function(connection, name, 1, SQLITE_UTF8, this, function, nullptr, nullptr);
    };
    add("mail_name", text_function<&mail_file_facts::name>);
    add("mail_bcc", text_function<&mail_file_facts::bcc>);
    add("mail_reply_to", text_function<&mail_file_facts::reply_to>);
    add("mail_addressed", text_function<&mail_file_facts::addressed>);
    add("mail_size", text_function<&file_facts::size>);
    add("mail_created", text_function<&file_facts::created>);
    add("mail_attributes", text_function<&file_facts::attributes>);
    add("mail_exists", exists_function);
}

const mail_file_facts &macos_mail_files::read(sqlite3_int64 id)
{
    if (id == id_in_hand) {
        return in_hand;
    }
    id_in_hand = id;
    in_hand = mail_file_facts();
    in_hand.attributes = document_start + "/>\n";
    const auto found = path_of_id.find(id);
    if (found == path_of_id.end()) {
        return in_hand;
    }
    const std::string &path = found->second;
    const int descriptor = ::open((root + path).c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        return in_hand;
    }
    static_cast<file_facts &>(in_hand) = facts_of_open_file(descriptor, path);
    content.resize(std::stoull(in_hand.size));
    const ssize_t count = ::read(descriptor, content.data(), content.size());
    ::close(descriptor);
    find_addresses(std::string_view(content.data(), count > 0 ? static_cast<size_t>(count) : 0), in_hand);
    in_hand.name = path.substr(path.rfind('/') + 1);
    in_hand.addressed = in_hand.bcc.empty() && in_hand.reply_to.empty() ? std::string() : path;
    return in_hand;
}

std::map<std::string, std::string> macos_mail_files::attachments_of(const std::string &mail_path,
                                                                    const std::string &mail_name) const
{
    std::map<std::string, std::string> path_of_name;
    if (!mail_path.empty()) {
        const std::string folder = attachments_folder(mail_path, mail_name) + mail_name.substr(0, mail_name.find('.'));
        walk(AT_FDCWD, folder, (root + folder).c_str(),
             [&](const std::string &path, std::string_view name) { path_of_name.emplace(name, path); });
    }
    return path_of_name;
}

file_facts macos_mail_files::facts_of(const std::string &path) const
{
    file_facts facts;
    facts.attributes = document_start + "/>\n";
    const int descriptor = path.empty() ? -1 : ::open((root + path).c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor >= 0) {
        facts = facts_of_open_file(descriptor, path);
        ::close(descriptor);
    }
    return facts;
}

std::string attachments_folder(const std::string &mail_path, const std::string &mail_name)
{
    constexpr std::string_view messages = "Messages/";
    return mail_path.substr(0, mail_path.size() - mail_name.size() - messages.size()) + "Attachments/";
}

} // namespace bench
