/// The records that a host hands to the plug-in, by value. Names, types and the order of the fields are fixed by the
/// host; fields that no operation reads are carried so that the records keep their shape.
#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// What the host wants logged, and where.
struct struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_general_info
{
    bool general_reserved_bool = false;        ///< carried only
    bool debug_mode_status_bool = false;       ///< debug logging wanted at all
    bool debug_print_on_terminal_bool = false; ///< log lines also go to the terminal
    bool debug_print_in_file_bool = false;     ///< log lines go to the log file
    bool debug_encryption_status_bool = false; ///< log lines in the file are enciphered
    QString debug_file_path_QString;           ///< path of the log file
};

/// One account of the evidence source.
struct struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_system_account
{
    QString system_user;
    QString domain_user;
};

/// The evidence source.
struct struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_source_info
{
    QString source_root_path_QString;     ///< root folder of the source, ending in a slash
    QString source_type_internal_QString; ///< internal kind of the source, such as "macOS_Home_Directory"
    QString os_scheme_display_QString;    ///< stored in the column os_scheme_display of every row
    QString os_scheme_internal_QString;   ///< "macOS", "iOS_UID", "iOS_Uniform" or "winOS": decides the extractor
    QString source_os_version_full;       ///< operating-system version of the source
    QList<struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_system_account> system_account_QList; ///< accounts on the source
    QString source_host_text_7; ///< carried only, as all fields from here on
    QString source_host_text_8;
    QStringList source_host_list_9;
    QString source_host_text_10;
    QString source_host_text_11;
    QString source_host_text_12;
    QString source_host_text_13;
};

/// The examiner's desktop. The plug-in accepts this record and reads none of its fields.
struct struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_desktop_info
{
    QString desktop_text_1;
    QString desktop_text_2;
    bool desktop_flag_3 = false;
    QString desktop_text_4;
    QString desktop_text_5;
};
