/// SQL functions for what a floor cannot say in SQLite's own words.
#pragma once

#include <sqlite3.h>
#include <string>

namespace bench {

/// percent_decoded(text), behind_last_slash(text), and the aggregate joined_once(text): the texts joined by ",", each
/// one at its first appearance only, NULL for no rows.
void add_text_functions(sqlite3 *connection);

/// Finds mail files below the folder of all mails, one folder a mail.
class mail_folder_lister
{
public:
    /// In: the folder, and the path that stands for it in the rows; both end in a slash.
    mail_folder_lister(const std::string &folder, std::string row_prefix);
    ~mail_folder_lister();
    mail_folder_lister(const mail_folder_lister &) = delete;
    mail_folder_lister &operator=(const mail_folder_lister &) = delete;

    /// mail_file_path(id) and mail_file_name(id): of the last ".emlx" below the folder of that name; NULL for none.
    /// Called one behind the other for the same id, they list the folder once. The connection must not outlive this
    /// object.
    void add_functions(sqlite3 *connection);

private:
    static void path_function(sqlite3_context *context, int count, sqlite3_value **values);
    static void name_function(sqlite3_context *context, int count, sqlite3_value **values);
    void find(const char *id);
    void list(int parent, const std::string &name, const std::string &row_path);

    int folder;
    std::string row_prefix;
    std::string last_id;
    std::string found;
};

} // namespace bench
