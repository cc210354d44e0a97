#include "host/source_recognition.h"

#include "host/command_line.h"
#include "host/ios_backup.h"
#include "host/unreadable_files.h"
#include "services/source_files.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace {

// A path below the root of a source that tells its scheme; where a second one is named, both must exist.
struct root_mark
{
    const char *scheme;
    const char *path;
    const char *and_also;
};

// A path below a home folder that tells the scheme of that home, and of a volume with such a home below "Users".
struct home_mark
{
    const char *scheme;
    const char *path;
};

constexpr const char *backup_scheme = "iOS_UID"; // recognised without any mark too, by the names of its files

// clang-format off
constexpr root_mark root_marks[] = {
    {"iOS_Uniform", "private/var/mobile/Library/Mail",     nullptr},
    {"iOS_Uniform", "private/var/mobile/Library/Accounts", nullptr},
    {"iOS_UID",     "Manifest.db",                         nullptr},
    {"iOS_UID",     "Manifest.mbdb",                       nullptr},
    {"iOS_UID",     "Manifest.plist",                      "Info.plist"},
    {"iOS_UID",     "Manifest.plist",                      "Status.plist"},
    {"iOS_UID",     "Info.plist",                          "Status.plist"},
};

constexpr home_mark home_marks[] = {
    {"macOS", "Library/Mail"},
    {"macOS", "Library/Accounts"},
    {"macOS", "Library/Containers/com.apple.mail"},
    {"winOS", "AppData/Local"},
};
// clang-format on

bool exists_below(const QString &folder, const char *path)
{
    return path == nullptr || QFileInfo::exists(folder + QLatin1Char('/') + QLatin1String(path));
}

bool belongs_to(const char *scheme, const scheme_entry &wanted)
{
    return QLatin1String(scheme) == QLatin1String(wanted.internal_name);
}

bool looks_like_home(const QString &folder, const scheme_entry &scheme)
{
    return std::any_of(std::begin(home_marks), std::end(home_marks), [&](const home_mark &mark) {
        return belongs_to(mark.scheme, scheme) && exists_below(folder, mark.path);
    });
}

// Links are left out: one in the evidence could lead out of it.
QStringList folders_below_users(const QString &root)
{
    QStringList names;
    folder_walk users(root + QStringLiteral("Users"), links::refuse);
    while (users.next()) {
        if (users.kind() == folder_walk::entry_kind::folder) {
            names.append(QFile::decodeName(users.relative_path()));
            users.skip_folder();
        }
    }
    names.sort();
    return names;
}

bool looks_like_volume(const QString &root, const scheme_entry &scheme)
{
    const QStringList folders = folders_below_users(root);
    return std::any_of(folders.begin(), folders.end(), [&](const QString &name) {
        return looks_like_home(root + QStringLiteral("Users/") + name, scheme);
    });
}

bool looks_like_root(const QString &root, const scheme_entry &scheme)
{
    return looks_like_volume(root, scheme) ||
           std::any_of(std::begin(root_marks), std::end(root_marks),
                       [&](const root_mark &mark) {
                           return belongs_to(mark.scheme, scheme) && exists_below(root, mark.path) &&
                                  exists_below(root, mark.and_also);
                       }) ||
           (belongs_to(backup_scheme, scheme) && has_backup_files(root));
}

// A folder that may not be looked into is told.
bool is_folder(const QString &path)
{
    status_of(path);
    return QFileInfo(path).isDir();
}

// Every home of a scheme has the folder that its marks begin with; "Shared" and the like have not.
QStringList home_folders_below(const QString &root, const scheme_entry &scheme)
{
    QStringList names;
    for (const QString &name : folders_below_users(root)) {
        const bool is_home = std::any_of(std::begin(home_marks), std::end(home_marks), [&](const home_mark &mark) {
            const QString top = QString::fromLatin1(mark.path).section(QLatin1Char('/'), 0, 0);
            return belongs_to(mark.scheme, scheme) &&
                   is_folder(root + QStringLiteral("Users/") + name + QLatin1Char('/') + top);
        });
        if (is_home) {
            names += name;
        }
    }
    return names;
}

QString with_slash(const QString &folder)
{
    return folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/');
}

const scheme_entry &only_scheme(const QString &source, bool is_home)
{
    std::vector<const scheme_entry *> fitting;
    QStringList names;
    for (const scheme_entry *scheme : all_schemes()) {
        const bool fits = is_home ? looks_like_home(source, *scheme)
                                  : looks_like_root(with_slash(source), *scheme) || looks_like_home(source, *scheme);
        if (fits) {
            fitting.push_back(scheme);
            names += QString::fromLatin1(scheme->internal_name);
        }
    }
    if (fitting.empty()) {
        const QString unread = unreadable_files().join(QLatin1String("; "));
        throw unusable_input{
            QStringLiteral("\"%1\" is not recognised as a source of mail data: give its root folder, "
                           "or say what it is with --scheme %2%3")
                .arg(source, scheme_names().join(QLatin1Char('|')),
                     unread.isEmpty() ? QString() : QStringLiteral(" (not readable: %1)").arg(unread))};
    }
    if (fitting.size() > 1) {
        throw unusable_input{QStringLiteral("\"%1\" looks like a source of several schemes: choose with --scheme %2")
                                 .arg(source, names.join(QLatin1Char('|')))};
    }
    return *fitting.front();
}

// The plug-in looks for a home at root + "Users/" + user.
recognised_source as_home(const QString &source, const scheme_entry &scheme)
{
    const QFileInfo home(source);
    const QFileInfo users(home.path());
    if (users.fileName() != QLatin1String("Users")) {
        throw unusable_input{QStringLiteral("the home folder \"%1\" must lie directly below a folder named \"Users\", "
                                            "as in /evidence/Users/alice, because the plug-in looks for it there")
                                 .arg(source)};
    }
    const bool is_macos = QLatin1String(scheme.internal_name) == QLatin1String("macOS");
    return {&scheme,
            with_slash(users.path()),
            is_macos ? QStringLiteral("macOS_Home_Directory") : QStringLiteral("Directory"),
            {home.fileName()}};
}

} // namespace

recognised_source recognise_source(const QString &source, const QString &scheme_name, bool is_home)
{
    const scheme_entry *scheme = find_scheme(scheme_name);
    if (scheme == nullptr && scheme_name != QLatin1String("auto")) {
        throw unusable_input{QStringLiteral("there is no scheme \"%1\": the schemes are %2, or auto")
                                 .arg(scheme_name, scheme_names().join(QStringLiteral(", ")))};
    }
    if (scheme == nullptr) {
        scheme = &only_scheme(source, is_home);
    }
    if (is_home) {
        if (!scheme->has_home_folders) {
            throw unusable_input{QStringLiteral("--home belongs to the schemes macOS and winOS, not to %1")
                                     .arg(QLatin1String(scheme->internal_name))};
        }
        return as_home(source, *scheme);
    }
    const QString root = with_slash(source);
    if (!looks_like_root(root, *scheme) && looks_like_home(source, *scheme)) {
        throw unusable_input{QStringLiteral("\"%1\" is one home folder, not a volume: add --home").arg(source)};
    }
    return {scheme, root, QStringLiteral("Directory"),
            scheme->has_home_folders ? home_folders_below(root, *scheme) : QStringList()};
}
