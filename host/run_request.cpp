#include "host/run_request.h"

#include "host/command_line.h"
#include "host/ios_backup.h"
#include "host/plugin_library.h"
#include "host/source_recognition.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace {

using account = struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_system_account;

// clang-format off
const std::vector<option_description> run_options = {
    {"result",        option_description::value},
    {"scheme",        option_description::value},
    {"user",          option_description::repeatable_value},
    {"home",          option_description::flag},
    {"tabs",          option_description::value},
    {"source-number", option_description::value},
    {"clear",         option_description::flag},
    {"attribute",     option_description::repeatable_value},
    {"log",           option_description::value},
    {"encipher-log",  option_description::flag},
    {"plugin",        option_description::value},
};
// clang-format on

QString checked_source(const QString &given)
{
    const QFileInfo source(given);
    if (given.isEmpty() || !source.exists()) {
        throw unusable_input{
            QStringLiteral("there is no source \"%1\": give the root folder of the evidence").arg(given)};
    }
    if (!source.isDir()) {
        throw unusable_input{
            QStringLiteral("the source \"%1\" is not a folder: give the root folder of the evidence").arg(given)};
    }
    if (!source.isReadable() || !source.isExecutable()) {
        throw unusable_input{QStringLiteral("no permission to read the source \"%1\"").arg(given)};
    }
    return QDir::cleanPath(source.absoluteFilePath());
}

QStringList checked_tabs(const QString &given, const scheme_entry &scheme)
{
    QStringList known = tab_names(scheme);
    if (given == QLatin1String("all")) {
        return known;
    }
    QStringList wanted = given.split(QLatin1Char(','));
    for (QString &name : wanted) {
        name = name.trimmed();
        if (!known.contains(name)) {
            throw unusable_input{QStringLiteral("there is no tab \"%1\" in the scheme %2: its tabs are %3, or all")
                                     .arg(name, QLatin1String(scheme.internal_name), known.join(QStringLiteral(", ")))};
        }
    }
    QStringList in_order_of_work;
    std::copy_if(known.begin(), known.end(), std::back_inserter(in_order_of_work),
                 [&](const QString &name) { return wanted.contains(name); });
    return in_order_of_work;
}

// The name becomes part of a path below the source.
bool is_folder_name(const QString &name)
{
    return !name.isEmpty() && !name.contains(QLatin1Char('/')) && name != QLatin1String(".") &&
           name != QLatin1String("..");
}

account checked_user(const QString &given, const recognised_source &source)
{
    account user{given.section(QLatin1Char(':'), 0, 0), given.section(QLatin1Char(':'), 1)};
    if (!is_folder_name(user.system_user) || !(user.domain_user.isEmpty() || is_folder_name(user.domain_user))) {
        throw unusable_input{QStringLiteral("\"%1\" is no user: --user takes NAME or NAME:DOMAIN").arg(given)};
    }
    const bool has_home = source.home_folders.contains(user.system_user) ||
                          (!user.domain_user.isEmpty() && source.home_folders.contains(user.domain_user));
    if (!source.home_folders.isEmpty() && !has_home) {
        throw unusable_input{QStringLiteral("the source has no home folder of the user \"%1\": it has those of %2")
                                 .arg(user.system_user, source.home_folders.join(QStringLiteral(", ")))};
    }
    return user;
}

QList<account> users_of(const QStringList &given, const recognised_source &source)
{
    QList<account> users;
    if (given.isEmpty()) {
        for (const QString &name : source.home_folders) {
            users.append(account{name, QString()});
        }
    }
    for (const QString &user : given) {
        users.append(checked_user(user, source));
    }
    return users;
}

} // namespace

run_request checked_run_request(const QStringList &arguments)
{
    const command_arguments given{QStringLiteral("run"), arguments, run_options, {QStringLiteral("SOURCE")}, 1};
    if (given.value("result").isEmpty()) {
        throw unusable_input{QStringLiteral("\"run\" needs --result DIR, the folder for the results")};
    }
    if (given.has("log") && given.value("log").isEmpty()) {
        throw unusable_input{QStringLiteral("--log needs the path of the log file")};
    }
    if (given.has("encipher-log") && !given.has("log")) {
        throw unusable_input{QStringLiteral("--encipher-log needs --log FILE, the log that is to be enciphered")};
    }
    run_request request;
    request.source_number = given.whole_number("source-number", 1);
    request.clear_older_rows = given.has("clear");
    request.attributes = given.values("attribute");
    request.encipher_log = given.has("encipher-log");
    request.source = checked_source(given.at(0));

    const QString scheme = given.has("scheme") ? given.value("scheme") : QStringLiteral("auto");
    const recognised_source recognised = recognise_source(request.source, scheme, given.has("home"));
    request.scheme = recognised.scheme;
    if (is_ios_backup(request)) {
        refuse_encrypted_backup(recognised.root);
    }
    request.source_info.source_root_path_QString = recognised.root;
    request.source_info.source_type_internal_QString = recognised.source_type;
    request.source_info.os_scheme_display_QString = QString::fromLatin1(recognised.scheme->display_name);
    request.source_info.os_scheme_internal_QString = QString::fromLatin1(recognised.scheme->internal_name);
    request.source_info.system_account_QList = users_of(given.values("user"), recognised);
    request.tabs = checked_tabs(given.has("tabs") ? given.value("tabs") : QStringLiteral("all"), *request.scheme);

    request.places = checked_output_places(given.value("result"), given.value("log"), request.source);
    request.plugin_file = given.has("plugin") ? given.value("plugin") : default_plugin_file();
    return request;
}

bool is_ios_backup(const run_request &request)
{
    return QLatin1String(request.scheme->internal_name) == QLatin1String("iOS_UID");
}

QStringList reported_tabs(const run_request &request)
{
    struct possible_work
    {
        int first_count;
        int last_count;
    };
    std::vector<possible_work> works; // by the counts of finished tabs while the tab may be in work
    QStringList names_in_order;
    int least_before = 0;
    int most_before = 0;
    for (const tab_entry *tab : tabs_of(*request.scheme)) {
        if (request.tabs.contains(QString::fromLatin1(tab->name))) {
            names_in_order += QString::fromLatin1(tab->name);
            const int most = tab->reported == tab_report::varies ? 2 : tab->reported == tab_report::once ? 1 : 0;
            works.push_back({least_before, most_before + std::max(most - 1, 0)});
            least_before += tab->reported == tab_report::once ? 1 : 0;
            most_before += most;
        }
    }
    QStringList steps;
    for (int count = 0;; ++count) {
        QStringList names;
        int last = 0;
        for (int i = 0; i < static_cast<int>(works.size()); ++i) {
            if (works[i].first_count <= count && count <= works[i].last_count) {
                names += names_in_order.at(i);
                last = i + 1;
            }
        }
        if (names.isEmpty()) {
            return steps;
        }
        const QString numbers = names.size() == 1 ? QStringLiteral("tab %1").arg(last)
                                                  : QStringLiteral("tabs %1-%2").arg(last - names.size() + 1).arg(last);
        steps += QStringLiteral("%1 (%2 of %3)")
                     .arg(names.join(QStringLiteral(", ")), numbers, QString::number(names_in_order.size()));
    }
}
