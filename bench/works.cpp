#include "bench/works.h"

#include "bench/ios_uid_floor.h"
#include "bench/ios_uniform_floor.h"
#include "bench/macos_configuration_floor.h"
#include "bench/macos_floor.h"
#include "bench/winos_floor.h"
#include "evidence/macos_configuration.h"
#include "evidence/sample_ios_backup.h"
#include "evidence/sample_ios_file_tree.h"
#include "evidence/sample_macos_mail_tree.h"
#include "evidence/sample_windows_mail_store.h"
#include "evidence/sample_windows_profile.h"

#include <algorithm>

namespace bench {

namespace {

/// Short mails, since no work of this tree reads them: their folders are listed.
void make_ios_file_tree(const evidence_request &request)
{
    evidence::sample_ios_file_tree_options options;
    options.message_count = request.size;
    options.storage = request.storage;
    options.emlx_text_characters = 60;
    evidence::write_sample_ios_file_tree(request.root, options);
}

/// 20,000 recents come with 200,000 short messages and 50,000 persons.
void make_ios_backup(const evidence_request &request)
{
    evidence::sample_ios_backup_options options;
    options.recent_count = request.size;
    options.backup.storage = request.storage;
    evidence::write_sample_ios_backup(request.root, options);
}

void make_macos_store(const evidence_request &request)
{
    evidence::sample_macos_mail_tree_options options;
    options.message_count = request.size;
    options.emlx_count = request.emlx_count;
    options.storage = request.storage;
    options.is_single_store = true;
    evidence::write_sample_macos_mail_tree(request.root, options);
}

/// Sized by its VIPs: 20,000 of them come with 2,000 rules, 2,000 smart mailboxes, 500 signatures and 50 accounts.
void make_macos_configuration(const evidence_request &request)
{
    const int vips = static_cast<int>(request.size);
    evidence::sample_random random(1);
    QVector<evidence::macos_sample_account> accounts;
    for (int number = 0; number < std::max(1, vips / 400); ++number) {
        accounts.append(evidence::sample_account(number, random));
    }
    evidence::macos_mail_tree tree(request.root, request.storage);
    evidence::macos_configuration configuration(tree, QLatin1String(macos_user), accounts, random);
    configuration.write_lists(macos_configuration_generation, {vips / 10, vips / 10, vips, vips / 40});
    configuration.write_accounts(macos_configuration_generation);
    tree.finish();
}

/// Three times as many recipients as messages, half as many attachments, a fifth contacts.
void make_windows_store(const evidence_request &request)
{
    evidence::sample_windows_profile_options options;
    options.message_count = request.size;
    options.has_second_user = false;
    options.has_mail_store = false;
    evidence::write_sample_windows_profile(request.root, options);
}

void make_windows_mail_store(const evidence_request &request)
{
    evidence::sample_windows_mail_store_options options;
    options.message_count = request.size;
    options.eml_count = request.emlx_count;
    evidence::windows_profile profile(request.root, QLatin1String(winos_user));
    evidence::write_sample_windows_mail_store(profile, options);
}

void make_windows_bodies(const evidence_request &request)
{
    evidence::windows_profile profile(request.root, QLatin1String(winos_user));
    evidence::write_sample_html_bodies(profile, request.size, 1);
}

constexpr std::array<work, 8> works = {{
    {"ios-uniform",
     "the messages of an iOS file system",
     "messages",
     {10000, 100000},
     make_ios_file_tree,
     "iOS_Uniform",
     "messages",
     nullptr,
     run_ios_uniform_floor,
     "messages",
     true,
     ios_uniform_columns,
     "CAST(row_id AS INTEGER)"},
    {"ios-uid",
     "the recents of an iOS backup, with ten times as many short messages and 2.5 times as many persons",
     "recents",
     {2000, 20000},
     make_ios_backup,
     "iOS_UID",
     "contacts,recents",
     nullptr,
     run_ios_uid_floor,
     "recents",
     true,
     ios_recents_columns,
     "INT",
     &ios_uid_tables},
    {"macos-messages",
     "the messages of a macOS mail store with their files",
     "messages",
     {10000, 100000},
     make_macos_store,
     "macOS",
     "messages",
     macos_user,
     run_macos_messages_floor,
     "messages",
     true,
     macos_message_columns,
     "INT"},
    {"macos-attachments",
     "the attachments of a macOS mail store, without its messages",
     "messages",
     {10000, 100000},
     make_macos_store,
     "macOS",
     "all_attachments",
     macos_user,
     run_macos_attachments_floor,
     "all_attachments",
     false,
     macos_attachment_columns,
     "INT"},
    {"macos-config",
     "the VIPs of a macOS user, a tenth as many rules and smart mailboxes, a fortieth signatures",
     "VIPs",
     {2000, 20000},
     make_macos_configuration,
     "macOS",
     "signature,accounts,vip_contacts,rules,smart_mailboxes",
     macos_user,
     run_macos_configuration_floor,
     "vip_contacts",
     true,
     macos_vip_columns,
     "INT",
     &macos_configuration_tables},
    {"winos-store",
     "the tables of a store.vol: messages, three times as many recipients, half as many attachments, contacts",
     "messages",
     {10000, 100000},
     make_windows_store,
     "winOS",
     "appointments,all_attachments,messages,contacts,call_history",
     winos_user,
     run_winos_store_floor,
     "appointments",
     false,
     winos_store_columns,
     "INT"},
    {"winos-walker",
     "the tables of the mail application's own store on Windows, with its mail files",
     "messages",
     {10000, 100000},
     make_windows_mail_store,
     "winOS",
     "all_attachments,messages,mailconversation",
     winos_user,
     run_winos_walker_floor,
     "messages",
     true,
     winos_message_columns,
     "INT"},
    {"winos-bodies",
     "the HTML body files of a UniStore",
     "files",
     {2000, 20000},
     make_windows_bodies,
     "winOS",
     "mail_data",
     winos_user,
     run_winos_bodies_floor,
     "mail_data",
     true,
     winos_body_columns,
     "file_name"},
}};

} // namespace

const work *work_named(const QString &name)
{
    for (const work &candidate : works) {
        if (name == QLatin1String(candidate.name)) {
            return &candidate;
        }
    }
    return nullptr;
}

QVector<const work *> all_works()
{
    QVector<const work *> all;
    for (const work &each : works) {
        all.append(&each);
    }
    return all;
}

} // namespace bench
