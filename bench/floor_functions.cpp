#include "bench/floor_functions.h"

#include <algorithm>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <new>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace bench {

namespace {

constexpr std::string_view mail_suffix = ".emlx";

struct folder_closer
{
    void operator()(DIR *folder) const { ::closedir(folder); }
};

int digit(char character)
{
    if (character >= '0' && character <= '9') {
        return character - '0';
    }
    const char lower = static_cast<char>(character | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

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

std::string_view behind_last_slash(std::string_view text)
{
    return text.substr(text.rfind('/') + 1);
}

void percent_decoded_function(sqlite3_context *context, int /*count*/, sqlite3_value **values)
{
    const std::string_view text = text_of(values[0]);
    std::string decoded;
    for (size_t position = 0; position < text.size(); ++position) {
        const bool is_escape = text[position] == '%' && position + 2 < text.size() && digit(text[position + 1]) >= 0 &&
                               digit(text[position + 2]) >= 0;
        decoded +=
            is_escape ? static_cast<char>(digit(text[position + 1]) * 16 + digit(text[position + 2])) : text[position];
        position += is_escape ? 2 : 0;
    }
    give(context, decoded);
}

void behind_last_slash_function(sqlite3_context *context, int /*count*/, sqlite3_value **values)
{
    give(context, behind_last_slash(text_of(values[0])));
}

using texts = std::vector<std::string>;

void joined_once_step(sqlite3_context *context, int /*count*/, sqlite3_value **values)
{
    auto **list = static_cast<texts **>(sqlite3_aggregate_context(context, sizeof(texts *)));
    if (*list == nullptr) {
        *list = new texts;
    }
    const std::string_view text = text_of(values[0]);
    if (std::find((*list)->begin(), (*list)->end(), text) == (*list)->end()) {
        (*list)->emplace_back(text);
    }
}

void joined_once_result(sqlite3_context *context)
{
    auto **list = static_cast<texts **>(sqlite3_aggregate_context(context, 0));
    if (list == nullptr) {
        return;
    }
    const std::unique_ptr<texts> owner(*list);
    std::string joined = owner->front();
    for (size_t index = 1; index < owner->size(); ++index) {
        joined.append(1, ',').append((*owner)[index]);
    }
    give(context, joined);
}

} // namespace

void add_text_functions(sqlite3 *connection)
{
    constexpr int flags = SQLITE_UTF8 | SQLITE_DETERMINISTIC;
    sqlite3_create_function(connection, "percent_decoded", 1, flags, nullptr, percent_decoded_function, nullptr,
                            nullptr);
    sqlite3_create_function(connection, "behind_last_slash", 1, flags, nullptr, behind_last_slash_function, nullptr,
                            nullptr);
    sqlite3_create_function(connection, "joined_once", 1, flags, nullptr, nullptr, joined_once_step,
                            joined_once_result);
}

mail_folder_lister::mail_folder_lister(const std::string &path, std::string row_prefix)
    : folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)), row_prefix(std::move(row_prefix))
{
}

mail_folder_lister::~mail_folder_lister()
{
    if (folder >= 0) {
        ::close(folder);
    }
}

void mail_folder_lister::add_functions(sqlite3 *connection)
{
    sqlite3_create_function(connection, "mail_file_path", 1, SQLITE_UTF8, this, path_function, nullptr, nullptr);
    sqlite3_create_function(connection, "mail_file_name", 1, SQLITE_UTF8, this, name_function, nullptr, nullptr);
}

void mail_folder_lister::path_function(sqlite3_context *context, int /*count*/, sqlite3_value **values)
{
    auto *finder = static_cast<mail_folder_lister *>(sqlite3_user_data(context));
    finder->find(reinterpret_cast<const char *>(sqlite3_value_text(values[0])));
    if (!finder->found.empty()) {
        give(context, finder->found);
    }
}

void mail_folder_lister::name_function(sqlite3_context *context, int /*count*/, sqlite3_value **values)
{
    auto *finder = static_cast<mail_folder_lister *>(sqlite3_user_data(context));
    finder->find(reinterpret_cast<const char *>(sqlite3_value_text(values[0])));
    if (!finder->found.empty()) {
        give(context, behind_last_slash(finder->found));
    }
}

void mail_folder_lister::find(const char *id)
{
    if (last_id == id) {
        return;
    }
    last_id = id;
    found.clear();
    list(folder, last_id, row_prefix + last_id + '/');
}

void mail_folder_lister::list(int parent, const std::string &name, const std::string &row_path)
{
    const int descriptor = ::openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) {
        return;
    }
    const std::unique_ptr<DIR, folder_closer> entries(::fdopendir(descriptor));
    while (const dirent *entry = ::readdir(entries.get())) {
        const std::string_view entry_name = entry->d_name;
        if (entry->d_type == DT_DIR) {
            if (entry_name != "." && entry_name != "..") {
                list(descriptor, entry->d_name, row_path + entry->d_name + '/');
            }
        } else if (entry_name.size() >= mail_suffix.size() &&
                   entry_name.substr(entry_name.size() - mail_suffix.size()) == mail_suffix) {
            found = row_path;
            found += entry_name;
        }
    }
}

} // namespace bench
