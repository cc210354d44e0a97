/// The extractor of the scheme "winOS": the mail data of Windows user profiles. A profile can hold two kinds of store,
/// both of which are read wherever they are found: the UniStore (`store.vol` and the files beside it) and the package
/// folder of the mail application with its own databases. Their rows go to the same tables; neither knows of the other.
#pragma once

#include "core/extractor_frame.h"
#include "core/operation_log.h"
#include "core/row_writer.h"
#include "services/source_files.h"
#include "windows/ese_file.h"
#include "windows/ese_handles.h"
#include "windows/mail_store_record.h"
#include "windows/specific_table.h"

#include <QByteArray>
#include <QHash>
#include <QList>

#include <functional>
#include <memory>

class appointments;
class attachments;
class body_row_writers;
class call_history;
class contacts;
class mail_store_row_writers;
class messages;
class recipients;

struct eml_header_values;

class mail_winos : public extractor_frame
{
    Q_OBJECT

public:
    explicit mail_winos(QWidget *parent);
    ~mail_winos() override;

    // --- What the plug-in object hands on; plain stores unless said otherwise ----------------------------------------
    void winos_set_plugin_helper_obj(plugin_helper_functions *helper) { plugin_helper_obj = helper; }
    void winos_set_record_count(qint64 count) { record_count_qint64 = count; }
    void winos_set_tab_processed_count(int count) { tab_processed_count_int = count; }
    /// Keeps nothing.
    void winos_set_desktop_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_desktop_info &) {}
    /// Keeps nothing.
    void winos_set_general_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_general_info &) {}
    /// Takes over users and domains of the source as well.
    void winos_set_source_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_source_info &source_info);
    /// Clears the cancel flag.
    void winos_set_essentials() { cancel_extraction_bool = false; }
    void winos_set_plugin_name(const QString &name) { plugin_name_QString = name.trimmed(); }
    void winos_set_destination_location(const QString &result_directory, const QString &tmp_directory,
                                        const QString &destination_db_path)
    {
        store_destination_location(result_directory, tmp_directory, destination_db_path);
    }
    void winos_set_essential_for_trawl_bench_extraction(const QStringList &tabs) { selected_tabs_QStringList = tabs; }
    void winos_set_engine_type(int engine_type) { engine_type_int = engine_type; }
    void winos_cancel_extraction() { cancel_extraction_bool = true; }
    void winos_set_source_count(int source_count) { source_count_int = source_count; }

    /// Finds the source files below the source root.
    void winos_find_artifacts_source();
    /// Extracts the selected tabs and reports the final record count.
    void winos_extract_artifacts();

    // --- Conversions: mail_winos_helpers.cpp -------------------------------------------------------------------------
    /// In: a FILETIME (100 nanoseconds since 1601) in decimal. Out: seconds since 1970, cut towards zero; 0 for a text
    /// that is no number above 0.
    static qint64 give_epoch_from_string(const QString &text);
    /// Out: the decoded text up to its first zero byte; null when the base64 text holds nothing.
    static QString base64_decode(const QString &text);
    /// Out: what follows the last ":"; empty without one.
    static QString split_info_parsed(const QString &text);

Q_SIGNALS:
    void signal_extracted_records_of_plugin_winos(qint64 records);
    void signal_total_tabs_processed_winos(int count);

