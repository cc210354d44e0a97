#include "trial/plugin_run.h"

#include "evidence/files.h"
#include "evidence/ios_backup.h"

#include <QCoreApplication>
#include <QLibrary>

#include <utility>

namespace trial {

namespace {

/// The backups of trials hold what they are asked for.
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

std::unique_ptr<mail> create_plugin()
{
    QLibrary library(QCoreApplication::applicationDirPath() + QLatin1String("/libmail.so"));
    const auto create = reinterpret_cast<mail *(*)()>(library.resolve("create_object"));
    if (create == nullptr) {
        throw evidence::evidence_error(QStringLiteral("The plug-in does not load: %1.").arg(library.errorString()));
    }
    return std::unique_ptr<mail>(create());
}

} // namespace

plugin_run::plugin_run(const scheme &source_scheme) : source_scheme(source_scheme), plugin(create_plugin()) {}

plugin_run::~plugin_run() = default;

void plugin_run::run(const workplace &place, bool clears, const std::function<void()> &ready)
{
    struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_source_info source;
    source.source_root_path_QString = text_of(place.source()) + QLatin1Char('/');
    source.os_scheme_display_QString = QLatin1String(source_scheme.internal_name);
    source.os_scheme_internal_QString = QLatin1String(source_scheme.internal_name);
    for (const QString &user : users_of(source_scheme)) {
        source.system_account_QList.append({user, QString()});
    }
    sample_backup backup(source.source_root_path_QString);

    plugin->pub_set_essentials();
    if (ready) {
        ready();
    }
    plugin->pub_set_engine_type(0);
    plugin->pub_set_general_info(struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_general_info());
    plugin->pub_set_source_info(source);
    plugin->pub_set_desktop_info(struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_desktop_info());
    plugin->pub_set_source_count(1);
    plugin->pub_set_ios_uid_backup_pointer(&backup);
    plugin->pub_set_essential_for_trawl_bench_extraction(tabs_of(source_scheme), QStringList());
    plugin->pub_set_extended_attributes_list(QStringList());
    plugin->pub_set_result_directory(text_of(place.result()));
    plugin->pub_create_db_tables();
    plugin->pub_set_clear_db(clears);
    plugin->pub_find_source_file();
    plugin->pub_extract_artifacts();
    plugin->pub_generate_chat_html_pages();
    plugin->pub_remove_temporary_asthetics();
}

} // namespace trial
