/// The extractor of the scheme "macOS": the mail store and the mail configuration of each user.
#pragma once

#include "core/extractor_frame.h"
#include "core/row_writer.h"
#include "macos/attachment_finder.h"
#include "macos/emlx_catalog.h"
#include "macos/emlx_header_scanner.h"
#include "macos/file_facts.h"
#include "macos/mail_index_reader.h"
#include "macos/message_values.h"
#include "macos/preference_setting.h"
#include "services/file_metadata.h"
#include "services/property_list.h"
#include "services/source_files.h"

#include <QHash>

#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <vector>

class joined_text;

/// Rows of a result table by their ids, both ends included; none when the last is before the first.
struct row_range
{
    qint64 first = 0;
    qint64 last = -1;

    bool contains(qint64 row_id) const { return row_id >= first && row_id <= last; }
    /// Takes in a row behind those so far.
    void extend_to(qint64 row_id)
    {
        first = last < first ? row_id : first;
        last = row_id;
    }
};

class mail_macos : public extractor_frame
{
    Q_OBJECT

public:
    explicit mail_macos(QWidget *parent);

    // --- What the plug-in object hands on; plain stores unless said otherwise ----------------------------------------
    void macos_set_plugin_helper_obj(plugin_helper_functions *helper) { plugin_helper_obj = helper; }
    void macos_set_record_count(qint64 count) { record_count_qint64 = count; }
    void macos_set_tab_processed_count(int count) { tab_processed_count_int = count; }
    /// Keeps nothing.
    void macos_set_desktop_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_desktop_info &) {}
    /// Keeps nothing.
    void macos_set_general_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_general_info &) {}
    /// Takes over the users of the source as well.
    void macos_set_source_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_source_info &source_info);
    /// Clears the cancel flag.
    void macos_set_essentials() { cancel_extraction_bool = false; }
    void macos_set_plugin_name(const QString &name) { plugin_name_QString = name.trimmed(); }
    void macos_set_destination_location(const QString &result_directory, const QString &tmp_directory,
                                        const QString &destination_db_path, const QString &, const QString &,
                                        const QString &)
    {
        store_destination_location(result_directory, tmp_directory, destination_db_path);
    }
    /// Keeps the list with the tab "emlx_parser_data" behind it.
    void macos_set_essential_for_trawl_bench_extraction(const QStringList &tabs);
    void macos_set_engine_type(int engine_type) { engine_type_int = engine_type; }
    void macos_cancel_extraction() { cancel_extraction_bool = true; }
    void macos_set_source_count(int source_count) { source_count_int = source_count; }
    /// Keeps the names that have no columns of their own.
    void macos_set_extended_attributes_list(const QStringList &names);

    /// Finds the source files below the source root.
    void macos_find_artifacts_source();
    /// Extracts the selected tabs and reports the final record count.
    void macos_extract_artifacts();

Q_SIGNALS:
    void signal_extracted_records_of_plugin_macos(qint64 records);
    void signal_total_tabs_processed_macos(int count);

protected:
    // --- Property lists: mail_macos_property_readers.cpp -------------------------------------------------------------
    // Readers of one key of a dictionary, giving a row text: the label, ":+:" and the value. A key that is missing, or
    // holds a value of another kind, gives an empty text; a present one at least the label and ":+:".

    /// The trimmed text.
    QString get_prefs_nsstring_values(const QString &key, const property_list_value &dictionary,
                                      const QString &label) const;
    /// A number cut towards zero: 0 is "NO", 1 is "YES", any other has nothing behind the label.
    QString get_prefs_nsnumber_values(const QString &key, const property_list_value &dictionary,
                                      const QString &label) const;
    /// The elements of a list of texts, trimmed, joined by ";". Empty when the extraction was cancelled.
    QString get_prefs_nsarray_values(const QString &key, const property_list_value &dictionary,
                                     const QString &label) const;

