/// The files of a macOS mail store as a floor touches them: one walk that lists the mail files, each mail file opened,
/// asked and read once, each folder of attachments listed once.
#pragma once

#include <cstdint>
#include <map>
#include <sqlite3.h>
#include <string>
#include <unordered_map>

namespace bench {

/// What the rows say of a file; an empty text is NULL there.
struct file_facts
{
    std::string size;
    std::string created;    ///< seconds since 1970
    std::string attributes; ///< the document of extended attributes
    const char *exists = "NO";
};

struct mail_file_facts : file_facts
{
    std::string name;
    std::string bcc;       ///< the header line as it stands in the file
    std::string reply_to;  ///< likewise
    std::string addressed; ///< its path behind the source root, empty without any of the two
};

class macos_mail_files
{
public:
    /// In: the source root and the folder of the store behind it, neither ending in a slash.
    macos_mail_files(std::string root, std::string store_folder);

    /// Walks the store and adds a row to emlx_list for each mail file.
    void list(sqlite3 *connection, const std::string &source_count_name);

    /// mail_name(id), mail_bcc(id), mail_reply_to(id), mail_addressed(id), mail_size(id), mail_created(id),
    /// mail_exists(id) and mail_attributes(id), of the mail file of a row of the index; NULL for what is not there.
    /// Called one behind the other for the same id, they touch the file once. The connection must not outlive this
    /// object.
    void add_functions(sqlite3 *connection);

    /// Lists the folder of a mail's attachments. In: path (behind the root) and name of the mail file. Out: the paths
    /// of the files in it, behind the root, by name.
    std::map<std::string, std::string> attachments_of(const std::string &mail_path, const std::string &mail_name) const;

    /// What the rows say of any file. In: its path behind the root.
    file_facts facts_of(const std::string &path) const;

private:
    template <auto text> // a member of mail_file_facts
    static void text_function(sqlite3_context *context, int count, sqlite3_value **values);
    static void exists_function(sqlite3_context *context, int count, sqlite3_value **values);
    const mail_file_facts &read(sqlite3_int64 id);

    std::string root;
    std::string store_folder;
    std::unordered_map<int64_t, std::string> path_of_id; ///< behind the root
    int64_t id_in_hand = -1;
    mail_file_facts in_hand;
    std::string content; ///< of the file in hand, so that its memory is used again
};

/// Out: the folder of the attachments of all mails beside that mail file. In: path and name of the mail file.
std::string attachments_folder(const std::string &mail_path, const std::string &mail_name);

} // namespace bench
