#include "trial/leaning.h"

#include <algorithm>
#include <cstring>

namespace trial {

namespace {

enum class homes
{
    same, ///< a file of one home is nothing to the rows of another
    all
};

/// Beyond the files that they name, rows lean on those whose path holds the text. A column's name in braces stands for
/// its value, with "/.." behind for the folder that its value names.
struct leaning
{
    const char *scheme;
    const char *table;    ///< empty: all
    const char *row_part; ///< a text that the rows hold
    const char *path_part;
    homes where;
};

// clang-format off
constexpr leaning leanings[] = {
    {"ios-file-tree",   "messages",        "",             "/Accounts/",                 homes::same},
    {"ios-file-tree",   "messages",        "",             "/MessageData/{row_id}/",     homes::same},
    {"ios-file-tree",   "messages",        "",             "{emlx_file_path/..}/",       homes::same},
    // The manifest says which file is which.
    {"ios-backup",      "",                "",             "Manifest.",                  homes::same},
    {"macos-volume",    "messages",        "",             "/Messages/{emlx_file_name}", homes::same},
    {"macos-volume",    "all_attachments", "",             "/Messages/{message_id}.",    homes::same},
    {"macos-volume",    "all_attachments", "",             "/Attachments/{message_id}/", homes::same},
    {"macos-volume",    "all_attachments", "/Mail/V2/",    "/Mail/V2/MailData/",         homes::same},
    {"macos-volume",    "all_attachments", "/Mail/V2/",    "/Data/Messages/",            homes::same},
    {"macos-volume",    "signature",       "",             "/com.apple.mail.plist",      homes::same},
    {"macos-volume",    "signature",       "",             "/Signatures/",               homes::same},
    {"macos-volume",    "accounts",        "",             "/Signatures/",               homes::same},
    {"macos-volume",    "accounts",        "",             "/Mail/V",                    homes::same},
    // Accounts are looked up among those of all users, and both users of the sample have the same ones.
    {"macos-volume",    "messages",        "",             "/Accounts",                  homes::all},
    {"macos-volume",    "accounts",        "",             "/Accounts",                  homes::all},
    {"macos-volume",    "signature",       "",             "/Accounts",                  homes::all},
    {"macos-volume",    "preferences",     "",             "/Accounts",                  homes::all},
    {"macos-volume",    "preferences",     "",             "/MailData/",                 homes::all},
    // No store is read without its index.
    {"macos-volume",    "emlx_list",       "",             "/Envelope Index",            homes::same},
    // The first store that does not open ends the reading of all stores.
    {"windows-profile", "",                "/LocalState/", "/DBStore",                   homes::all},
};
// clang-format on

bool names(const result_row &row, const std::string &damaged)
{
    const int size = static_cast<int>(damaged.size());
    return std::any_of(row.cells.begin(), row.cells.end(), [&](const auto &cell) {
        for (int at = cell.second.indexOf(damaged.c_str()); at >= 0;
             at = cell.second.indexOf(damaged.c_str(), at + 1)) {
            const char behind = at + size < cell.second.size() ? cell.second[at + size] : '/';
            if (at > 0 && cell.second[at - 1] == '/' && std::strchr("/;<", behind) != nullptr) {
                return true;
            }
        }
        return false;
    });
}

QByteArray filled(QByteArray path_part, const result_row &row)
{
    const int begin = path_part.indexOf('{');
    const int end = path_part.indexOf('}');
    if (begin >= 0) {
        QByteArray column = path_part.mid(begin + 1, end - begin - 1);
        const bool is_folder = column.endsWith("/..");
        column.chop(is_folder ? 3 : 0);
        const auto cell = row.cells.find(column);
        QByteArray value = cell == row.cells.end() ? QByteArray() : cell->second;
        if (is_folder) {
            value.truncate(std::max(value.lastIndexOf('/'), 0));
        }
        path_part.replace(begin, end - begin + 1, value.isEmpty() ? QByteArray("{}") : value);
    }
    return path_part;
}

// Out: the folder of the home in a relative path, "Users/anna/"; empty where there is none.
QByteArray home_of(const std::string &path)
{
    const QByteArray bytes(path.c_str());
    return bytes.startsWith("Users/") ? bytes.left(bytes.indexOf('/', 6) + 1) : QByteArray();
}

bool leans_on(const scheme &source_scheme, const QByteArray &table, const result_row &row, const std::string &damaged)
{
    const QByteArray path = QByteArray("/") + damaged.c_str();
    const QByteArray home = home_of(damaged);
    return std::any_of(std::begin(leanings), std::end(leanings), [&](const leaning &each) {
        return qstrcmp(each.scheme, source_scheme.name) == 0 && (*each.table == '\0' || table == each.table) &&
               row.text.contains(each.row_part) && path.contains(filled(each.path_part, row)) &&
               (each.where == homes::all || home.isEmpty() || row.text.contains(home));
    });
}

} // namespace

result_rows rows_without(const scheme &source_scheme, const result_rows &whole, const std::set<std::string> &damaged)
{
    result_rows rest;
    for (const auto &[table, rows] : whole) {
        const QByteArray &name = table;
        std::copy_if(rows.begin(), rows.end(), std::back_inserter(rest[table]), [&](const result_row &row) {
            return std::none_of(damaged.begin(), damaged.end(), [&](const std::string &path) {
                return names(row, path) || leans_on(source_scheme, name, row, path);
            });
        });
    }
    return rest;
}

} // namespace trial
