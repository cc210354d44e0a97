#include "evidence/ios_backup.h"

#include "evidence/files.h"
#include "evidence/property_list_file.h"

#include <QCryptographicHash>
#include <QDateTime>

namespace evidence {

namespace {

constexpr qint64 backup_date = 1700000000; // Unix seconds
constexpr int flag_of_file = 1;            // 2 is a folder, 4 a link

const auto manifest_schema = QStringLiteral(
    "CREATE TABLE Files (fileID TEXT PRIMARY KEY, domain TEXT, relativePath TEXT, flags INTEGER, file BLOB);"
    "CREATE INDEX FilesDomainIdx ON Files(domain);"
    "CREATE INDEX FilesRelativePathIdx ON Files(relativePath);"
    "CREATE INDEX FilesFlagsIdx ON Files(flags);"
    "CREATE TABLE Properties (key TEXT PRIMARY KEY, value BLOB);");

QByteArray big_endian(quint64 number, int bytes)
{
    QByteArray text;
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8) {
        text += static_cast<char>(number >> static_cast<unsigned>(shift));
    }
    return text;
}

QByteArray mbdb_text(const QByteArray &text)
{
    return big_endian(static_cast<quint64>(text.size()), 2) + text;
}

/// A record of Manifest.mbdb. All numbers are big-endian, a text has its length in front.
QByteArray mbdb_record(const QString &domain, const QString &relative_path, bool is_folder)
{
    constexpr quint64 folder_mode = 040755;
    constexpr quint64 file_mode = 0100644;
    constexpr quint64 mobile_user = 501;
    const QByteArray absent_text = big_endian(0xffff, 2);
    const QByteArray date = big_endian(backup_date, 4);
    QByteArray record = mbdb_text(domain.toUtf8()) + mbdb_text(relative_path.toUtf8());
    record += absent_text;                                                 // link target
    record += is_folder ? absent_text : mbdb_text(QByteArray(20, '\x5a')); // hash of the content
    record += absent_text;                                                 // encryption key
    record += big_endian(is_folder ? folder_mode : file_mode, 2) + big_endian(4711, 8);
    record += big_endian(mobile_user, 4) + big_endian(mobile_user, 4) + date + date + date;
    record += big_endian(is_folder ? 0 : 4096, 8) + big_endian(is_folder ? 0 : 4, 1);
    return record +
           (is_folder ? big_endian(0, 1) : big_endian(1, 1) + mbdb_text("com.example.tag") + mbdb_text("\xff"));
}

QString domain_of(const QString &domain_path)
{
    return domain_path.section(QLatin1Char('/'), 0, 0);
}

QString relative_path_of(const QString &domain_path)
{
    return domain_path.section(QLatin1Char('/'), 1);
}

} // namespace

QString ios_backup_name(const QString &domain_path)
{
    const QString text = domain_of(domain_path) + QLatin1Char('-') + relative_path_of(domain_path);
    return QString::fromLatin1(QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Sha1).toHex());
}

QString ios_backup_place(const QString &domain_path, ios_backup_layout layout)
{
    const QString name = ios_backup_name(domain_path);
    return layout == ios_backup_layout::manifest_mbdb ? name : name.left(2) + QLatin1Char('/') + name;
}

ios_backup::ios_backup(const QString &root, const ios_backup_options &options)
    : root_path(root.endsWith(QLatin1Char('/')) ? root : root + QLatin1Char('/')), options(options)
{
    make_folder(root_path);
}

QString ios_backup::add(const char *domain_path)
{
    const QString device_path = QString::fromUtf8(domain_path);
    add_entry(domain_of(device_path), relative_path_of(device_path), ios_backup_name(device_path));
    const QString path = root_path + ios_backup_place(device_path, options.layout);
    make_folder(folder_of(path));
    return path;
}

QString ios_backup::add(const char *domain_path, const QByteArray &content)
{
    const QString path = add(domain_path);
    write_file(path, content);
    return path;
}

void ios_backup::add_entry(const QString &domain, const QString &relative_path, const QString &name)
{
    entries.append({domain, relative_path, name});
}

void ios_backup::finish()
{
    if (options.layout == ios_backup_layout::no_manifest) {
        return;
    }
    if (options.layout == ios_backup_layout::manifest_database) {
        write_manifest_database();
    } else {
        write_manifest_mbdb();
    }
    write_property_lists();
}

void ios_backup::write_manifest_database() const
{
    sqlite_file manifest(root_path + QLatin1String("Manifest.db"), options.storage);
    manifest.run(manifest_schema);
    {
        row_inserter insert = manifest.prepare_insert(
            "INSERT INTO Files (fileID, domain, relativePath, flags, file) VALUES (?, ?, ?, ?, NULL)");
        for (const entry &each : entries) {
            insert(each.name, each.domain, each.relative_path, flag_of_file);
        }
    }
    manifest.finish();
}

/// Each file stands behind its folder.
void ios_backup::write_manifest_mbdb() const
{
    QByteArray manifest("mbdb\5\0", 6);
    for (const entry &each : entries) {
        manifest += mbdb_record(each.domain, folder_of(each.relative_path), true);
        manifest += mbdb_record(each.domain, each.relative_path, false);
    }
    write_file(root_path + QLatin1String("Manifest.mbdb"), manifest);
}

void ios_backup::write_property_lists() const
{
    const QVariant date = QDateTime::fromSecsSinceEpoch(backup_date, Qt::UTC);
    const QVariant device_name = QStringLiteral("Annas iPhone");
    const bool is_older = options.layout == ios_backup_layout::manifest_mbdb;
    write_property_list_file(
        root_path + QLatin1String("Manifest.plist"),
        property_list_dictionary{{"Version", is_older ? QStringLiteral("9.1") : QStringLiteral("10.0")},
                                 {"Date", date},
                                 {"IsEncrypted", options.is_encrypted},
                                 {"WasPasscodeSet", true},
                                 {"Lockdown", property_list_dictionary{{"DeviceName", device_name}}}},
        property_list_form::binary);
    write_property_list_file(root_path + QLatin1String("Info.plist"),
                             property_list_dictionary{{"Device Name", device_name}, {"Last Backup Date", date}},
                             property_list_form::xml);
    write_property_list_file(
        root_path + QLatin1String("Status.plist"),
        property_list_dictionary{{"IsFullBackup", true}, {"SnapshotState", QStringLiteral("finished")}},
        property_list_form::binary);
}

} // namespace evidence