private:
    // --- Sources: mail_macos_sources.cpp -----------------------------------------------------------------------------
    void find_source_file();
    void filter_extended_attribute_list();
    struct source_candidate;
    static const std::vector<source_candidate> source_candidates;

    // --- Driver: mail_macos_driver.cpp -------------------------------------------------------------------------------
    /// Out: the user whose home folder a source file lies in; empty when it lies in none.
    QString extract_user_name_from_plist(const QString &path) const;
    void extract_plugin_artifacts();
    /// The tabs. Out: false when the extraction was cancelled in one of them, which then is not finished.
    bool extract_selected_tabs();
    bool extract_signature_tab();
    bool extract_accounts_tab();
    bool extract_vip_contacts_tab();
    bool extract_rules_tab();
    bool extract_smart_mailboxes_tab();
    bool extract_preferences_tab();
    bool extract_messages_tab();
    bool extract_all_attachments_tab();
    bool extract_open_attachments_tab();
    /// Their steps over a list of source files, with the same result.
    template <typename operation>
    bool for_each_source(const QStringList &files, operation extract);
    bool extract_signatures(const QStringList &files, std::initializer_list<const char *> signature_folders);
    bool update_signatures(const QStringList &files);
    bool extract_signatures_of_v3_for_accounts();
    bool extract_accounts(const QStringList &mail_folders, const QStringList &databases,
                          bool deletes_signatures_when_cancelled);
    bool extract_messages_of_later_index(const QString &index, const QString &mail_folder, bool stops_behind_emlx_list);
    bool extract_attachments_of_later_index(const QString &index, const QString &mail_folder);
    bool extract_attachments_of_earlier_index(const QString &index);
    bool finish_attachments_of_index();
    /// The folder of the store that an index of V4 to V9 belongs to: the newest that its user has.
    QString mail_folder_of_later_index(const QString &index) const;
    QString user_home_of(const QString &index) const;
    void delete_rows(const char *statement) const;

    // --- Configuration files: mail_macos_property_readers.cpp --------------------------------------------------------
    /// How the rows of a configuration file show it.
    artifact_source_file shown_source_of(const QString &file, const QString &user) const;
    /// The sources of a row that a further file completes: those so far, and the file. A list can name one row any
    /// number of times: what is longer than 16384 characters grows no more, which is logged.
    QString sources_with(const QString &stored_sources, const QString &file, const operation_log &log) const;
    /// The columns of the source that all rows of a configuration file end with.
    void append_source_columns(row_values &row, const artifact_source_file &shown_source) const;

    // --- Table signature: mail_macos_signatures.cpp ------------------------------------------------------------------
    /// One row a signature of AllSignatures.plist that has a file in the folder, which ends in a slash.
    void xcode_extract_allsignature(const QString &file, const QString &user, const QString &destination_db,
                                    const QString &source_root, const QString &signature_folder);
    /// Out: none for a file that does not open or leads out of the folder or the source, which is logged, and when the
    /// extraction is cancelled.
    std::optional<QString> text_of_signature(const QString &folder, const QString &uid) const;
    /// Completes the rows with the accounts that AccountsMap.plist assigns the signatures to.
    void xcode_extract_updatesignature(const QString &file, const QString &user, const QString &destination_db,
                                       const QString &source_root);

    // --- Table accounts: mail_macos_accounts.cpp ---------------------------------------------------------------------
    /// A row of ZACCOUNT.
    struct struct_account_details
    {
        QString account_pk;
        QString account_identifier;
        QString parent_account;
        QString account_user_name;
        QString owning_bundle_id;
    };
    /// One row an account of V3 to V9 that a folder of the mail folder is named by, joined with the rows of the table
    /// signature so far. Without a database there is none.
    void extract_accounts_for_11_12(const QString &mail_folder, const QString &account_database, const QString &user,
                                    int position);
    /// Out: the entries of a folder of the source, sorted; those so far when the extraction is cancelled.
    QStringList sub_get_identifier_bundle_path(const QString &folder) const;
    /// Out: the accounts that the folders are named by: their identifiers or addresses.
    QStringList sub_get_identifier_bundle_name(const QStringList &paths) const;
    /// Out: for each name the first account that bears it, if any.
    std::vector<struct_account_details> sub_compare_identifier_with_db(const QStringList &names,
                                                                       const QString &database_path) const;
    /// Out: none when its signatures cannot be read, which is logged.
    std::optional<row_values> row_of_account(source_query &account, source_query &signature_rows, const QString &user,
                                             const artifact_source_file &shown_sources) const;
    /// One row an account of Accounts.plist of V2: those that receive, then those that only deliver.
    void extract_xcode_accounts(const QString &source_root, const QString &file, const QString &user,
                                const QString &destination_db);
    /// Out: none for what is no account. Its addresses are added to the text, ";" behind each list.
    std::optional<row_values> row_of_receiving_account(const property_list_value &account, const QString &user,
                                                       const artifact_source_file &shown_list,
                                                       QByteArray &all_addresses) const;
    row_values row_of_delivery_account(const property_list_value &account, const QString &user,
                                       const artifact_source_file &shown_list) const;
    /// Out: null for a path that leads out of the source.
    QString shown_account_path_of(const QString &stored_path, const QString &user) const;

    // --- Lists whose entries are rows: mail_macos_listed_rows.cpp ----------------------------------------------------
    struct listed_rows;
    /// In: the key of an entry, where its list is a dictionary, and the entry. Out: the values of its own columns, none
    /// for what gives no row.
    using values_of_entry =
        std::function<std::optional<row_values>(const QString &key, const property_list_value &entry)>;
    /// One row an entry of the list; what is no such list is logged.
    void extract_listed_rows(const listed_rows &list, const QString &file, const QString &user,
                             const QString &destination_db, const values_of_entry &values_of);

    // --- Table vip_contacts: mail_macos_vip.cpp ----------------------------------------------------------------------
    /// One row a VIP of V3 to V6.
    void xcode_extract_vip_list(const QString &file, const QString &user, const QString &destination_db,
                                const QString &source_root);
    /// The same of V7 to V9.
    void xcode_extract_vip_list_15(const QString &file, const QString &user, const QString &destination_db,
                                   const QString &source_root);

    // --- Table rules: mail_macos_rules.cpp ---------------------------------------------------------------------------
    /// One row a rule of SyncedRules.plist.
    void xcode_extract_syncedrule(const QString &file, const QString &user, const QString &destination_db,
                                  const QString &source_root);

    // --- Table smart_mailboxes: mail_macos_smart_mailboxes.cpp -------------------------------------------------------
    void xcode_extract_smartbox(const QString &file, const QString &user, const QString &destination_db,
                                const QString &source_root);
    struct smart_mailbox_criteria;
    /// Out: none for what is no smart mailbox, which is logged.
    std::optional<row_values> values_of_smart_mailbox(const property_list_value &mailbox, const QString &user) const;
    /// Those read until the extraction is cancelled.
    void read_smart_mailbox_criteria(const property_list_value &stored, const QString &user,
                                     smart_mailbox_criteria &criteria) const;
    void append_nested_criteria(const property_list_value &nested_criteria, const QString &user,
                                joined_text &conditions) const;
    /// Out: the text of the date criteria under a key, of which the named ones are told by the name, the others are
    /// the two ends of a range. Empty for what is no list, for a list with entries of another kind, which is logged,
    /// and when the extraction is cancelled.
    QString get_dates_from_nsarray(const QString &key, const property_list_value &dictionary,
                                   const QString &name) const;

    // --- Table preferences: mail_macos_preferences.cpp ---------------------------------------------------------------
    /// Stores the settings of the mail application's preference list, one row a setting, and completes the rows of the
    /// table signature: which are selected, and how an account chooses among its own.
    void xcode_extract_preferences(const QString &file, const QString &user, const QString &destination_db,
                                   const QString &source_root);
    /// Stores the settings of the preference list that the mail application shares with others.
    void xcode_extract_composing_addressing_prefs(const QString &file, const QString &user,
                                                  const QString &destination_db, const QString &source_root);
    /// Appends the row texts of the settings, in their order. Out: false when the extraction was cancelled.
    bool append_row_texts(QStringList &row_texts, preference_settings settings, const property_list_value &dictionary,
                          const preference_context &context) const;
    bool append_row_texts_of_application(QStringList &row_texts, const property_list_value &root,
                                         const preference_context &context) const;
    /// Inserts a row for each row text that has a label and a value. Out: false when the extraction was cancelled.
    bool insert_preferences(row_writer &rows, const QStringList &row_texts, const QString &file,
                            const QString &user) const;
    /// Mark the selected ones of the stored signatures, and tell how an account's are chosen. Out: false when the
    /// extraction was cancelled.
    bool mark_selected_signatures(result_session &destination, const property_list_value &selected,
                                  const QString &file) const;
    bool store_selection_methods(result_session &destination, const property_list_value &methods) const;

    // --- Settings for the table preferences: mail_macos_preference_settings.cpp --------------------------------------
    static preference_settings settings_before_the_viewer_state();
    static preference_settings settings_behind_the_viewer_state();
    static preference_settings settings_of_composing();
    /// The number, cut towards zero, in decimal.
    QString get_prefs_decimal_number(const QString &key, const property_list_value &dictionary,
                                     const QString &label) const;
    /// Which copies the user sends to himself; the key is that of copies in "Cc".
    QString get_prefs_copies_to_self(const QString &key, const property_list_value &dictionary,
                                     const QString &label) const;
    /// The elements of a list of texts as they stand, joined by ";".
    QString get_prefs_untrimmed_texts(const QString &key, const property_list_value &dictionary,
                                      const QString &label) const;

    // --- The state of the main window, for the table preferences: mail_macos_viewer_state.cpp ------------------------
    static preference_settings settings_of_viewer_state();
    static preference_settings settings_of_viewers();
    static preference_settings settings_of_toolbar();
    /// By what, and which way, a viewer sorts. Empty when the value under the key is no dictionary.
    QString get_prefs_all_viewerattributes(const QString &key, const property_list_value &dictionary,
                                           const QString &label) const;
    /// The entries of the favorites bar. Empty when the value under the key is no list, and when the extraction is
    /// cancelled.
    QString get_prefs_favorite_values(const QString &key, const property_list_value &dictionary,
                                      const QString &label) const;
    /// The names that the user gave to flags. Empty as above, for what is no dictionary.
    QString get_prefs_flag_names(const QString &key, const property_list_value &dictionary, const QString &label) const;
    /// The accounts in the order in which the application lists them.
    static QString shown_account_order(const QString &urls, const preference_context &context);

    // --- Table emlx_list: mail_macos_emlx.cpp ------------------------------------------------------------------------
    /// Lists the mail files below a store folder of V3 to V9.
    void extract_emlx_file_location_11(const QString &mail_folder);
    /// Lists the mail files of the V2 stores of all users.
    void extract_emlx_file_location();
    /// Out: the mail file of a message of the index by its row id; of several the one that was listed first.
    struct_emlx sub_extract_emlx_file_for_messages_11_12(const QString &row_id, emlx_catalog &db) const;
    struct_emlx sub_extract_emlx_file_for_messages(const QString &row_id, emlx_catalog &db) const;
    /// Out: the blind-copy and reply-to texts of a mail file; empty for a blank path, when the file does not open or
    /// leads out of the source, which is logged, and when the extraction is cancelled.
    struct_address_bcc_replyto get_cc_and_replytofield(const QString &path) const;
    /// The walk of both lists, with the paths whole or behind the source root. Out: false when it was cancelled.
    bool list_emlx_files(const QString &mail_folder, bool is_behind_root, row_writer &rows) const;
    bool is_emlx_file(const QString &path, folder_walk::entry_kind kind) const;

    // --- Facts about a file: mail_macos_extended_attributes.cpp -----------------------------------------------------
    /// The attributes that have columns of their own; empty fields for what the file does not carry.
    struct_GLOBAL_ARTIFACT_cfstring_attributes extract_cfstring_attributes(const file_metadata &item) const;
    /// Those that link a downloaded attachment with its message.
    struct_GLOBAL_ARTIFACT_cfstring_attributes extract_cfstring_attributes_mail(const QString &file_path) const;
    /// The attributes of these names: the values for search and the XML document, which has an element for each whose
    /// name can be one. Without an item the document is empty; both are when the extraction is cancelled.
    extended_attributes get_extended_attributes(const std::optional<file_metadata> &item, const QString &file_path,
                                                const QStringList &names) const;
    /// All that the result tables say of a file beside its content. A path that is empty, that nothing stands at, or
    /// that leads out of the source, by a link or otherwise, is a file that is not there.
    macos_file_facts facts_of(const QString &file_path) const;
    /// The columns source_count_name and os_scheme_display, behind those of the extended attributes.
    void append_closing_columns(row_values &row, const macos_file_facts &facts) const;

    // --- Table messages: mail_macos_messages.cpp, mail_macos_messages_v2.cpp -----------------------------------------
    /// One row a message of the index of V3 to V9, joined with its look-ups, its mail file and the accounts so far.
    void extract_messages_11_12();
    row_values row_of_message_11_12(source_query &message, later_index_reader &index_reader, emlx_catalog &mail_files,
                                    const message_index &index) const;
    /// The same of the index of V2.
    void extract_messages();
    row_values row_of_message(source_query &message, earlier_index_reader &index_reader, emlx_catalog &mail_files,
                              const message_index &index) const;
    struct message_layout;
    /// Makes the row of a message; it keeps the look-ups of its index open, and what it was made with outlives it.
    using row_maker = std::function<row_values(source_query &message)>;
    row_maker row_maker_11_12(const message_index &index, source_session &index_session, result_session &destination,
                              emlx_catalog &mail_files) const;
    row_maker row_maker_of_v2(const message_index &index, source_session &index_session, result_session &destination,
                              emlx_catalog &mail_files) const;
    /// The steps of both.
    void extract_messages_of(const message_layout &layout, const QStringList &indexes);
    /// What the rows of an index have in common.
    message_index message_index_of(const QString &index) const;
    row_count counted_message_rows() const { return count_message_rows_bool ? row_count::inserted : row_count::none; }

    // --- Table all_attachments: mail_macos_attachments.cpp -----------------------------------------------------------
    /// Lists the attachments of the messages that the index in hand of V3 to V9 has given, one row a name.
    void extract_allattachments_details_11_12();
    /// The same for the index in hand of V2.
    void extract_allattachments_details();
    /// Out: the path of the first file of this name below a folder of the source, itself relative to the source root;
    /// empty when there is none, for an empty folder, and when the extraction is cancelled.
    QString sub_extract_attachment_file_path(attachment_finder &files, const QString &name,
                                             const QString &folder) const;
    /// An attachment name of a message: the file, and how rows show it and the folder that it was looked for in.
    struct located_attachment
    {
        QString file; ///< empty when it was not found
        QString shown_file;
        artifact_source_file shown_folder;
        macos_file_facts facts;
    };
    /// In: the folder of all attachments of a mailbox, and that of the message in it.
    located_attachment locate_attachment(attachment_finder &files, const QString &name,
                                         const QString &attachments_folder, const QString &message_folder,
                                         const QString &user) const;

    // --- Table open_attachments: mail_macos_open_attachments.cpp -----------------------------------------------------
    /// Lists the files of the folder "Mail Downloads", each with the message that its metadata names.
    void extract_open_attachment_11_12(const QString &folder, const QString &user);
    /// Out: the regular files below the folder, hidden ones and links to such inside the source included; those so far
    /// when the extraction is cancelled.
    QStringList sub_get_attachment_files_from_folder(const QString &folder) const;
    /// Lists the elements of a property list of opened attachments.
    void extract_xcode_open_attachments(const QString &file, const QString &user, const QString &destination_db,
                                        const QString &source_root);
    row_values row_of_downloaded_attachment(const QString &file, const QString &user,
                                            const artifact_source_file &shown_folder) const;
    row_values row_of_listed_attachment(const property_list_value &attachment, const QString &user,
                                        const QString &source_root, const artifact_source_file &shown_list) const;

    source_boundary source{QString()};   // the root of the source in hand
    QStringList system_user_QStringList; // users of all sources so far, each once
    QStringList extended_attributes_QStringList;

    // The source files that were found, by user and, within a user, by generation of the store.
    QStringList mail_preferences_plist_QStringList;
    QStringList mail_shared_plist_QStringList;
    QStringList accounts3_db_QStringList;
    QStringList accounts4_db_QStringList;
    QStringList mail_folder_v3_QStringList;
    QStringList mail_folder_v4_to_v9_QStringList;
    QStringList vip_plist_v3_QStringList;
    QStringList vip_plist_v4_to_v6_QStringList;
    QStringList vip_plist_v7_to_v9_QStringList;
    QStringList smart_mailboxes_plist_v3_QStringList;
    QStringList smart_mailboxes_plist_v4_to_v9_QStringList;
    QStringList synced_rules_plist_v3_QStringList;
    QStringList synced_rules_plist_v4_to_v9_QStringList;
    QStringList accounts_map_plist_v3_QStringList;
    QStringList accounts_map_plist_v4_QStringList;
    QStringList accounts_map_plist_v5_to_v9_QStringList;
    QStringList all_signatures_plist_v3_QStringList;
    QStringList all_signatures_plist_v4_QStringList;
    QStringList all_signatures_plist_v5_to_v9_QStringList;
    QStringList envelope_index_v2_QStringList;
    QStringList envelope_index_v3_QStringList;
    QStringList envelope_index_v4_to_v9_QStringList;
    QStringList accounts_plist_v2_QStringList;
    QStringList opened_attachments_v2_plist_QStringList;
    QStringList opened_attachments_plist_QStringList;
    QStringList mail_downloads_folder_QStringList;

    // The index in hand, for the operations of messages and attachments, and which rows of the table messages the
    // indexes of this run have given.
    QStringList current_index_v2_QStringList;
    QStringList current_index_v3_to_v9_QStringList;
    QHash<QString, row_range> message_rows_of_index;

    bool have_messages_run = false;         // whether the tab messages has filled its table in this run
    bool count_signature_rows_bool = false; // whether rows of the table signature count as extracted records
    bool count_message_rows_bool = false;   // whether rows of the table messages do
};
