/// The plug-in object. A host loads the library, calls its one exported function `create_object` and drives the
/// returned object through the eighteen virtual operations below. This header, with the two that it includes, is all
/// that a host compiles against.
///
/// The host calls the operations by their position behind those of QFrame, so THEIR ORDER IS PART OF THE CONTRACT:
/// never move, remove or insert one.
///
/// A whole run: pub_set_essentials, pub_set_engine_type, pub_set_general_info, then the setters of source, desktop,
/// source count and (backups) the backup parser, pub_set_essential_for_trawl_bench_extraction,
/// pub_set_extended_attributes_list (macOS), pub_set_result_directory, pub_create_db_tables, pub_set_clear_db,
/// pub_find_source_file, pub_extract_artifacts, pub_generate_chat_html_pages, pub_remove_temporary_asthetics.
#pragma once

#include "core/host_records.h"
#include "core/ios_uid_backup_parser.h"

#include <QFrame>
#include <QString>
#include <QStringList>

#include <array>
#include <atomic>
#include <memory>

class Ui_mail;
class mail_ios_uid;
class mail_ios_uniform;
class mail_macos;
class mail_winos;
class plugin_helper_functions;

class mail : public QFrame
{
    Q_OBJECT

public:
    explicit mail(QWidget *parent = nullptr);
    ~mail() override;

    /// Engine type: 0, 1 or 2. With any other value no tab runs and no table is cleared.
    virtual void pub_set_engine_type(int engine_type);
    /// Out: the name of the artifact family, "Mail".
    virtual QString pub_get_artifact_name();
    /// Takes back what the run before left: counters, cancel flags, the process-wide run state.
    virtual void pub_set_essentials();
    /// The number of the source in the case; every row bears it in source_count_name.
    virtual void pub_set_source_count(int source_count);
    /// The host's backup parser, for the scheme "iOS_UID". Stays the host's.
    virtual void pub_set_ios_uid_backup_pointer(ios_uid_backup_parser *backup_parser);
    virtual void pub_set_desktop_info(struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_desktop_info desktop_info);
    /// Debug switches; opens the log file for appending when they ask for it.
    virtual void pub_set_general_info(struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_general_info general_info);
    virtual void pub_set_source_info(struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_source_info source_info);
    /// The tabs to clear and to extract. The second list is accepted and not used.
    virtual void pub_set_essential_for_trawl_bench_extraction(QStringList selected_tabs, QStringList unused);
    /// Creates "Artifacts_Result/Mail/" with its working-copy folder below the given directory.
    virtual void pub_set_result_directory(QString directory);
    /// Creates the result database and its tables; tables that stand already keep their rows.
    virtual void pub_create_db_tables();
    /// With true: deletes the rows of the selected tabs, those of all sources.
    virtual void pub_set_clear_db(bool clear);
    /// May be called at any time, from any thread: the run commits the rows it has and returns.
    virtual void pub_cancel_extraction();
    virtual void pub_find_source_file();
    /// The metadata attributes wanted beside the fixed ones (macOS).
    virtual void pub_set_extended_attributes_list(QStringList extended_attributes);
    virtual void pub_extract_artifacts();
    /// Mail has no such pages: does nothing.
    virtual void pub_generate_chat_html_pages();
    /// Removes the working copies and closes the log file.
    virtual void pub_remove_temporary_asthetics();

Q_SIGNALS:
    /// Rows inserted since pub_set_essentials.
    void signal_extracted_records_of_plugin_overall(qint64 records);
    /// Tabs finished since pub_set_essentials.
    void signal_tab_processed_of_plugin_overall(int tab_count);

private Q_SLOTS:
    void slot_extracted_records_of_plugin(qint64 rec);
    void slot_total_tabs_processed(int tab_count);

private:
    void set_destination_location(const QString &directory);
    void create_destination_database();
    void create_db_tables();
    void clear_db_tables();
    QString artifact_name() const;

    struct scheme
    {
        const char *internal_name;
        void (*find_source_file)(mail &);
        void (*extract_artifacts)(mail &);
    };
    static const std::array<scheme, 4> schemes;
    /// Out: the scheme of the source; none when there is no such scheme, which is logged.
    const scheme *matched_scheme(const char *signature) const;

    std::unique_ptr<Ui_mail> ui;
    std::unique_ptr<plugin_helper_functions> plugin_helper_obj;
    mail_macos *mail_macos_obj = nullptr; // the four extractors are children of this object and go with it
    mail_ios_uid *mail_ios_uid_obj = nullptr;
    mail_ios_uniform *mail_ios_uniform_obj = nullptr;
    mail_winos *mail_winos_obj = nullptr;

    qint64 record_count_qint64 = 0;
    int tab_processed_count_int = 0;
    int engine_type_int = -1;
    std::atomic<bool> cancel_extraction_bool{false};
    QString tmp_directory_QString;
    QString destination_db_path_QString;
    QString result_directory_QString;
    QString os_scheme_internal_QString;
    QStringList selected_tabs_QStringList;
};

/// Companion class of the plug-in object; it holds nothing and nothing uses it.
class m_mail
{
public:
    m_mail() {}
};

/// Out: a new plug-in object without parent, which the caller owns.
extern "C" mail *create_object();
