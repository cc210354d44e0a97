/// The plug-in object as a host sees it that was compiled long ago: the same shape, declared apart. The operations are
/// called by their position behind those of QFrame, so one that moved would end in another's body.
#pragma once

#include "core/host_records.h"
#include "core/ios_uid_backup_parser.h"

#include <QFrame>
#include <QStringList>

class host_view : public QFrame
{
public:
    virtual void pub_set_engine_type(int) = 0;
    virtual QString pub_get_artifact_name() = 0;
    virtual void pub_set_essentials() = 0;
    virtual void pub_set_source_count(int) = 0;
    virtual void pub_set_ios_uid_backup_pointer(ios_uid_backup_parser *) = 0;
    virtual void pub_set_desktop_info(struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_desktop_info) = 0;
    virtual void pub_set_general_info(struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_general_info) = 0;
    virtual void pub_set_source_info(struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_source_info) = 0;
    virtual void pub_set_essential_for_trawl_bench_extraction(QStringList, QStringList) = 0;
    virtual void pub_set_result_directory(QString) = 0;
    virtual void pub_create_db_tables() = 0;
    virtual void pub_set_clear_db(bool) = 0;
    virtual void pub_cancel_extraction() = 0;
    virtual void pub_find_source_file() = 0;
    virtual void pub_set_extended_attributes_list(QStringList) = 0;
    virtual void pub_extract_artifacts() = 0;
    virtual void pub_generate_chat_html_pages() = 0;
    virtual void pub_remove_temporary_asthetics() = 0;
};
