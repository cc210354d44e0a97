#include "bench/plugin_run.h"

#include "core/mail.h"
#include "evidence/files.h"
#include "evidence/ios_backup.h"

#include <QApplication>
#include <QLibrary>

#include <memory>

namespace bench {

namespace {

using create_function = mail *(*)();

std::unique_ptr<mail> create_plugin()
{
    QLibrary library(plugin_path());
    const auto create = reinterpret_cast<create_function>(library.resolve("create_object"));
    if (create == nullptr) {
        throw evidence::evidence_error(QStringLiteral("The plug-in does not load: %1.").arg(library.errorString()));
    }
    return std::unique_ptr<mail>(create());
}

/// The backups that are measured have the newer layout and hold what they are asked for.
class sample_backup : public ios_uid_backup_parser
{
public:
    explicit sample_backup(QString root) : root(std::move(root)) {}
    QString get_backup_file_path(QString domain_path) override
    {
        return root + evidence::ios_backup_place(domain_path, evidence::ios_backup_layout::manifest_database);
    }

private:
    const QString root;
};

void describe_source(mail &plugin, const work &work, const QString &root)
{
    struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_source_info source;
    source.source_root_path_QString = root;
    source.os_scheme_display_QString = QLatin1String(scheme_display);
    source.os_scheme_internal_QString = QLatin1String(work.scheme);
    if (work.user != nullptr) {
        source.system_account_QList.append({QLatin1String(work.user), QString()});
    }
    plugin.pub_set_essentials();
    plugin.pub_set_engine_type(0);
    plugin.pub_set_general_info(struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_general_info());
    plugin.pub_set_source_info(source);
    plugin.pub_set_desktop_info(struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_desktop_info());
    plugin.pub_set_source_count(source_number);
    plugin.pub_set_essential_for_trawl_bench_extraction(QString::fromLatin1(work.tabs).split(QLatin1Char(',')), {});
    plugin.pub_set_extended_attributes_list({});
}

} // namespace

QString plugin_path()
{
    return QCoreApplication::applicationDirPath() + QLatin1String("/libmail.so");
}

void run_plugin(const work &work, const QString &root, const QString &result_directory, stopwatch &watch)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "minimal");
    }
    int argument_count = 1;
    char name[] = "mail-bench";
    char *arguments[] = {name, nullptr};
    const QApplication application(argument_count, arguments); // the plug-in object is a widget
    sample_backup backup(root);                                // asked by works on backups only
    const std::unique_ptr<mail> plugin = create_plugin();
    describe_source(*plugin, work, root);
    plugin->pub_set_ios_uid_backup_pointer(&backup);
    watch = stopwatch();
    plugin->pub_set_result_directory(result_directory);
    plugin->pub_create_db_tables();
    watch.lap("tables");
    plugin->pub_find_source_file();
    watch.lap("find");
    plugin->pub_extract_artifacts();
    watch.lap("extract");
    plugin->pub_remove_temporary_asthetics();
    watch.lap("remove");
}

QString plugin_database_path(const QString &result_directory)
{
    return result_directory + QLatin1String("Artifacts_Result/Mail/Mail.sqlite");
}

} // namespace bench
