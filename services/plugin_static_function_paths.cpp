// Source paths: what of a path goes into a result row, and whose path it is.
#include "core/plugin_static_function.h"

#include <QSet>

namespace {

const QLatin1String users_folder("/Users/");

bool is_home_folder(const QString &source_type)
{
    return source_type == QLatin1String("macOS_Home_Directory");
}

QString with_slash_in_front(const QString &path)
{
    return path.startsWith(QLatin1Char('/')) || path.trimmed().isEmpty() ? path : QLatin1Char('/') + path;
}

// A home-folder source keeps paths relative to the home: what stands behind the user's name.
QString behind_user(const QString &path, const QString &system_user, const QString &source_type)
{
    const int found = is_home_folder(source_type) ? path.indexOf(system_user) : -1;
    return found < 0 ? path : path.mid(found + system_user.size());
}

} // namespace

QString plugin_static_function::get_complete_file_path(const QString &path, const QString &system_user,
                                                       const QString &source_type)
{
    const int user_end = is_home_folder(source_type) && path.startsWith(users_folder)
                             ? path.indexOf(QLatin1Char('/'), users_folder.size())
                             : -1;
    return with_slash_in_front(user_end < 0 ? path : users_folder + system_user + path.mid(user_end));
}

QString plugin_static_function::get_relative_file_path(const QString &path, const QString &system_user,
                                                       const QString &source_type)
{
    return with_slash_in_front(behind_user(path, system_user, source_type));
}

artifact_source_file plugin_static_function::get_final_artifact_source_file(const QString &path,
                                                                            const QString &system_user,
                                                                            const QString &source_type)
{
    return {with_slash_in_front(behind_user(path, system_user, source_type)),
            is_home_folder(source_type) ? path : QString()};
}

struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_system_account
plugin_static_function::extract_user_name_from_sourcefile(const QString &path, const QString &source_root)
{
    struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_system_account user;
    if (system_account_QList.isEmpty()) {
        return user;
    }
    const QStringList parts = path.mid(source_root.size()).split(QLatin1Char('/'));
    if (parts.size() < 2) {
        return user;
    }
    user.system_user = parts.at(1);
    for (const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_system_account &account : qAsConst(system_account_QList)) {
        if (account.system_user == user.system_user) {
            return account;
        }
    }
    return user;
}

QStringList plugin_static_function::get_unmatched_varible_list_of_parentlist(const QStringList &parent_list,
                                                                             const QStringList &other_list)
{
    const QSet<QString> others(other_list.cbegin(), other_list.cend());
    QStringList unmatched;
    for (const QString &entry : parent_list) {
        if (bool_cancel_extraction) {
            break;
        }
        if (!others.contains(entry)) {
            unmatched.append(entry);
        }
    }
    return unmatched;
}
