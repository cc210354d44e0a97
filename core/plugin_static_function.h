/// The process-wide services of the plug-in: run state, log, folder services, statement runners, conversions. All
/// operations are static; no object of the class is ever made. One process holds one extraction at a time.
/// The definitions stand by subject in core/plugin_static_function_*.cpp and services/plugin_static_function_*.cpp.
#pragma once

#include "core/host_records.h"

#include <QDateTime>
#include <QFile>
#include <QList>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <atomic>

class QSqlDatabase;
class file_metadata;
class property_list_value;

/// Three instants of a file, each in seconds since 1970; 0 when the file is not there.
struct posix_timestamp_record
{
    qint64 creation_timestamp = 0;
    qint64 last_access_timestamp = 0;
    qint64 modification_timestamp = 0;
};

/// The usage dates of a file, each in decimal seconds since 1970; empty when nothing was found.
struct struct_used_dates
{
    QString last_used_date;
    QStringList used_dates; ///< in stored order
    QString first_date;     ///< first of used_dates
    QString last_date;      ///< last of used_dates
};

/// A path as it stands in the two columns of a result row.
struct artifact_source_file
{
    QString source_file;
    QString artifacts_relation_source_file; ///< empty unless the source is a home folder
};

class plugin_static_function : public QWidget
{
public:
    // --- Run state (core/plugin_static_function_run_state.cpp) -------------------------------------------------------

