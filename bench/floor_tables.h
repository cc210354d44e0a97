/// The result tables that floors fill.
#pragma once

namespace bench {

constexpr const char *create_messages =
    "CREATE TABLE IF NOT EXISTS 'messages'(bookmark INTEGER,INT INTEGER PRIMARY KEY,system_user VARCHAR(1024),"
    "domain_user VARCHAR(1024),subject VARCHAR(1024),subject_prefix VARCHAR(1024),sender_name VARCHAR(1024),"
    "from_str VARCHAR(1024),to_str VARCHAR(1024),cc VARCHAR(1024),bcc VARCHAR(1024),reply_to VARCHAR(1024),"
    "message VARCHAR(1024),message_date_sent INTEGER,message_date_received INTEGER,"
    "message_last_view_date INTEGER,mailbox_name VARCHAR(1024),mailbox_account_name VARCHAR(1024),"
    "mailbox_url VARCHAR(1024),mailbox_detail VARCHAR(1024),emlx_file_name VARCHAR(1024),"
    "emlx_file_path VARCHAR(1024),file_exist VARCHAR(1024),emlx_file_size INTEGER,emlx_file_date_created INTEGER,"
    "message_id VARCHAR(1024),row_id VARCHAR(1024),flagged VARCHAR(1024),message_type VARCHAR(1024),"
    "view_status VARCHAR(1024),attachment_filename VARCHAR(1024),attachment_type VARCHAR(1024),"
    "conversation_id VARCHAR(1024),comment VARCHAR(1024),fromemail VARCHAR(1024),fromname VARCHAR(1024),"
    "gmailmapuniquemessegeid VARCHAR(1024),imapuid VARCHAR(1024),lastmodifiedbodytype VARCHAR(1024),"
    "mimemessegeid VARCHAR(1024),previewtext VARCHAR(1024),date_added INTEGER,first_date INTEGER,"
    "last_date INTEGER,content_type VARCHAR(1024),fs_name VARCHAR(1024),fs_node_count VARCHAR(1024),"
    "wherefrom VARCHAR(1024),latitude VARCHAR(1024),longitude VARCHAR(1024),altitude VARCHAR(1024),"
    "torrent_file_list VARCHAR(1024),content_modification_date INTEGER,content_creation_date INTEGER,"
    "fs_content_change_date INTEGER,fs_creation_date INTEGER,last_used_date INTEGER,used_dates VARCHAR(1024),"
    "bookmarked_extended_attributes VARCHAR(1024),bookmarked_exif_data VARCHAR(1024),"
    "extended_attributes_key_value VARCHAR(1024),extended_attributes_value_for_search VARCHAR(1024),"
    "preview_file_path varchar(1024),export_file_paths varchar(1024),LINKFILENAME VARCHAR(1024),"
    "trawl_tag_value VARCHAR(1024),notes_icon VARCHAR(1024),tags_icon VARCHAR(1024),"
    "os_scheme_display VARCHAR(1024),source_count_name VARCHAR(1024),source_file VARCHAR(1024),"
    "artifacts_relation_source_file VARCHAR(1024),notes VARCHAR(1024))";

constexpr const char *create_all_attachments =
    "CREATE TABLE IF NOT EXISTS 'all_attachments'("
    "bookmark INTEGER,INT INTEGER PRIMARY KEY,system_user VARCHAR(1024),domain_user VARCHAR(1024),"
    "file_name VARCHAR(1024),file_path VARCHAR(1024),file_exist VARCHAR(1024),suffix VARCHAR(1024),"
    "file_size INTEGER,relationtableint VARCHAR(1024),subject VARCHAR(1024),from_str VARCHAR(1024),"
    "to_str VARCHAR(1024),cc VARCHAR(1024),snippet VARCHAR(1024),message_date_sent INTEGER,"
    "message_id VARCHAR(1024),bodyfile VARCHAR(1024),contentlocation VARCHAR(1024),date_added INTEGER,"
    "content_type VARCHAR(1024),fs_name VARCHAR(1024),fs_node_count VARCHAR(1024),"
    "wherefrom VARCHAR(1024),latitude VARCHAR(1024),longitude VARCHAR(1024),altitude VARCHAR(1024),"
    "torrent_file_list VARCHAR(1024),content_modification_date INTEGER,content_creation_date INTEGER,"
    "fs_content_change_date INTEGER,fs_creation_date INTEGER,last_used_date INTEGER,used_dates INTEGER,"
    "first_date INTEGER,last_date INTEGER,bookmarked_extended_attributes VARCHAR(1024),"
    "bookmarked_exif_data VARCHAR(1024),extended_attributes_key_value VARCHAR(1024),"
    "extended_attributes_value_for_search VARCHAR(1024),preview_file_path varchar(1024),"
    "export_file_paths varchar(1024),LINKFILENAME VARCHAR(1024),trawl_tag_value VARCHAR(1024),"
    "notes_icon VARCHAR(1024),tags_icon VARCHAR(1024),os_scheme_display VARCHAR(1024),"
    "source_count_name VARCHAR(1024),source_file VARCHAR(1024),"
    "artifacts_relation_source_file VARCHAR(1024),notes VARCHAR(1024))";

constexpr const char *create_emlx_list =
    "CREATE TABLE IF NOT EXISTS 'emlx_list'("
    "bookmark INTEGER,INT INTEGER PRIMARY KEY,file_name VARCHAR(1024),file_path VARCHAR(1024),"
    "source_count_name VARCHAR(1024),source_file VARCHAR(1024),"
    "artifacts_relation_source_file VARCHAR(1024))";

constexpr const char *create_signature =
    "CREATE TABLE IF NOT EXISTS 'signature'("
    "bookmark INTEGER,INT INTEGER PRIMARY KEY,system_user VARCHAR(1024),domain_user VARCHAR(1024),"
    "signature VARCHAR(1024),signature_name VARCHAR(1024),signature_uid VARCHAR(1024),"
    "is_selected VARCHAR(1024),related_account_id VARCHAR(1024),related_account_name VARCHAR(1024),"
    "signature_selection_method VARCHAR(1024),trawl_tag_value VARCHAR(1024),notes_icon VARCHAR(1024),"
    "tags_icon VARCHAR(1024),os_scheme_display VARCHAR(1024),source_count_name VARCHAR(1024),"
    "source_file VARCHAR(1024),artifacts_relation_source_file VARCHAR(1024),notes VARCHAR(1024))";

constexpr const char *create_accounts =
    "CREATE TABLE IF NOT EXISTS 'accounts'("
    "bookmark INTEGER,INT INTEGER PRIMARY KEY,system_user VARCHAR(1024),domain_user VARCHAR(1024),"
    "user_name VARCHAR(1024),display_name VARCHAR(1024),syncs_read_state INTEGER,"
    "owner_bundle_id VARCHAR(1024),account_description VARCHAR(1024),unique_id VARCHAR(1024),"
    "account_identifier VARCHAR(1024),date_added INTEGER,signature VARCHAR(1024),"
    "emailaddress varchar(50),uniqueid varchar(50),mailaccountname varchar(50),accountpath varchar(100),"
    "accounttype varchar(50),accounturl varchar(50),hostname varchar(100),ispaccountid varchar(50),"
    "portnumber varchar(10),smtpidentifier varchar(50),servername varchar(100),vendor varchar(100),"
    "archive_mailbox_name varchar(50),drafts_mailbox_name varchar(50),notes_mailbox_name varchar(50),"
    "sent_mailbox_name varchar(50),to_dos_mailbox_name varchar(50),trash_mailbox_name varchar(50),"
    "status varchar(50),signatures_id varchar(50),signature_name varchar(50),signatures varchar(50),"
    "dateoflastsync INTEGER,trawl_tag_value VARCHAR(1024),notes_icon VARCHAR(1024),"
    "tags_icon VARCHAR(1024),os_scheme_display VARCHAR(1024),source_count_name VARCHAR(1024),"
    "source_file VARCHAR(1024),artifacts_relation_source_file VARCHAR(1024),notes VARCHAR(1024))";

constexpr const char *create_vip_contacts =
    "CREATE TABLE IF NOT EXISTS 'vip_contacts'("
    "bookmark INTEGER,INT INTEGER PRIMARY KEY,system_user VARCHAR(1024),domain_user VARCHAR(1024),"
    "vip_name VARCHAR(1024),address VARCHAR(1024),account VARCHAR(1024),unread_count VARCHAR(1024),"
    "mailbox_uid VARCHAR(1024),unique_id VARCHAR(1024),sort_order VARCHAR(1024),"
    "sort_descending VARCHAR(1024),message_count VARCHAR(1024),recent_interaction_date INTEGER,"
    "trawl_tag_value VARCHAR(1024),notes_icon VARCHAR(1024),tags_icon VARCHAR(1024),"
    "os_scheme_display VARCHAR(1024),source_count_name VARCHAR(1024),source_file VARCHAR(1024),"
    "artifacts_relation_source_file VARCHAR(1024),notes VARCHAR(1024))";

constexpr const char *create_rules =
    "CREATE TABLE IF NOT EXISTS 'rules'("
    "bookmark INTEGER,INT INTEGER PRIMARY KEY,system_user VARCHAR(1024),domain_user VARCHAR(1024),"
    "rule_name VARCHAR(1024),rule_id VARCHAR(1024),met_condition VARCHAR(1024),conditions VARCHAR(1024),"
    "reply_to_message VARCHAR(1024),copy_to_mailbox VARCHAR(1024),copy_to_mailbox_url VARCHAR(1024),"
    "delete_message VARCHAR(1024),flag_color VARCHAR(1024),highlight_text_using_color VARCHAR(1024),"
    "move_to_mailbox VARCHAR(1024),move_to_mailbox_url VARCHAR(1024),mark_as_flaged VARCHAR(1024),"
    "mark_as_read VARCHAR(1024),send_notification VARCHAR(1024),should_copy_message VARCHAR(1024),"
    "should_transfer_message VARCHAR(1024),forword_message VARCHAR(1024),redirect_message VARCHAR(1024),"
    "bounce_icon_in_dock VARCHAR(1024),play_sound VARCHAR(1024),stop_evaluating_rules VARCHAR(1024),"
    "trawl_tag_value VARCHAR(1024),notes_icon VARCHAR(1024),tags_icon VARCHAR(1024),"
    "os_scheme_display VARCHAR(1024),source_count_name VARCHAR(1024),source_file VARCHAR(1024),"
    "artifacts_relation_source_file VARCHAR(1024),notes VARCHAR(1024))";

constexpr const char *create_smart_mailboxes =
    "CREATE TABLE IF NOT EXISTS 'smart_mailboxes'("
    "bookmark INTEGER,INT INTEGER PRIMARY KEY,system_user VARCHAR(1024),domain_user VARCHAR(1024),"
    "mailbox_name VARCHAR(1024),mailbox_id VARCHAR(1024),include_messages_from_trash VARCHAR(1024),"
    "include_messages_from_sent VARCHAR(1024),met_condition VARCHAR(1024),conditions VARCHAR(1024),"
    "trawl_tag_value VARCHAR(1024),notes_icon VARCHAR(1024),tags_icon VARCHAR(1024),"
    "os_scheme_display VARCHAR(1024),source_count_name VARCHAR(1024),source_file VARCHAR(1024),"
    "artifacts_relation_source_file VARCHAR(1024),notes VARCHAR(1024))";

constexpr const char *create_contacts =
    "CREATE TABLE IF NOT EXISTS 'contacts'("
    "bookmark INTEGER,INT INTEGER PRIMARY KEY,system_user VARCHAR(1024),domain_user VARCHAR(1024),"
    "first_name VARCHAR(1024),last_name VARCHAR(1024),middle_name VARCHAR(1024),nickname VARCHAR(1024),"
    "display_name VARCHAR(1024),organization VARCHAR(1024),image_URI VARCHAR(1024),"
    "jobtitle VARCHAR(1024),creation_date INTEGER,modification_date INTEGER,prefix VARCHAR(1024),"
    "suffix VARCHAR(1024),note VARCHAR(1024),birthday VARCHAR(1024),alternate_birthday VARCHAR(1024),"
    "first_phonetic VARCHAR(1024),middle_phonetic VARCHAR(1024),last_phonetic VARCHAR(1024),"
    "email VARCHAR(1024),phone_no VARCHAR(1024),address VARCHAR(1024),work_phone VARCHAR(1024),"
    "work_info VARCHAR(1024),kind VARCHAR(1024),recent_id VARCHAR(1024),trawl_tag_value VARCHAR(1024),"
    "notes_icon VARCHAR(1024),tags_icon VARCHAR(1024),os_scheme_display VARCHAR(1024),"
    "source_count_name VARCHAR(1024),source_file VARCHAR(1024),"
    "artifacts_relation_source_file VARCHAR(1024),notes VARCHAR(1024))";

constexpr const char *create_recents =
    "CREATE TABLE IF NOT EXISTS 'recents'("
    "bookmark INTEGER,INT INTEGER PRIMARY KEY,system_user VARCHAR(1024),domain_user VARCHAR(1024),"
    "text VARCHAR(1024),subject VARCHAR(1024),last_mailed_timestamp INTEGER,sender_address VARCHAR(1024),"
    "receiver_details VARCHAR(1024),event_timestamp INTEGER,mailed_timestamp VARCHAR(1024),"
    "bundle_id VARCHAR(1024),original_source VARCHAR(1024),receiver_count VARCHAR(1024),"
    "last_receiver_display_name VARCHAR(1024),record_hash VARCHAR(1024),trawl_tag_value VARCHAR(1024),"
    "notes_icon VARCHAR(1024),tags_icon VARCHAR(1024),os_scheme_display VARCHAR(1024),"
    "source_count_name VARCHAR(1024),source_file VARCHAR(1024),"
    "artifacts_relation_source_file VARCHAR(1024),notes VARCHAR(1024))";

} // namespace bench