private:
    // --- Sources and driver: mail_winos.cpp --------------------------------------------------------------------------
    void find_source_file();
    void extract_plugin_artifacts();
    /// The tabs. Out: false when the extraction was cancelled where that ends the run of tabs at once.
    bool extract_selected_tabs();
    /// A tab of one step, which cancelling does not end.
    template <void (mail_winos::*extract)()>
    bool extract_counted_tab();
    bool extract_all_attachments_tab();
    bool extract_messages_tab();
    void extract_mail_conversations();

    // --- Frame of the writers of store.vol: mail_winos_store.cpp -----------------------------------------------------
    /// The fixed texts of a writer.
    struct store_writer
    {
        const char *start_line;
        const char *end_line;
        failure_text open_failure;
        const char *insert_statement;
        failure_text insert_failure;
    };
    /// What all rows from one file of the source have in common.
    struct row_source
    {
        QString system_user;
        QString domain_user;
        QString source_file;
        QString source_count_name;
    };
    /// Opens the result database and runs the step for each store.vol, with the file and what its rows share. All rows
    /// form one transaction. The end line is logged unless the database does not open or the extraction is cancelled.
    void write_store_rows(
        const operation_log &log, const store_writer &writer,
        const std::function<void(const QString &file, const row_source &source, row_writer &rows)> &write_rows);
    /// In: the file or folder that rows name as their source, and the path that tells the user they belong to.
    row_source row_source_of(const QString &path, const QString &path_of_user) const;
    /// Seconds since 1970 of a FILETIME, in decimal.
    static QString epoch_text_of(const QString &filetime) { return QString::number(give_epoch_from_string(filetime)); }
    /// The columns source_file, source_count_name and os_scheme_display, with which the statements end.
    void append_source_columns(row_values &row, const row_source &source) const;

    /// Out: the records of these tables, which several writers read; of stores of ordinary size they are kept until the
    /// last writer of the run that needs them is done.
    const QList<specific_table::struct_recipients> &recipients_of(const QString &file);
    const QList<specific_table::struct_attachments> &attachments_of(const QString &file);

    // --- Table appointments: mail_winos_appointments.cpp -------------------------------------------------------------
    void extract_appointments();

    // --- Table contacts: mail_winos_contacts.cpp ---------------------------------------------------------------------
    void extract_contacts();

    // --- Table call_history: mail_winos_call_history.cpp -------------------------------------------------------------
    void extract_call_history();

    // --- Table messages: mail_winos_messages.cpp ---------------------------------------------------------------------
    void extract_messages();

    // --- Table all_attachments: mail_winos_attachments.cpp -----------------------------------------------------------
    void extract_sent_attachments();
    void extract_received_attachments();
    struct attachment_pass;
    /// The steps of both.
    void extract_attachments(const operation_log &log, const store_writer &writer, const attachment_pass &pass);

    // --- Table received_attachments_files: mail_winos_received_files.cpp ---------------------------------------------
    /// Lists the files that the store keeps for received attachments. Nothing is copied: a row names the file in the
    /// source.
    void extract_received_attachments_files();
    row_values row_of_received_file(const QString &file, const QString &folder) const;

    // --- Tables all_attachments, mailconversation, messages of the mail store: mail_winos_mail_store.cpp -------------
    /// Walks one table of each database of the mail application. In: 0 for "MailAttachment", 1 for "MailConversation",
    /// 2 for "MailMessage".
    void edb_data_parse(int table_index);
    void container_func(libesedb_table_t *table, libesedb_error_t *error, int table_index);
    /// Out: false where no further database of the tab is looked at: one that cannot be opened, which is logged.
    bool parse_mail_store_database(const QString &file, int table_index);
    /// The row of the record in hand, if it gives one.
    void write_mail_store_row(int table_index, const row_source &shared);
    /// What rows say of a file that a record names.
    struct stored_file
    {
        QString file_exist = QStringLiteral("NO");
        QString size = QStringLiteral(""); ///< in bytes, in decimal
        posix_timestamp_record times;
    };
    /// In: the file, and the path by which its times are asked for. A path that leads out of the source is that of a
    /// file that is not there.
    stored_file stored_file_at(const QString &path, const QString &complete_path) const;
    /// In: a path below the folder of the mail store as a record has it, with backslashes.
    QString path_in_store(const QString &stored_path) const;
    row_values row_of_store_attachment(const row_source &shared);
    row_values row_of_conversation(const row_source &shared) const;
    row_values row_of_store_message(const row_source &shared) const;

    // --- Table mail_data, mail files of the mail store: mail_winos_eml.cpp -------------------------------------------
    /// One row for a mail file with a sender. Out: 0, or -1 when the file or the result database does not open.
    int extract_eml_info(QString eml_path, QString inside_text);
    row_values row_of_mail_file(const QString &eml_path, const QString &inside_text,
                                const eml_header_values &headers) const;

    // --- Table mail_data, body files of the UniStore: mail_winos_bodies.cpp ------------------------------------------
    void extract_mail_data();
    bool extract_body_file(const QString &file_path);
    posix_timestamp_record times_of_body_file(const QString &file_path) const;
    row_values row_of_body_file(const QString &file_path, const QString &text,
                                const posix_timestamp_record &times) const;
    /// Out: the path of the text file made of an HTML file, in the folder "Files/" below the output folder; empty for a
    /// file that is none or does not open.
    QString html_to_ascii_converter(const QString &file_path, const QString &output_folder);
    /// One row for a file that holds HTML somewhere.
    void extract_non_html_files(const QString &file_path);
    /// Out: the content without its zero bytes, as far as HTML can come out of it: the mark of the type and the first
    /// HTML block, none for a file that has neither or does not open.
    QByteArray get_data_of_file(const QString &file_path);
    /// Out: the path of the HTML file made of the part between the HTML marks; empty without these.
    QString creat_html_file(const QString &file_path, const QByteArray &data);
    /// Out: the plain text of an HTML file; empty when it cannot be had.
    QString get_text_from_html(const QString &html_path);

    source_boundary source{QString()};   // the root of the source in hand
    QStringList user_folder_QStringList; // names of the user folders of all sources so far, each once

    // What was found, a folder with a slash behind.
    QStringList unistore_data_folder_QStringList;
    QStringList store_vol_file_QStringList;
    QStringList unistore_data_7_folder_QStringList;
    QStringList local_state_folder_QStringList;

    // The readers of store.vol; each stands only while a writer runs that reads its table.
    std::unique_ptr<attachments> attachments_table;
    std::unique_ptr<recipients> recipients_table;
    std::unique_ptr<messages> messages_table;
    std::unique_ptr<appointments> appointments_table;
    std::unique_ptr<contacts> contacts_table;
    std::unique_ptr<call_history> call_history_table;
    // What they read of the tables that several writers need, by the path of the store.
    QHash<QString, QList<specific_table::struct_recipients>> recipients_of_store;
    QHash<QString, QList<specific_table::struct_attachments>> attachments_of_store;

    // The walk of the mail store: the database and its folder (with a slash behind), the files that the record in hand
    // names, its values.
    QString current_edb_file_QString;
    QString current_local_state_folder_QString;
    QString eml_file_path_QString;
    QString attachment_file_path_QString;
    mail_store_record current_record;
    ese_file ese_file_handle;                                // open while one of its tables is walked
    std::unique_ptr<mail_store_row_writers> mail_store_rows; // the same

    std::unique_ptr<body_row_writers> body_rows; // stands while the body files are walked
};
