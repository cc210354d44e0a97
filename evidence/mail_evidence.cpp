/// mail-evidence: writes sample evidence trees.
#include "evidence/files.h"
#include "evidence/sample_ios_backup.h"
#include "evidence/sample_ios_file_tree.h"
#include "evidence/sample_macos_mail_tree.h"
#include "evidence/sample_windows_profile.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>

#include <array>
#include <cstdio>

namespace {

using namespace evidence;

constexpr int exit_done = 0;
constexpr int exit_unusable = 2;

struct tree_request
{
    QString folder;
    qint64 size = 0;
    qint64 emlx_count = -1; ///< negative: as the kind has it
    uint64_t seed = 0;
    sqlite_storage storage = sqlite_storage::plain;
};

/// A kind of tree. `write` gives the line that says what was written.
struct tree_kind
{
    const char *name;
    const char *description;
    QString (*write)(const tree_request &request);
};

QString write_ios_file_tree(const tree_request &request)
{
    sample_ios_file_tree_options options;
    options.message_count = request.size;
    options.seed = request.seed;
    options.storage = request.storage;
    const sample_ios_file_tree_summary written = write_sample_ios_file_tree(request.folder, options);
    return QStringLiteral("%1: %2 messages in %3 mailboxes, %4 recipients, %5 mail files, last account %6")
        .arg(request.folder)
        .arg(written.messages)
        .arg(written.mailboxes)
        .arg(written.recipients)
        .arg(written.emlx_files)
        .arg(written.last_selected_account);
}

QString write_ios_backup(const tree_request &request, ios_backup_layout layout, bool is_encrypted)
{
    sample_ios_backup_options options;
    options.recent_count = request.size;
    options.seed = request.seed;
    options.backup.layout = layout;
    options.backup.is_encrypted = is_encrypted;
    options.backup.storage = request.storage;
    const sample_ios_backup_summary written = write_sample_ios_backup(request.folder, options);
    return QStringLiteral("%1: %2 recents, %3 short messages, %4 persons, %5 accounts, 2 lists of %6 VIPs")
        .arg(request.folder)
        .arg(written.recents)
        .arg(written.short_messages)
        .arg(written.persons)
        .arg(written.accounts)
        .arg(written.vips);
}

QString write_ios_backup(const tree_request &request)
{
    return write_ios_backup(request, ios_backup_layout::manifest_database, false);
}

QString write_older_ios_backup(const tree_request &request)
{
    return write_ios_backup(request, ios_backup_layout::manifest_mbdb, false);
}

QString write_ios_backup_without_manifest(const tree_request &request)
{
    return write_ios_backup(request, ios_backup_layout::no_manifest, false);
}

QString write_encrypted_ios_backup(const tree_request &request)
{
    return write_ios_backup(request, ios_backup_layout::manifest_database, true);
}

QString write_macos_volume(const tree_request &request)
{
    sample_macos_mail_tree_options options;
    options.message_count = request.size;
    options.emlx_count = request.emlx_count;
    options.seed = request.seed;
    options.storage = request.storage;
    const sample_macos_mail_tree_summary written = write_sample_macos_mail_tree(request.folder, options);
    return QStringLiteral("%1: %2 messages in %3 stores of the users %4, %5 recipients, %6 attachments, %7 mail files, "
                          "%8 attachment files, %9 opened attachments")
        .arg(request.folder)
        .arg(written.messages)
        .arg(written.stores)
        .arg(written.users.join(QLatin1String(", ")))
        .arg(written.recipients)
        .arg(written.attachments)
        .arg(written.emlx_files)
        .arg(written.attachment_files)
        .arg(written.opened_attachments);
}

QString write_windows_profile(const tree_request &request)
{
    sample_windows_profile_options options;
    options.message_count = request.size;
    options.seed = request.seed;
    const sample_windows_profile_summary written = write_sample_windows_profile(request.folder, options);
    return QStringLiteral(
               "%1: %2 messages of the users %3, %4 recipients, %5 attachments, %6 contacts, %7 appointments, "
               "%8 calls, %9 attachment files")
               .arg(request.folder)
               .arg(written.messages)
               .arg(written.users.join(QLatin1String(", ")))
               .arg(written.recipients)
               .arg(written.attachments)
               .arg(written.contacts)
               .arg(written.appointments)
               .arg(written.calls)
               .arg(written.attachment_files) +
           QStringLiteral(", %1 mail files, %2 HTML bodies").arg(written.eml_files).arg(written.html_bodies);
}

// clang-format off
constexpr std::array<tree_kind, 7> kinds = {{
    {"ios-file-tree",          "the mail data of an iOS file system; N messages",                    write_ios_file_tree},
    {"ios-backup",             "the backup of an iOS device; N recents",                             write_ios_backup},
    {"ios-backup-mbdb",        "the same as older software wrote it, with Manifest.mbdb",            write_older_ios_backup},
    {"ios-backup-no-manifest", "the same, of which nothing but the files is left",                   write_ios_backup_without_manifest},
    {"ios-backup-encrypted",   "the same, whose Manifest.plist calls it encrypted",                  write_encrypted_ios_backup},
    {"macos-volume",           "the mail data of a macOS volume with two users; N messages in all",  write_macos_volume},
    {"windows-profile",        "the mail data of a Windows volume with two users; N messages in all", write_windows_profile},
}};
// clang-format on

const tree_kind &kind_of(const QString &name)
{
    for (const tree_kind &kind : kinds) {
        if (name == QLatin1String(kind.name)) {
            return kind;
        }
    }
    throw evidence_error(QStringLiteral("There is no kind of tree named \"%1\"; --help lists them.").arg(name));
}

uint64_t number_of(const QCommandLineParser &parser, const QString &option)
{
    bool is_number = false;
    const uint64_t number = parser.value(option).toULongLong(&is_number);
    if (!is_number || number > INT64_MAX) {
        throw evidence_error(
            QStringLiteral("--%1 wants a whole number, not \"%2\".").arg(option, parser.value(option)));
    }
    return number;
}

sqlite_storage storage_of(const QCommandLineParser &parser)
{
    if (parser.isSet(QStringLiteral("wal-without-shm"))) {
        return sqlite_storage::wal_without_shm;
    }
    return parser.isSet(QStringLiteral("wal")) ? sqlite_storage::wal_only : sqlite_storage::plain;
}

QString help_on_kinds()
{
    QString text = QStringLiteral("Writes a sample evidence tree into FOLDER, which must be new or empty.\n\nKinds:");
    for (const tree_kind &kind : kinds) {
        text += QStringLiteral("\n  %1  %2").arg(QLatin1String(kind.name), QLatin1String(kind.description));
    }
    return text;
}

void add_options(QCommandLineParser &parser)
{
    parser.setApplicationDescription(help_on_kinds());
    parser.addPositionalArgument(QStringLiteral("KIND"), QStringLiteral("what to write"));
    parser.addPositionalArgument(QStringLiteral("FOLDER"), QStringLiteral("where"));
    parser.addOptions({{QStringLiteral("size"), QStringLiteral("how many items, 1000 unless told"), QStringLiteral("N"),
                        QStringLiteral("1000")},
                       {QStringLiteral("emlx"),
                        QStringLiteral("how many mail files on a macOS volume, nearly one a message unless told"),
                        QStringLiteral("N")},
                       {QStringLiteral("seed"), QStringLiteral("another seed gives another tree of the same kind"),
                        QStringLiteral("N"), QStringLiteral("1")},
                       {QStringLiteral("wal"), QStringLiteral("leave the rows in \"-wal\" files")},
                       {QStringLiteral("wal-without-shm"), QStringLiteral("the same without the \"-shm\" files")},
                       {{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("this text")}});
}

tree_request request_of(const QCommandLineParser &parser)
{
    tree_request request;
    request.folder = QDir::cleanPath(parser.positionalArguments().last());
    request.size = static_cast<qint64>(number_of(parser, QStringLiteral("size")));
    if (parser.isSet(QStringLiteral("emlx"))) {
        request.emlx_count = static_cast<qint64>(number_of(parser, QStringLiteral("emlx")));
    }
    request.seed = number_of(parser, QStringLiteral("seed"));
    request.storage = storage_of(parser);
    return request;
}

/// Out: what is to be printed.
QString run(const QStringList &arguments)
{
    QCommandLineParser parser;
    add_options(parser);
    if (!parser.parse(arguments)) {
        throw evidence_error(parser.errorText());
    }
    if (parser.isSet(QStringLiteral("help"))) {
        return parser.helpText().trimmed() +
               QStringLiteral("\n\nExample: mail-evidence ios-file-tree sample --size 2000 --wal");
    }
    if (parser.positionalArguments().size() != 2) {
        throw evidence_error(QStringLiteral("Wanted: mail-evidence KIND FOLDER; --help tells more."));
    }
    const tree_kind &kind = kind_of(parser.positionalArguments().first());
    const tree_request request = request_of(parser);
    make_folder(request.folder);
    if (!QDir(request.folder).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)) {
        throw evidence_error(QStringLiteral("The folder %1 is not empty.").arg(request.folder));
    }
    return kind.write(request);
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    try {
        std::printf("%s\n", run(QCoreApplication::arguments()).toUtf8().constData());
        return exit_done;
    } catch (const evidence_error &failure) {
        std::fprintf(stderr, "mail-evidence: %s\n", failure.what());
        return exit_unusable;
    }
}
