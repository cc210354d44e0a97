/// The extractor of the scheme "iOS_UID": an iOS device backup, reached through the host's backup parser.
#pragma once

#include "core/extractor_frame.h"
#include "core/ios_uid_backup_parser.h"
#include "core/row_writer.h"

#include <memory>
#include <optional>

class account_look_up;
class property_list;
class property_list_value;
class short_message_reader;
class source_query;
struct account_record;

class mail_ios_uid : public extractor_frame
{
    Q_OBJECT

public:
    explicit mail_ios_uid(QWidget *parent);
    ~mail_ios_uid() override;

    // --- What the plug-in object hands on; plain stores unless said otherwise ----------------------------------------
    void ios_uid_set_plugin_helper_obj(plugin_helper_functions *helper) { plugin_helper_obj = helper; }
    void ios_uid_set_record_count(qint64 count) { record_count_qint64 = count; }
    void ios_uid_set_tab_processed_count(int count) { tab_processed_count_int = count; }
    /// Keeps nothing.
    void ios_uid_set_desktop_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_desktop_info &) {}
    /// Keeps nothing.
    void ios_uid_set_general_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_general_info &) {}
    void ios_uid_set_source_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_source_info &source_info)
    {
        store_source_info(source_info);
    }
    /// Clears the cancel flag.
    void ios_uid_set_essentials() { cancel_extraction_bool = false; }
    void ios_uid_set_plugin_name(const QString &name) { plugin_name_QString = name.trimmed(); }
    void ios_uid_set_destination_location(const QString &result_directory, const QString &tmp_directory,
                                          const QString &destination_db_path)
    {
        store_destination_location(result_directory, tmp_directory, destination_db_path);
    }
    void ios_uid_set_essential_for_trawl_bench_extraction(const QStringList &tabs) { selected_tabs_QStringList = tabs; }
    void ios_uid_set_engine_type(int engine_type) { engine_type_int = engine_type; }
    void ios_uid_cancel_extraction() { cancel_extraction_bool = true; }
    void ios_uid_set_source_count(int source_count) { source_count_int = source_count; }
    /// The host's object; it stays the host's. Used by the search for sources alone; without one the backup has none.
    void ios_uid_set_ios_backup_pointer(ios_uid_backup_parser *parser) { ios_backup_parser = parser; }

    /// Asks the host's object for the source files.
    void ios_uid_find_artifacts_source();
    /// Extracts the selected tabs and reports the final record count.
    void ios_uid_extract_artifacts();

Q_SIGNALS:
    void signal_extracted_records_of_plugin_ios_uid(qint64 records);
    void signal_total_tabs_processed_ios_uid(int count);

private Q_SLOTS:
    /// The process that converts a property list is over, whatever its exit code.
    void slot_process_finished(int exit_code);

private:
    // --- Sources and driver: mail_ios_uid.cpp ------------------------------------------------------------------------
    struct source_file;
    /// The fixed texts of an operation that reads a property list.
    struct list_texts
    {
        const operation_log &log;
        const failure_text &destination_failure;
        const failure_text &list_failure;
    };
    /// Opens the result database and reads a property list of the backup. Out: false when the backup does not hold it,
    /// and, logged, when the database does not open or the list is no dictionary.
    bool open_list(property_list &list, const QString &file, result_session &destination,
                   const list_texts &texts) const;
    /// The two paths of a row: in the backup, and as the device knows it.
    struct row_paths
    {
        QString source_file;
        QString artifacts_relation_source_file;
    };

    void find_source_file();
    void extract_plugin_artifacts();
    void extract_contacts_tab();
    bool is_file_of_backup(const QString &path) const;
    row_paths paths_of(const QString &file, const QString &domain_path) const;
    /// Those of a row that rests on the mail application's list and the account database together.
    row_paths paths_of_list_and_accounts() const;

    // --- Table contacts: mail_ios_uid_contacts.cpp -------------------------------------------------------------------
    struct contacts_database;

    void extract_mailContact();
    void extract_mailContact_11();
    void extract_contacts(const contacts_database &kind);

    // --- Table recents: mail_ios_uid_recents.cpp ---------------------------------------------------------------------
    struct recent_metadata;
    struct metadata_conversion;
    struct recent_details;

    void extract_mail_recents();
    row_paths paths_of_recents() const;
    /// Out: none when what belongs to the recent cannot be read, which is logged, and when the extraction is cancelled.
    std::optional<row_values> row_of_recent(source_query &recent, recent_details &details, const row_paths &paths);
    /// Out: false when the metadata cannot be read, which is logged, and when the extraction is cancelled.
    bool read_metadata(recent_details &details, const QString &recent_id, recent_metadata &metadata);
    /// Out: the XML text of a value; null when it cannot be converted, which is logged, and when the extraction is
    /// cancelled.
    QByteArray converted_metadata(const QString &name, const QByteArray &value, metadata_conversion &conversion);
    /// The two roads to it. Out: none when the extraction is cancelled meanwhile.
    std::optional<QByteArray> xml_from_this_process(const QString &xml_name, const QByteArray &value,
                                                    metadata_conversion &conversion);
    std::optional<QByteArray> xml_from_tool(const QString &xml_name, const QString &list_name,
                                            metadata_conversion &conversion);
    /// Out: the text of the short message of that guid; empty when there is none, or no sms.db.
    QString mail_message_sms_text(const QString &guid);

    // --- Table accounts: mail_ios_uid_accounts.cpp -------------------------------------------------------------------
    void xcode_extract_mail_accounts();
    bool open_accounts(std::optional<account_look_up> &accounts, const operation_log &log);
    row_values row_of_account(const property_list_value &entry, bool syncs_read_state,
                              const account_record &account) const;
    /// The working copy of the account database, one a run; empty when the backup has none.
    QString accounts_working_copy();

    // --- Table vip_contacts: mail_ios_uid_vip.cpp --------------------------------------------------------------------
    void xcode_extract_mail_vip_senders();
    row_values row_of_sender(const QString &key, const property_list_value &sender, const QString &account) const;
    void xcode_extract_mail_vip_contacts();

    // --- Table preferences: mail_ios_uid_preferences.cpp -------------------------------------------------------------
    void xcode_extract_mail_preferences();
    void insert_preferences_to_database(const QString &key, const QString &value, row_writer &rows);

    // A file is empty when the backup has none; a domain path stands from the search for sources on.
    ios_uid_backup_parser *ios_backup_parser = nullptr;
    QString recents_file_QString;
    QString recents_domain_QString;
    QString mobilemail_plist_file_QString;
    QString mobilemail_plist_domain_QString;
    QString accounts_file_QString;
    QString accounts_domain_QString;
    QString sms_file_QString;
    QString sms_domain_QString;
    QString searchd_plist_file_QString;
    QString searchd_plist_domain_QString;
    QString address_book_file_QString;
    QString address_book_domain_QString;
    bool process_finished_bool = false;

    QString accounts_copy_QString;
    std::unique_ptr<short_message_reader> short_messages; // open as long as the recents are read
};