    /// Takes back what a run has set, but for the encryption of the log and the version of the source. Closes nothing.
    static void set_essentials();
    static void set_engine_type(int engine_type);
    static void set_source_count(int source_count);
    /// Raises or clears the flag that the loops of the shared services poll; safe from any thread.
    static void set_cancel_extraction(bool cancel);
    /// Takes the debug switches; opens the log file for appending when they ask for one. A file that does not open
    /// stays closed and its lines are dropped.
    static void set_general_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_general_info &general_info);
    static void set_source_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_source_info &source_info);
    /// Keeps nothing.
    static void set_desktop_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_desktop_info &desktop_info);
    static void close_debug_file();

    /// Writes one log line, if debugging is on. In: the text, and the signature of the function it comes from, such as
    /// "void mail_ios_uniform::extract_mail_messages()".
    static void app_debug(const QString &message, const QString &function_info);
    static bool is_debug_on() { return debug_mode_status_bool; }

    /// Out: "Source" and the source count, as it stands in the column source_count_name.
    static QString get_source_count_name();

    static int type_engine_int;
    static int source_count_int;
    static std::atomic<bool> bool_cancel_extraction;
    static QString source_os_version_full;
    static QList<struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_system_account> system_account_QList;

    // --- Folder services (core/plugin_static_function_folders.cpp) ---------------------------------------------------

    /// Out: the first of name, 1_name, 2_name, … that the folder does not hold; the folder is made if it is missing.
    /// Empty when the extraction was cancelled.
    static QString get_available_file(const QString &file_name, const QString &folder, const QString &caller);
    /// Out: whether an entry of the folder bears this name, both trimmed. False when the extraction was cancelled.
    static bool is_file_exist_in_dir(const QString &folder, const QString &file_name, const QString &caller);
    /// Removes a folder with all that it holds. Links are removed, not followed.
    static void remove_directory(const QString &path);

    // --- Statement runners (core/plugin_static_function_statements.cpp) ----------------------------------------------

    /// Runs one statement on a connection of its own, which commits by itself. Out: whether it succeeded; a failure is
    /// logged with the caller's signature.
    static bool execute_db_command_by_dbpath(const QString &command, const QString &db_path, const QString &caller);
    /// Runs one statement on a connection that the caller holds open.
    static bool execute_db_command_by_dbreference(const QString &command, QSqlDatabase &database,
                                                  const QString &caller);

    // --- Log cipher (services/plugin_static_function_log_cipher.cpp) -------------------------------------------------

    /// Out: the enciphered record of a text; empty for an empty text.
    static QString encrypt_string(const QString &text, const QString &caller);

    // --- Source paths (services/plugin_static_function_paths.cpp) ----------------------------------------------------
    // A source of the type "macOS_Home_Directory" is a single home folder: its paths are kept relative to the home. All
    // three give a path that is not blank a "/" in front.

    /// Out: the path with the user of the current source in place of the one stored in it ("/Users/old/…").
    static QString get_complete_file_path(const QString &path, const QString &system_user, const QString &source_type);
    /// Out: of a home-folder source, what stands behind the first occurrence of the user; else the path.
    static QString get_relative_file_path(const QString &path, const QString &system_user, const QString &source_type);
    /// Out: the relative path and, of a home-folder source, the unchanged one.
    static artifact_source_file get_final_artifact_source_file(const QString &path, const QString &system_user,
                                                               const QString &source_type);
    /// Out: the account to whom a path such as root + "Users/alice/Library" belongs, with the domain that the host told
    /// for it; empty without accounts and for a path of fewer than two parts.
    static struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_system_account
    extract_user_name_from_sourcefile(const QString &path, const QString &source_root);
    /// Out: the entries of the first list that the second does not hold, in their order; those so far when the
    /// extraction is cancelled.
    static QStringList get_unmatched_varible_list_of_parentlist(const QStringList &parent_list,
                                                                const QStringList &other_list);

    // --- Time conversions (services/plugin_static_function_times.cpp) ------------------------------------------------

    /// In: seconds since 2001 as text; a fraction is cut off. Out: seconds since 1970 in decimal; empty for "0" or an
    /// empty text; "978307200" for a text that is no number of 32 bits.
    static QString convert_apple_time_to_epoch(const QString &text);
    /// In: a date-time such as "20150301T102030", "2015-03-01T10-20-30" or "2015-03-01 10:20:30.250", in the local time
    /// of this machine. Out: seconds since 1970 in decimal; empty for an empty text.
    static QString convert_T_Z_time_to_epoch(const QString &text);
    /// In: seconds since 1970. Out: "dd-MMM-yyyy hh:mm:ss" in UTC, with English month names; empty for 0 and for no
    /// number.
    static QString convert_timestamp_to_human_readable_in_UTC(const QString &text);
    /// Out: the three instants of the file at source root + path.
    static posix_timestamp_record get_posix_timestamp(const QString &file_path, const QString &source_root);
    /// In: an ISO 8601 date-time, or "2015-03-01 10:20:30 +0100". Out: the date-time; an invalid one when the text is
    /// none.
    static QDateTime get_datetime_from_string_with_iso_date(const QString &text);

    // --- Value filters and sizes (services/plugin_static_function_filters.cpp) ---------------------------------------
    // The filters take the printed description of a metadata value, such as <CFNumber 0x… [0x…]>{value = +5, …}, and
    // give the value in it; empty when there is none.

    /// Out: what stands behind the last "." of the file name, a leading "." left aside.
    static QString mining_suffix(const QString &path);
    /// Out: the size in bytes of a file, or of all files below a folder; empty when nothing stands at the path.
    static QString mining_size(const QString &path);
    static QString get_filtered_number_value(const QString &text);
    static QString get_filtered_boolean_value(const QString &text);
    static QString get_filtered_cfstring_value(const QString &text);
    /// A list: its entries joined by ";".
    static QString get_filtered_string_value(const QString &text);
    /// A list of origins: its entries joined by ";".
    static QString get_filtered_wherefrom_value(const QString &text);
    /// A date: seconds since 1970 of its date and time as they read; empty when they have fewer than nine characters.
    static QString get_filtered_date_value(const QString &text);

    // --- Property lists and metadata (services/plugin_static_function_property_lists.cpp) ----------------------------
    // Readers of one key of a dictionary. A key that is missing, or holds a value of another kind, gives an empty text.
    // A labelled value is the label, ":+:" and the value.

    /// Out: the trimmed text.
    static QString get_nsstring_values(const QString &key, const property_list_value &dictionary);
    /// Out: the number, cut towards zero, in decimal.
    static QString get_nsnumber_values(const QString &key, const property_list_value &dictionary);
    /// Out: "YES" or "NO" for a boolean; empty for any other number.
    static QString get_nsnumber_values_yes_no(const QString &key, const property_list_value &dictionary);
    static QString get_nsstring_key_and_values(const QString &key, const property_list_value &dictionary,
                                               const QString &label);
    static QString get_nsnumber_key_and_values(const QString &key, const property_list_value &dictionary,
                                               const QString &label);
    /// Any number, cut towards zero: 0 is "NO", 1 is "YES", any other is the label with nothing behind.
    static QString get_nsnumber_key_and_value_yes_no(const QString &key, const property_list_value &dictionary,
                                                     const QString &label);
    /// The elements of a list of texts, trimmed, joined by ";". Empty when the extraction was cancelled.
    static QString get_nsarray_key_and_values(const QString &key, const property_list_value &dictionary,
                                              const QString &label);

    /// Out: the text of a string value.
    static QString convert_cfstring_to_qstring(const property_list_value &string);
    /// Out: whole seconds since 1970 of a date; 0 when either handle is none. Callers pass the same value twice.
    static qint64 convert_nsdate_to_epoch(const property_list_value &date, const property_list_value &object);
    /// Out: the usage dates that the metadata of the file tell.
    static struct_used_dates extract_used_date(const QString &file_path);
    static struct_used_dates extract_used_date(const file_metadata &item);

private:
    static bool debug_mode_status_bool;
    static bool debug_print_in_file_bool;
    static bool debug_print_on_terminal_bool;
    static bool debug_encryption_status_bool;
    static QString debug_file_path_QString;
    static QFile debug_file_regular_QFile;
};
